#pragma once

#include "output/name_template.h"
#include "overlay/overlay_snapshot.h"

#include <QImage>
#include <QString>

#include <optional>

namespace tavrel {

/// Where results of captures are remembered. All operations return at once; writing happens behind them, in order.
class IHistoryKeeper
{
public:
    IHistoryKeeper() = default;
    IHistoryKeeper(const IHistoryKeeper &) = delete;
    IHistoryKeeper &operator=(const IHistoryKeeper &) = delete;
    virtual ~IHistoryKeeper() = default;

    /// Remembers one result.
    ///
    /// source    the way it took: copy, save, pin, cloud, draft
    /// returns   the uuid of the record; empty when nothing was recorded
    virtual QString add(const OverlaySnapshot &snapshot, const QString &source, const QImage &rendered,
                        const FilenameContext &context) = 0;
    /// Tells where the file of a record was saved.
    virtual void setSavedPath(const QString &uuid, const QString &path) = 0;
    /// Number of records that can be walked through, newest first.
    [[nodiscard]] virtual int count() const = 0;
    /// The state that a record was made from; nothing when its image is missing.
    [[nodiscard]] virtual std::optional<OverlaySnapshot> load(int index) const = 0;
    /// Waits for writes under way, at most `deadlineMs`. False when some were still running.
    virtual bool flush(int deadlineMs) = 0;
};

/// Remembers nothing.
class NoHistory final : public IHistoryKeeper
{
public:
    QString add(const OverlaySnapshot &, const QString &, const QImage &, const FilenameContext &) override
    {
        return {};
    }
    void setSavedPath(const QString &, const QString &) override {}
    int count() const override { return 0; }
    std::optional<OverlaySnapshot> load(int) const override { return {}; }
    bool flush(int) override { return true; }
};

} // namespace tavrel
