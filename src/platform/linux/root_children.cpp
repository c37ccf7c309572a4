#include "platform/linux/root_children.h"

#include "platform/linux/x_connection.h"

#include <xcb/shape.h>

namespace tavrel::platform {

QList<RootChild> viewableRootChildren(const XConnection &x)
{
    struct Flight
    {
        xcb_window_t window;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
        xcb_shape_query_extents_cookie_t shape;
    };
    const auto tree = xAnswer<xcb_query_tree_reply_t>(x.xcb(), xcb_query_tree(x.xcb(), x.root()), xcb_query_tree_reply);
    if (!tree)
        return {};
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    QList<Flight> flights;
    flights.reserve(tree->children_len);
    for (int i = 0; i < tree->children_len; ++i) {
        Flight flight{
            children[i], xcb_get_window_attributes(x.xcb(), children[i]), xcb_get_geometry(x.xcb(), children[i]), {}};
        if (x.extensions().shape)
            flight.shape = xcb_shape_query_extents(x.xcb(), children[i]);
        flights.append(flight);
    }

    QList<RootChild> found;
    for (const Flight &flight : flights) {
        // Every answer is read, also of a window that is left out, or it would stay with the connection for good.
        const auto attributes =
            xAnswer<xcb_get_window_attributes_reply_t>(x.xcb(), flight.attributes, xcb_get_window_attributes_reply);
        const auto geometry = xAnswer<xcb_get_geometry_reply_t>(x.xcb(), flight.geometry, xcb_get_geometry_reply);
        XReply<xcb_shape_query_extents_reply_t> shape;
        if (x.extensions().shape)
            shape = xAnswer<xcb_shape_query_extents_reply_t>(x.xcb(), flight.shape, xcb_shape_query_extents_reply);
        if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            continue;
        const int border = geometry->border_width;
        RootChild child;
        child.window = flight.window;
        child.rect = QRect(geometry->x, geometry->y, geometry->width + 2 * border, geometry->height + 2 * border);
        child.border = border;
        child.visual = attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY ? 0 : attributes->visual;
        child.shaped = shape && shape->bounding_shaped;
        child.bypassing = attributes->override_redirect;
        found.append(child);
    }
    return found;
}

QList<quint32> rootChildrenOf(const XConnection &x, const QList<quint32> &windows)
{
    QList<quint32> result(windows.size(), 0);
    QList<quint32> current = windows;
    QList<qsizetype> open;
    for (qsizetype i = 0; i < windows.size(); ++i)
        open.append(i);
    while (!open.isEmpty() && !x.isBroken()) {
        QList<xcb_query_tree_cookie_t> cookies;
        for (const qsizetype i : open)
            cookies.append(xcb_query_tree(x.xcb(), current[i]));
        QList<qsizetype> stillOpen;
        for (qsizetype n = 0; n < open.size(); ++n) {
            const auto tree = xAnswer<xcb_query_tree_reply_t>(x.xcb(), cookies[n], xcb_query_tree_reply);
            const qsizetype i = open[n];
            if (!tree || tree->parent == XCB_WINDOW_NONE)
                continue; // gone, or the root itself
            if (tree->parent == x.root()) {
                result[i] = current[i];
                continue;
            }
            current[i] = tree->parent;
            stillOpen.append(i);
        }
        open = stillOpen;
    }
    return result;
}

} // namespace tavrel::platform
