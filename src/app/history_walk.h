#pragma once

#include "capture/history_keeper.h"
#include "capture/overlay_snapshot.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

namespace tavrel {

/// The walk through earlier captures while an overlay stands. Place -1 is the live capture, 0 the newest record.
///
/// The records are those of the first step: what is added meanwhile shifts nothing. What was drawn on a record is there
/// again when the walk comes back to it. Records are read behind the walk; steps made meanwhile go on from where the
/// user means to be. GUI thread only.
class HistoryWalk final : public QObject
{
    Q_OBJECT

public:
    using Present = std::function<OverlaySnapshot()>;

    explicit HistoryWalk(IHistoryKeeper &history, QObject *parent = nullptr);

    /// delta    -1 goes to the older capture, 1 back towards the live one
    /// walker   the overlay that asks; once one has begun, others are ignored
    /// present  reads what it shows, when it is about to show something else
    void step(const QObject *walker, int delta, const Present &present);
    void reset();

    /// The record that a result of the overlay changes; empty for the live capture. A result that is not of the
    /// record's whole picture, a stitched page or what the display shows of a longer one, stands for itself as well.
    [[nodiscard]] QString recordOf(const OverlaySnapshot &result) const;

Q_SIGNALS:
    /// To be shown in place of what is.
    void arrived(const tavrel::OverlaySnapshot &snapshot);
    void imageMissing();

private:
    void take(int place, const std::optional<OverlaySnapshot> &snapshot);
    void show(int place, const OverlaySnapshot &snapshot);
    [[nodiscard]] static bool isSame(const OverlaySnapshot &a, const OverlaySnapshot &b);

    IHistoryKeeper &m_history;
    QPointer<const QObject> m_walker;
    Present m_present;
    bool m_isWalking = false;
    QStringList m_records;
    QHash<int, OverlaySnapshot> m_kept; ///< by place: the live capture, and records that were drawn on
    OverlaySnapshot m_shown;            ///< as the overlay has taken it
    bool m_isCut = false;               ///< the overlay could not take its whole selection
    int m_place = -1;                   ///< shown
    int m_wanted = -1;                  ///< where the steps lead; another one while it is read
};

} // namespace tavrel
