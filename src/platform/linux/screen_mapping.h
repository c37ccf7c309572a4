#pragma once

#include "platform/display_info.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>

#include <mutex>

namespace tavrel::platform {

class XConnection;

/// A monitor as the X server has it: its name and its rectangle in pixels of the root window.
struct NativeMonitor
{
    QString name;
    QRect rect;
};

/// The one mapping between pixels of the root window ("native") and Qt's global logical coordinates.
///
/// Each display maps with its own ratio about its own top-left corner: Qt keeps that corner at its native position
/// and shrinks only the size, so neighbouring displays leave gaps in logical coordinates at ratios above 1. A
/// rectangle belongs to the display that holds most of it, or else to the nearest. Without any display the numbers
/// stay as they are. A value; safe to use on any thread.
class ScreenMapping final
{
public:
    struct Entry
    {
        DisplayInfo display;
        QRect native; ///< null when the server has no monitor of the display's name any more
    };

    ScreenMapping() = default;
    /// Joins Qt's displays with the server's monitors by name.
    ScreenMapping(const QList<DisplayInfo> &displays, const QList<NativeMonitor> &monitors);

    /// One for each display, in their order.
    [[nodiscard]] const QList<Entry> &entries() const noexcept { return m_entries; }

    [[nodiscard]] QRectF toLogical(const QRect &native) const;
    [[nodiscard]] QPointF toLogical(const QPoint &native) const;
    /// Edges are rounded. The logical rectangle of a whole display gives exactly its monitor.
    [[nodiscard]] QRect toNative(const QRectF &logical) const;
    [[nodiscard]] QPoint toNative(const QPointF &logical) const;

private:
    [[nodiscard]] const Entry *entryForNative(const QRectF &native) const;
    [[nodiscard]] const Entry *entryForLogical(const QRectF &logical) const;

    QList<Entry> m_entries;
};

/// Qt's screens, ids from 1. GUI thread only.
[[nodiscard]] QList<DisplayInfo> currentDisplays();
/// The server's monitors at this moment; the whole root, without a name, where there is no RandR 1.5. Two round
/// trips. Empty when the connection is broken. Any thread.
[[nodiscard]] QList<NativeMonitor> nativeMonitors(const XConnection &x);

/// Keeps a copy of currentDisplays() that worker threads may read. Lives on the GUI thread.
class DisplayWatch final : public QObject
{
    Q_OBJECT

public:
    explicit DisplayWatch(QObject *parent = nullptr);
    /// Any thread.
    [[nodiscard]] QList<DisplayInfo> displays() const;

private:
    void refresh();

    mutable std::mutex m_mutex;
    QList<DisplayInfo> m_displays;
};

} // namespace tavrel::platform
