#pragma once

#include "capture/overlay_snapshot.h"
#include "output/name_template.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QObject;

namespace tavrel {

/// One result of a capture, as it is remembered.
struct HistoryEntry
{
    OverlaySnapshot snapshot; ///< what stood on the overlay
    QString source;           ///< the way it took: copy, save, pin, cloud, draft
    QImage rendered;          ///< what left the overlay
    FilenameContext context;  ///< where it was taken
};

/// Where results of captures are remembered. All operations return at once: writing happens behind them, in their
/// order, and reading answers later. What has been added is there for records() and load() from then on, written or
/// not. GUI thread only; an implementation holds no lock while it decodes, encodes or writes.
class IHistoryKeeper
{
public:
    using Loaded = std::function<void(const std::optional<OverlaySnapshot> &)>;

    IHistoryKeeper() = default;
    IHistoryKeeper(const IHistoryKeeper &) = delete;
    IHistoryKeeper &operator=(const IHistoryKeeper &) = delete;
    virtual ~IHistoryKeeper() = default;

    /// Remembers a result as the newest record; its uuid, empty when nothing is recorded.
    virtual QString add(const HistoryEntry &entry) = 0;
    /// A record was taken up again and has come to another result: selection, shapes, source and picture are replaced
    /// together, its place among the records stays. The uuid of the record that holds the result now: another one when
    /// that record is gone, or may not be changed.
    virtual QString update(const QString &uuid, const HistoryEntry &entry) = 0;
    /// Tells where the file of a record was saved. An unknown uuid is ignored.
    virtual void setSavedPath(const QString &uuid, const QString &path) = 0;

    /// The records that can be taken up again, newest first.
    [[nodiscard]] virtual QStringList records() const = 0;
    /// Reads the state that a record was made from; nothing when its picture is missing. `done` is called on the GUI
    /// thread, never before this call has returned, and not when `context` is gone by then.
    virtual void load(const QString &uuid, QObject *context, const Loaded &done) = 0;

    /// For the end of the program: waits for writes under way. False when some were still running at the deadline.
    virtual bool finish(const QDeadlineTimer &deadline) = 0;
};

/// Remembers nothing.
class NoHistory final : public IHistoryKeeper
{
public:
    QString add(const HistoryEntry &) override { return {}; }
    QString update(const QString &, const HistoryEntry &) override { return {}; }
    void setSavedPath(const QString &, const QString &) override {}
    QStringList records() const override { return {}; }
    void load(const QString &, QObject *, const Loaded &) override {}
    bool finish(const QDeadlineTimer &) override { return true; }
};

} // namespace tavrel
