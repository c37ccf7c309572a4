#pragma once

#include "capture/history_keeper.h"

#include <QMap>
#include <QPointer>
#include <QTimer>

namespace tavrel {

/// A history that forgets everything with the process: the whole contract, without files.
class MemoryHistory final : public QObject, public IHistoryKeeper
{
public:
    QString add(const HistoryEntry &entry) override
    {
        const QString uuid = QStringLiteral("record %1").arg(++m_made);
        entries.insert(uuid, entry);
        order.prepend(uuid);
        events.append(QStringLiteral("add:%1:%2").arg(entry.source).arg(entry.rendered.width()));
        return uuid;
    }
    QString update(const QString &uuid, const HistoryEntry &entry) override
    {
        if (!entries.contains(uuid))
            return add(entry);
        entries.insert(uuid, entry);
        events.append(QStringLiteral("update:%1:%2").arg(uuid, entry.source));
        return uuid;
    }
    void setSavedPath(const QString &uuid, const QString &path) override
    {
        if (entries.contains(uuid))
            savedPaths.insert(uuid, path);
    }
    QStringList records() const override { return order; }
    void load(const QString &uuid, QObject *context, const Loaded &done) override
    {
        std::optional<OverlaySnapshot> snapshot;
        if (const auto entry = entries.constFind(uuid); entry != entries.cend() && !entry->snapshot.image.isNull())
            snapshot = entry->snapshot;
        QTimer::singleShot(0, this, [context = QPointer(context), done, snapshot] {
            if (context)
                done(snapshot);
        });
    }
    bool finish(const QDeadlineTimer &) override
    {
        events.append(QStringLiteral("finish"));
        return true;
    }

    QMap<QString, HistoryEntry> entries;
    QStringList order; ///< uuids, newest first
    QMap<QString, QString> savedPaths;
    QStringList events;

private:
    int m_made = 0;
};

} // namespace tavrel
