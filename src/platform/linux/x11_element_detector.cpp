#include "platform/linux/x11_element_detector.h"

#include "platform/linux/root_children.h"
#include "platform/linux/x_connection.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QHash>
#include <QThread>

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace tavrel::platform {

namespace {

constexpr int kMinimumSide = 24;         // device pixels
constexpr int kTitleLength = 256;        // characters
constexpr quint32 kTitleBytes = 4 * 256; // that many characters of UTF-8
constexpr quint32 kIconBytes = 8U << 20;
constexpr auto kQuery = std::chrono::milliseconds(250);
constexpr double kSmallestElement = 2.0; // logical pixels

// Windows of these types are furniture, not something to take a picture of.
constexpr std::array kLeftOut{
    XAtom::NetWmWindowTypeCombo,   XAtom::NetWmWindowTypeDesktop,      XAtom::NetWmWindowTypeDnd,
    XAtom::NetWmWindowTypeDock,    XAtom::NetWmWindowTypeDropdownMenu, XAtom::NetWmWindowTypeMenu,
    XAtom::NetWmWindowTypeToolbar, XAtom::NetWmWindowTypeNotification, XAtom::NetWmWindowTypePopupMenu,
    XAtom::NetWmWindowTypeTooltip,
};

/// Everything that is asked of one window, in the air together with that of all others.
struct WindowFlight
{
    explicit WindowFlight(const XConnection &x, xcb_window_t id)
        : window(id),
          attributes(xcb_get_window_attributes(x.xcb(), id)),
          geometry(xcb_get_geometry(x.xcb(), id)),
          position(xcb_translate_coordinates(x.xcb(), id, x.root(), 0, 0)),
          pid(x.requestProperty(id, XAtom::NetWmPid, XCB_ATOM_CARDINAL)),
          state(x.requestProperty(id, XAtom::NetWmState, XCB_ATOM_ATOM)),
          type(x.requestProperty(id, XAtom::NetWmWindowType, XCB_ATOM_ATOM)),
          name(x.requestProperty(id, XAtom::NetWmName, XCB_ATOM_ANY, kTitleBytes)),
          oldName(xcb_get_property(x.xcb(), 0, id, XCB_ATOM_WM_NAME, XCB_ATOM_ANY, 0, kTitleBytes / 4)),
          classes(xcb_get_property(x.xcb(), 0, id, XCB_ATOM_WM_CLASS, XCB_ATOM_ANY, 0, 256)),
          managed(x.requestProperty(id, XAtom::WmState)),
          frame(x.requestProperty(id, XAtom::NetFrameExtents, XCB_ATOM_CARDINAL)),
          shadow(x.requestProperty(id, XAtom::GtkFrameExtents, XCB_ATOM_CARDINAL))
    {}

    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t position;
    xcb_get_property_cookie_t pid;
    xcb_get_property_cookie_t state;
    xcb_get_property_cookie_t type;
    xcb_get_property_cookie_t name;
    xcb_get_property_cookie_t oldName;
    xcb_get_property_cookie_t classes;
    xcb_get_property_cookie_t managed;
    xcb_get_property_cookie_t frame;
    xcb_get_property_cookie_t shadow;
};

/// A window that has come through the filter.
struct NativeWindow
{
    xcb_window_t window = 0;
    qint64 processId = 0;
    QRect client; ///< the window itself
    QRect outer;  ///< with its frame
    QRect rect;   ///< with its frame, without its shadow
    QString title;
    QString className; ///< from WM_CLASS
};

/// left, right, top, bottom; all 0 for a missing or senseless property.
QMargins extents(const QList<quint32> &items)
{
    constexpr quint32 kSane = 1000;
    if (items.size() != 4 || std::any_of(items.begin(), items.end(), [](quint32 v) { return v > kSane; }))
        return {};
    const auto at = [&items](qsizetype i) { return static_cast<int>(items[i]); };
    return {at(0), at(2), at(1), at(3)};
}

/// The second string of WM_CLASS names the kind of application, the first one this instance of it.
QString classOf(const QByteArray &classes)
{
    const QList<QByteArray> parts = classes.split('\0');
    const QByteArray name = parts.value(1).isEmpty() ? parts.value(0) : parts.value(1);
    return QString::fromUtf8(name);
}

/// Reads all answers for one window, since unread ones would stay with the connection. False for a window that is
/// gone or does not belong into the list.
bool land(const XConnection &x, const WindowFlight &flight, bool clientOfManager, NativeWindow &found)
{
    const auto attributes =
        xAnswer<xcb_get_window_attributes_reply_t>(x.xcb(), flight.attributes, xcb_get_window_attributes_reply);
    const auto geometry = xAnswer<xcb_get_geometry_reply_t>(x.xcb(), flight.geometry, xcb_get_geometry_reply);
    const auto position =
        xAnswer<xcb_translate_coordinates_reply_t>(x.xcb(), flight.position, xcb_translate_coordinates_reply);
    const QList<quint32> pid = propertyItems(x.property(flight.pid).get());
    const QList<quint32> states = propertyItems(x.property(flight.state).get());
    const QList<quint32> types = propertyItems(x.property(flight.type).get());
    const auto name = x.property(flight.name);
    const auto oldName = x.property(flight.oldName);
    const auto classes = x.property(flight.classes);
    const QList<quint32> managed = propertyItems(x.property(flight.managed).get());
    const QMargins frame = extents(propertyItems(x.property(flight.frame).get()));
    const QMargins shadow = extents(propertyItems(x.property(flight.shadow).get()));

    if (!attributes || !geometry || !position || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
        attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY || attributes->override_redirect)
        return false;
    if (managed.value(0, XCB_ICCCM_WM_STATE_NORMAL) != XCB_ICCCM_WM_STATE_NORMAL ||
        states.contains(x.atom(XAtom::NetWmStateHidden)))
        return false;
    if (std::any_of(kLeftOut.begin(), kLeftOut.end(), [&](XAtom type) { return types.contains(x.atom(type)); }))
        return false;
    found.processId = pid.value(0);
    if (belongsToQt(flight.window) || found.processId == QCoreApplication::applicationPid())
        return false;

    found.window = flight.window;
    found.client = QRect(position->dst_x, position->dst_y, geometry->width, geometry->height);
    found.outer = found.client.marginsAdded(clientOfManager ? frame : QMargins(1, 1, 1, 1) * geometry->border_width);
    found.rect = found.outer.marginsRemoved(shadow);
    if (found.rect.width() < kMinimumSide || found.rect.height() < kMinimumSide)
        return false;
    found.title = propertyText(x, name.get());
    if (found.title.isEmpty())
        found.title = propertyText(x, oldName.get());
    found.title.truncate(kTitleLength);
    found.className = classOf(propertyBytes(classes.get()));
    return true;
}

/// Top-most first. With a window manager its clients, without one the root's children.
QList<NativeWindow> nativeWindows(const XConnection &x)
{
    x.drainEvents();
    const auto listed = x.requestProperty(x.root(), XAtom::NetClientListStacking, XCB_ATOM_WINDOW, 1 << 16);
    const auto check = x.requestProperty(x.root(), XAtom::NetSupportingWmCheck, XCB_ATOM_WINDOW);
    const auto tree = xAnswer<xcb_query_tree_reply_t>(x.xcb(), xcb_query_tree(x.xcb(), x.root()), xcb_query_tree_reply);
    const QList<quint32> clients = propertyItems(x.property(listed).get());
    const quint32 checkWindow = propertyItems(x.property(check).get()).value(0, XCB_WINDOW_NONE);
    if (!tree)
        return {};
    // Both properties outlive a window manager that died; its own window, a child of the root, does not.
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    const QList<quint32> all(children, children + tree->children_len);
    const bool managed = checkWindow != XCB_WINDOW_NONE && all.contains(checkWindow);

    const QList<quint32> &candidates = managed ? clients : all;
    QList<WindowFlight> flights;
    flights.reserve(candidates.size());
    for (auto it = candidates.crbegin(); it != candidates.crend(); ++it)
        flights.append(WindowFlight(x, *it));
    QList<NativeWindow> windows;
    for (const WindowFlight &flight : flights) {
        NativeWindow found;
        if (land(x, flight, managed, found))
            windows.append(found);
    }
    return windows;
}

/// Name of the program that a process runs; empty when the process is not ours to look at.
QString executableName(qint64 processId)
{
    if (processId <= 0)
        return {};
    QString name = QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(processId))).fileName();
    if (name.endsWith(u" (deleted)")) // replaced by an update while it runs
        name.chop(10);
    return name;
}

