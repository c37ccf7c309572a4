#pragma once

#include "overlay/overlay_snapshot.h"

#include <QPointer>

#include <optional>

namespace tavrel {

class IHistoryKeeper;

/// The walk through earlier captures while an overlay stands. Index -1 is the live capture, 0 the newest record.
class HistoryWalk final
{
public:
    struct Step
    {
        enum class Outcome { Stay, Show, ImageMissing };
        Outcome outcome = Outcome::Stay;
        OverlaySnapshot snapshot; ///< set for Show
    };

    explicit HistoryWalk(const IHistoryKeeper &history) : m_history(history) {}

    /// One step: delta -1 goes to the older capture, 1 back towards the live one. `walker` is the overlay that asks;
    /// once one has begun, others are ignored. `live` is read on the first step only.
    [[nodiscard]] Step step(const QObject *walker, int delta, const std::function<OverlaySnapshot()> &live);
    void reset();

    [[nodiscard]] int index() const { return m_index; }

private:
    const IHistoryKeeper &m_history;
    QPointer<const QObject> m_walker;
    std::optional<OverlaySnapshot> m_live;
    int m_index = -1;
};

} // namespace tavrel
