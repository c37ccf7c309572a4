#include "platform/linux/screen_mapping.h"

#include "platform/linux/x_connection.h"

#include <QGuiApplication>
#include <QScreen>

#include <xcb/randr.h>

#include <algorithm>
#include <cmath>

namespace tavrel::platform {

namespace {

double overlapArea(const QRectF &a, const QRectF &b)
{
    const QRectF common = a & b;
    return common.isValid() ? common.width() * common.height() : 0.0;
}

double squaredDistance(const QRectF &a, const QRectF &b)
{
    const double dx = std::max({0.0, a.left() - b.right(), b.left() - a.right()});
    const double dy = std::max({0.0, a.top() - b.bottom(), b.top() - a.bottom()});
    return dx * dx + dy * dy;
}

/// The entry whose rectangle holds most of `rect`, else the nearest one. Entries without a monitor do not count.
template <typename RectOf>
const ScreenMapping::Entry *bestEntry(const QList<ScreenMapping::Entry> &entries, const QRectF &rect, RectOf rectOf)
{
    const ScreenMapping::Entry *best = nullptr;
    double bestArea = 0.0;
    double bestDistance = 0.0;
    for (const ScreenMapping::Entry &entry : entries) {
        if (entry.native.isEmpty())
            continue;
        const QRectF own(rectOf(entry));
        const double area = overlapArea(own, rect);
        const double distance = squaredDistance(own, rect);
        if (!best || area > bestArea || (area >= bestArea && distance < bestDistance)) {
            best = &entry;
            bestArea = area;
            bestDistance = distance;
        }
    }
    return best;
}

/// One edge from logical to native. The far edge of a display is the far edge of its monitor: the logical size is
/// rounded, so that going through the ratio would miss it by a pixel.
int nativeEdge(double logical, int logicalStart, int logicalLength, int nativeStart, int nativeLength, double ratio)
{
    if (qFuzzyIsNull(logical - (logicalStart + logicalLength)))
        return nativeStart + nativeLength;
    return nativeStart + static_cast<int>(std::lround((logical - logicalStart) * ratio));
}

DisplayInfo describe(const QScreen &screen, quint32 id)
{
    DisplayInfo display;
    display.id = id;
    display.name = screen.name();
    display.geometry = screen.geometry();
    display.devicePixelRatio = screen.devicePixelRatio();
    display.primary = &screen == QGuiApplication::primaryScreen();
    return display;
}

} // namespace

ScreenMapping::ScreenMapping(const QList<DisplayInfo> &displays, const QList<NativeMonitor> &monitors)
{
    m_entries.reserve(displays.size());
    for (const DisplayInfo &display : displays) {
        Entry entry{display, {}};
        for (const NativeMonitor &monitor : monitors) {
            // A server without monitors has one picture, the root, and Qt makes up a name for it.
            if (monitor.name == display.name || (monitor.name.isEmpty() && displays.size() == 1))
                entry.native = monitor.rect;
        }
        m_entries.append(entry);
    }
}

const ScreenMapping::Entry *ScreenMapping::entryForNative(const QRectF &native) const
{
    return bestEntry(m_entries, native, [](const Entry &entry) { return entry.native; });
}

const ScreenMapping::Entry *ScreenMapping::entryForLogical(const QRectF &logical) const
{
    return bestEntry(m_entries, logical, [](const Entry &entry) { return entry.display.geometry; });
}

QRectF ScreenMapping::toLogical(const QRect &native) const
{
    const Entry *entry = entryForNative(QRectF(native));
    if (!entry)
        return QRectF(native);
    const double ratio = entry->display.devicePixelRatio;
    return {entry->display.geometry.x() + (native.x() - entry->native.x()) / ratio,
            entry->display.geometry.y() + (native.y() - entry->native.y()) / ratio, native.width() / ratio,
            native.height() / ratio};
}

QPointF ScreenMapping::toLogical(const QPoint &native) const
{
    return toLogical(QRect(native, QSize(1, 1))).topLeft();
}

QRect ScreenMapping::toNative(const QRectF &logical) const
{
    const Entry *entry = entryForLogical(logical);
    if (!entry)
        return logical.toRect();
    const QRect &from = entry->display.geometry;
    const QRect &to = entry->native;
    const double ratio = entry->display.devicePixelRatio;
    const auto x = [&](double value) { return nativeEdge(value, from.x(), from.width(), to.x(), to.width(), ratio); };
    const auto y = [&](double value) { return nativeEdge(value, from.y(), from.height(), to.y(), to.height(), ratio); };
    const QPoint topLeft(x(logical.left()), y(logical.top()));
    return {topLeft, QSize(x(logical.right()) - topLeft.x(), y(logical.bottom()) - topLeft.y())};
}

QPoint ScreenMapping::toNative(const QPointF &logical) const
{
    // A hair's breadth wide, so that a point on a display's edge belongs to the display that begins there.
    const Entry *entry = entryForLogical(QRectF(logical, QSizeF(1e-3, 1e-3)));
    if (!entry)
        return logical.toPoint();
    const double ratio = entry->display.devicePixelRatio;
    const QPointF offset = (logical - QPointF(entry->display.geometry.topLeft())) * ratio;
    return entry->native.topLeft() +
           QPoint(static_cast<int>(std::floor(offset.x() + 1e-6)), static_cast<int>(std::floor(offset.y() + 1e-6)));
}

QList<DisplayInfo> currentDisplays()
{
    QList<DisplayInfo> displays;
    quint32 id = 0;
    for (const QScreen *screen : QGuiApplication::screens())
        displays.append(describe(*screen, ++id));
    return displays;
}

QList<NativeMonitor> nativeMonitors(const XConnection &x)
{
    const auto wholeRoot = [&x]() -> QList<NativeMonitor> {
        const XReply<xcb_get_geometry_reply_t> root{
            xcb_get_geometry_reply(x.xcb(), xcb_get_geometry(x.xcb(), x.root()), nullptr)};
        if (!root)
            return {};
        return {{QString(), QRect(0, 0, root->width, root->height)}};
    };
    if (!x.extensions().randrMonitors)
        return wholeRoot();
    const XReply<xcb_randr_get_monitors_reply_t> reply{
        xcb_randr_get_monitors_reply(x.xcb(), xcb_randr_get_monitors(x.xcb(), x.root(), 1), nullptr)};
    if (!reply)
        return {};

    QList<NativeMonitor> monitors;
    QList<xcb_get_atom_name_cookie_t> names;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
        monitors.append({QString(), QRect(it.data->x, it.data->y, it.data->width, it.data->height)});
        names.append(xcb_get_atom_name(x.xcb(), it.data->name));
    }
    for (qsizetype i = 0; i < monitors.size(); ++i) {
        const XReply<xcb_get_atom_name_reply_t> name{xcb_get_atom_name_reply(x.xcb(), names[i], nullptr)};
        if (name)
            monitors[i].name =
                QString::fromUtf8(xcb_get_atom_name_name(name.get()), xcb_get_atom_name_name_length(name.get()));
    }
    return monitors;
}

DisplayWatch::DisplayWatch(QObject *parent) : QObject(parent)
{
    const auto follow = [this](QScreen *screen) {
        // The ratio has no signal of its own; it changes together with one of these.
        connect(screen, &QScreen::geometryChanged, this, &DisplayWatch::refresh);
        connect(screen, &QScreen::logicalDotsPerInchChanged, this, &DisplayWatch::refresh);
        connect(screen, &QScreen::physicalDotsPerInchChanged, this, &DisplayWatch::refresh);
    };
    for (QScreen *screen : QGuiApplication::screens())
        follow(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this, follow](QScreen *screen) {
        follow(screen);
        refresh();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &DisplayWatch::refresh);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &DisplayWatch::refresh);
    refresh();
}

QList<DisplayInfo> DisplayWatch::displays() const
{
    const std::scoped_lock lock(m_mutex);
    return m_displays;
}

void DisplayWatch::refresh()
{
    QList<DisplayInfo> displays = currentDisplays();
    const std::scoped_lock lock(m_mutex);
    m_displays.swap(displays);
}

} // namespace tavrel::platform
