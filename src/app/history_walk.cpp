#include "app/history_walk.h"

#include <algorithm>

namespace tavrel {

HistoryWalk::HistoryWalk(IHistoryKeeper &history, QObject *parent) : QObject(parent), m_history(history) {}

void HistoryWalk::step(const QObject *walker, int delta, const Present &present)
{
    if (!m_isWalking) {
        m_isWalking = true;
        m_walker = walker;
        m_records = m_history.records();
    }
    if (m_walker != walker)
        return;
    m_present = present;
    const int next = std::clamp(m_wanted - delta, -1, static_cast<int>(m_records.size()) - 1);
    if (next == m_wanted)
        return;
    m_wanted = next;
    if (next == m_place)
        return; // back before it came
    if (const auto kept = m_kept.constFind(next); kept != m_kept.constEnd())
        show(next, OverlaySnapshot(*kept));
    else
        m_history.load(m_records.at(next), this,
                       [this, next, records = m_records](const std::optional<OverlaySnapshot> &snapshot) {
                           if (m_records == records)
                               take(next, snapshot);
                       });
}

void HistoryWalk::take(int place, const std::optional<OverlaySnapshot> &snapshot)
{
    if (place != m_wanted || place == m_place)
        return; // the walk has gone on
    if (snapshot && !snapshot->image.isNull()) {
        show(place, *snapshot);
        return;
    }
    m_wanted = m_place;
    Q_EMIT imageMissing();
}

void HistoryWalk::show(int place, const OverlaySnapshot &snapshot)
{
    const OverlaySnapshot left = m_present();
    if (m_place == -1 || m_kept.contains(m_place) || !isSame(left, m_shown))
        m_kept.insert(m_place, left);
    m_place = place;
    Q_EMIT arrived(snapshot);
    m_shown = m_present();
    m_isCut = m_shown.selection != snapshot.selection;
}

QString HistoryWalk::recordOf(const OverlaySnapshot &result) const
{
    const bool isOfRecord = result.image.cacheKey() == m_shown.image.cacheKey() && !m_isCut;
    return isOfRecord ? m_records.value(m_place) : QString();
}

bool HistoryWalk::isSame(const OverlaySnapshot &a, const OverlaySnapshot &b)
{
    return a.selection == b.selection && a.shapesJson == b.shapesJson;
}

void HistoryWalk::reset()
{
    m_isWalking = false;
    m_walker.clear();
    m_present = {};
    m_records.clear();
    m_kept.clear();
    m_shown = {};
    m_isCut = false;
    m_place = m_wanted = -1;
}

} // namespace tavrel