/// The best picture of _NET_WM_ICON for a size: the smallest that need not be enlarged, else the largest.
QImage bestIcon(const QList<quint32> &items, int sizePx)
{
    QImage best;
    for (qsizetype at = 0; at + 2 < items.size();) {
        const quint32 width = items[at];
        const quint32 height = items[at + 1];
        const quint64 count = quint64(width) * height;
        if (count == 0 || width > 4096 || height > 4096 || count > quint64(items.size() - at - 2))
            break;
        const int side = static_cast<int>(std::max(width, height));
        const int bestSide = std::max(best.width(), best.height());
        const bool better = side >= sizePx ? bestSide < sizePx || side < bestSide : side > bestSide;
        if (best.isNull() || better)
            best = QImage(reinterpret_cast<const uchar *>(items.constData() + at + 2), static_cast<int>(width),
                          static_cast<int>(height), static_cast<qsizetype>(width) * 4, QImage::Format_ARGB32)
                       .copy();
        at += 2 + static_cast<qsizetype>(count);
    }
    return best;
}

} // namespace

X11ElementDetector::X11ElementDetector(std::shared_ptr<XConnection> x) : m_x(std::move(x)) {}

X11ElementDetector::~X11ElementDetector() = default;

ScreenMapping X11ElementDetector::mapping() const
{
    return ScreenMapping(m_displays.displays(), nativeMonitors(*m_x));
}

