#include "app/history_walk.h"

#include "app/history_keeper.h"

#include <algorithm>

namespace tavrel {

HistoryWalk::Step HistoryWalk::step(const QObject *walker, int delta, const std::function<OverlaySnapshot()> &live)
{
    if (m_live && m_walker != walker)
        return {};
    const int next = std::clamp(m_index - delta, -1, m_history.count() - 1);
    if (next == m_index)
        return {};
    if (!m_live) {
        m_live = live();
        m_walker = walker;
    }
    if (next == -1) {
        m_index = next;
        return {Step::Outcome::Show, *m_live};
    }
    auto record = m_history.load(next);
    if (!record || record->image.isNull())
        return {Step::Outcome::ImageMissing, {}};
    m_index = next;
    return {Step::Outcome::Show, std::move(*record)};
}

void HistoryWalk::reset()
{
    m_walker.clear();
    m_live.reset();
    m_index = -1;
}

} // namespace tavrel