QList<WindowInfo> X11ElementDetector::topLevelWindows()
{
    const ScreenMapping toLogical = mapping();
    QHash<qint64, QString> programs;
    QList<WindowInfo> windows;
    for (const NativeWindow &native : nativeWindows(*m_x)) {
        WindowInfo info;
        info.windowId = native.window;
        info.processId = native.processId;
        info.geometry = toLogical.toLogical(native.rect);
        info.title = native.title;
        auto program = programs.find(native.processId);
        if (program == programs.end())
            program = programs.insert(native.processId, executableName(native.processId));
        info.applicationName = program->isEmpty() ? native.className : *program;
        windows.append(info);
    }
    return windows;
}

bool X11ElementDetector::isAvailable() const
{
    const bool mayWait = QThread::currentThread() != QCoreApplication::instance()->thread();
    return m_tree.isAvailable(mayWait ? QDeadlineTimer(kQuery) : QDeadlineTimer(0));
}

void X11ElementDetector::requestAccess()
{
    askForAccessibility();
}

std::optional<AtspiTree::Target> X11ElementDetector::targetAt(const QPoint &point, qint64 processId) const
{
    if (processId <= 0)
        return std::nullopt;
    for (const NativeWindow &native : nativeWindows(*m_x)) {
        if (native.processId == processId && native.rect.contains(point))
            return AtspiTree::Target{processId, {native.client, native.outer, native.rect, native.title}, point};
    }
    return std::nullopt;
}

QList<QRectF> X11ElementDetector::elementChain(const QPointF &global, qint64 processId)
{
    const QDeadlineTimer deadline(kQuery);
    const ScreenMapping screens = mapping();
    const auto target = targetAt(screens.toNative(global), processId);
    QList<QRectF> chain;
    if (!target)
        return chain;
    for (const QRect &native : m_tree.rectanglesAt(*target, deadline)) {
        const QRectF logical = screens.toLogical(native);
        const bool large = logical.width() >= kSmallestElement && logical.height() >= kSmallestElement;
        if (large && (chain.isEmpty() || chain.last() != logical))
            chain.append(logical);
    }
    return chain;
}

QString X11ElementDetector::sourceUrl(const QPointF &global, qint64 processId)
{
    const QDeadlineTimer deadline(kQuery);
    const auto target = targetAt(mapping().toNative(global), processId);
    return target ? m_tree.pageAddressAt(*target, deadline) : QString();
}

ElementInfo X11ElementDetector::elementAt(const QPointF &global, qint64 processId)
{
    const QDeadlineTimer deadline(kQuery);
    const auto target = targetAt(mapping().toNative(global), processId);
    return target ? m_tree.elementAt(*target, deadline) : ElementInfo();
}

QImage X11ElementDetector::applicationIcon(qint64 processId, int sizePx)
{
    if (processId <= 0 || sizePx <= 0)
        return {};
    for (const NativeWindow &native : nativeWindows(*m_x)) {
        if (native.processId != processId)
            continue;
        const auto property =
            m_x->property(m_x->requestProperty(native.window, XAtom::NetWmIcon, XCB_ATOM_CARDINAL, kIconBytes));
        const QImage icon = bestIcon(propertyItems(property.get()), sizePx);
        if (icon.isNull())
            continue;
        const QImage scaled = icon.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                                  .scaled(sizePx, sizePx, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QImage square(sizePx, sizePx, QImage::Format_ARGB32_Premultiplied);
        square.fill(Qt::transparent);
        for (int y = 0; y < scaled.height(); ++y) {
            const auto *from = reinterpret_cast<const quint32 *>(scaled.constScanLine(y));
            auto *to = reinterpret_cast<quint32 *>(square.scanLine(y + (sizePx - scaled.height()) / 2));
            std::copy_n(from, scaled.width(), to + (sizePx - scaled.width()) / 2);
        }
        return square;
    }
    return {};
}

} // namespace tavrel::platform
