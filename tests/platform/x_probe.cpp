#include "platform/x_probe.h"

#include <QColor>
#include <QCoreApplication>
#include <QRegion>
#include <QTest>

#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shape.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xcbext.h>
#include <xcb/xtest.h>

#include <sys/uio.h>

#include <chrono>
#include <thread>
#include <vector>

namespace tavrel::test {

namespace {

xcb_rectangle_t toXcb(const QRect &r)
{
    return {static_cast<qint16>(r.x()), static_cast<qint16>(r.y()), static_cast<quint16>(r.width()),
            static_cast<quint16>(r.height())};
}

/// Noise in which no row or column looks like the next.
std::vector<quint32> noise(int width, int height, quint32 seed)
{
    std::vector<quint32> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (quint32 &pixel : pixels) {
        seed = seed * 1664525U + 1013904223U;
        pixel = seed >> 8 | 0xff000000U;
    }
    return pixels;
}

/// Uploads pixels in slices that fit into a request.
void put(xcb_connection_t *c, xcb_drawable_t to, int width, int height, const std::vector<quint32> &pixels)
{
    const xcb_gcontext_t gc = xcb_generate_id(c);
    xcb_create_gc(c, gc, to, 0, nullptr);
    const auto geometry = TAVREL_X_ASK(c, get_geometry, to);
    const int rows = std::max(1, 200'000 / (width * 4));
    for (int y = 0; y < height; y += rows) {
        const int count = std::min(rows, height - y);
        xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, to, gc, static_cast<quint16>(width), static_cast<quint16>(count), 0,
                      static_cast<qint16>(y), 0, geometry->depth, static_cast<quint32>(width * count * 4),
                      reinterpret_cast<const quint8 *>(pixels.data() + y * width));
    }
    xcb_free_gc(c, gc);
}

} // namespace

XProbe::XProbe() : m_c(xcb_connect(nullptr, nullptr)), m_screen(nullptr)
{
    if (xcb_connection_has_error(m_c))
        qFatal("no X server for the test");
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data;
}

XProbe::~XProbe()
{
    xcb_disconnect(m_c);
}

xcb_window_t XProbe::open(const QRect &rect, const Look &look)
{
    quint8 depth = XCB_COPY_FROM_PARENT;
    xcb_visualid_t visual = XCB_COPY_FROM_PARENT;
    xcb_colormap_t colormap = m_screen->default_colormap;
    if (look.argb) {
        for (auto it = xcb_screen_allowed_depths_iterator(m_screen); it.rem > 0; xcb_depth_next(&it)) {
            if (it.data->depth == 32)
                visual = xcb_depth_visuals_iterator(it.data).data->visual_id;
        }
        depth = 32;
        colormap = xcb_generate_id(m_c);
        xcb_create_colormap(m_c, XCB_COLORMAP_ALLOC_NONE, colormap, m_screen->root, visual);
    }
    const quint32 pixel = qPremultiply(look.color.rgba());
    const quint32 values[] = {pixel, 0xff00ff00U, look.bypassing, colormap};
    const xcb_window_t window = xcb_generate_id(m_c);
    xcb_create_window(m_c, depth, window, m_screen->root, static_cast<qint16>(rect.x()), static_cast<qint16>(rect.y()),
                      static_cast<quint16>(rect.width()), static_cast<quint16>(rect.height()),
                      static_cast<quint16>(look.border), XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    if (!look.shape.isEmpty()) {
        std::vector<xcb_rectangle_t> rects;
        for (const QRect &r : look.shape)
            rects.push_back(toXcb(r));
        xcb_shape_rectangles(m_c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
                             static_cast<quint32>(rects.size()), rects.data());
    }
    // US position, so that a window manager leaves it where it is.
    const quint32 hints[18] = {1U};
    xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18,
                        hints);
    if (!look.mapped)
        return window;
    map(window);
    if (look.patterned)
        paintNoise(window, window);
    return window;
}

void XProbe::map(xcb_window_t window)
{
    xcb_map_window(m_c, window);
    for (int tries = 0; tries < 2000 && !isViewable(window); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

void XProbe::raise(xcb_window_t window)
{
    const quint32 above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(m_c, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    sync();
}

void XProbe::close(xcb_window_t window)
{
    xcb_destroy_window(m_c, window);
    sync();
}

void XProbe::paintNoise(xcb_window_t window, quint32 seed)
{
    const auto size = TAVREL_X_ASK(m_c, get_geometry, window);
    put(m_c, window, size->width, size->height, noise(size->width, size->height, seed));
    sync();
}

QImage XProbe::grab() const
{
    const QSize size = rootRect().size();
    const auto reply = TAVREL_X_ASK(m_c, get_image, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, 0, 0,
                                    m_screen->width_in_pixels, m_screen->height_in_pixels, ~0U);
    if (!reply)
        return {};
    const QImage view(xcb_get_image_data(reply.get()), size.width(), size.height(), size.width() * 4,
                      QImage::Format_RGB32);
    return view.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage XProbe::settled() const
{
    QImage last;
    for (int same = 0, tries = 0; same < 4 && tries < 100; ++tries) {
        QTest::qWait(15);
        const QImage now = grab();
        same = now == last ? same + 1 : 0;
        last = now;
    }
    return last;
}

QRect XProbe::rootRect() const
{
    return {0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels};
}

void XProbe::setRootNoise()
{
    const QRect root = rootRect();
    const xcb_pixmap_t pixmap = xcb_generate_id(m_c);
    xcb_create_pixmap(m_c, m_screen->root_depth, pixmap, m_screen->root, static_cast<quint16>(root.width()),
                      static_cast<quint16>(root.height()));
    put(m_c, pixmap, root.width(), root.height(), noise(root.width(), root.height(), 7));
    xcb_change_window_attributes(m_c, m_screen->root, XCB_CW_BACK_PIXMAP, &pixmap);
    for (const char *name : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"})
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, m_screen->root, atom(name), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
    xcb_clear_area(m_c, 0, m_screen->root, 0, 0, 0, 0);
    sync();
}

void XProbe::setMonitor(const QByteArray &name, const QRect &rect)
{
    if (rect.isEmpty()) {
        xcb_randr_delete_monitor(m_c, m_screen->root, atom(name));
        sync();
        return;
    }
    // The first monitor takes the one output that a virtual server has, or the server adds a monitor for it.
    const auto resources = TAVREL_X_ASK(m_c, randr_get_screen_resources_current, m_screen->root);
    const bool first = rect.topLeft() == QPoint(0, 0);
    std::vector<quint8> bytes(sizeof(xcb_randr_monitor_info_t) + (first ? sizeof(xcb_randr_output_t) : 0));
    auto *info = reinterpret_cast<xcb_randr_monitor_info_t *>(bytes.data());
    info->name = atom(name);
    info->primary = first;
    info->nOutput = first ? 1 : 0;
    info->x = static_cast<qint16>(rect.x());
    info->y = static_cast<qint16>(rect.y());
    info->width = static_cast<quint16>(rect.width());
    info->height = static_cast<quint16>(rect.height());
    info->width_in_millimeters = 300;
    info->height_in_millimeters = 200;
    if (first)
        *xcb_randr_monitor_info_outputs(info) = *xcb_randr_get_screen_resources_current_outputs(resources.get());
    // By hand: xcb 1.15 miscounts the length of this request and closes the connection over it.
    xcb_randr_set_monitor_request_t head = {};
    head.window = m_screen->root;
    iovec parts[4] = {{}, {}, {&head, sizeof head}, {bytes.data(), bytes.size()}}; // xcb wants two free ones in front
    const xcb_protocol_request_t request{2, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
    xcb_send_request(m_c, 0, parts + 2, &request);
    sync();
}

void XProbe::warpPointer(const QPoint &position)
{
    xcb_warp_pointer(m_c, XCB_NONE, m_screen->root, 0, 0, 0, 0, static_cast<qint16>(position.x()),
                     static_cast<qint16>(position.y()));
    sync();
}

xcb_window_t XProbe::showBigCursor()
{
    const auto formats = TAVREL_X_ASK(m_c, render_query_pict_formats);
    xcb_render_pictformat_t argb = 0;
    for (auto it = xcb_render_query_pict_formats_formats_iterator(formats.get()); it.rem > 0;
         xcb_render_pictforminfo_next(&it)) {
        if (it.data->depth == 32 && it.data->direct.alpha_mask == 0xff && it.data->direct.red_shift == 16)
            argb = it.data->id;
    }
    const xcb_pixmap_t pixmap = xcb_generate_id(m_c);
    const xcb_render_picture_t picture = xcb_generate_id(m_c);
    const xcb_cursor_t cursor = xcb_generate_id(m_c);
    const xcb_rectangle_t whole{0, 0, 128, 128};
    xcb_create_pixmap(m_c, 32, pixmap, m_screen->root, 128, 128);
    xcb_render_create_picture(m_c, picture, pixmap, argb, 0, nullptr);
    xcb_render_fill_rectangles(m_c, XCB_RENDER_PICT_OP_SRC, picture, {0xffff, 0, 0xffff, 0xffff}, 1, &whole);
    xcb_render_create_cursor(m_c, cursor, picture, 120, 64);
    const xcb_window_t glass = xcb_generate_id(m_c);
    const quint32 values[] = {1, cursor};
    xcb_create_window(m_c, 0, glass, m_screen->root, 0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_CURSOR,
                      values);
    xcb_map_window(m_c, glass);
    sync();
    return glass;
}

xcb_keycode_t XProbe::keyCode(xcb_keysym_t symbol) const
{
    const std::unique_ptr<xcb_key_symbols_t, void (*)(xcb_key_symbols_t *)> symbols(xcb_key_symbols_alloc(m_c),
                                                                                    xcb_key_symbols_free);
    const XReply<xcb_keycode_t> codes{xcb_key_symbols_get_keycode(symbols.get(), symbol)};
    return codes ? *codes : xcb_keycode_t(0);
}

void XProbe::pressKey(xcb_keysym_t key)
{
    for (const quint8 type : {quint8(XCB_KEY_PRESS), quint8(XCB_KEY_RELEASE)})
        xcb_test_fake_input(m_c, type, keyCode(key), XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    sync();
}

void XProbe::click(const QPoint &position)
{
    warpPointer(position);
    for (const quint8 type : {quint8(XCB_BUTTON_PRESS), quint8(XCB_BUTTON_RELEASE)})
        xcb_test_fake_input(m_c, type, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    sync();
}

bool XProbe::isViewable(xcb_window_t window) const
{
    const auto attributes = TAVREL_X_ASK(m_c, get_window_attributes, window);
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

QRect XProbe::geometry(xcb_window_t window) const
{
    const auto geometry = TAVREL_X_ASK(m_c, get_geometry, window);
    const auto at = TAVREL_X_ASK(m_c, translate_coordinates, window, m_screen->root, 0, 0);
    if (!geometry || !at)
        return {};
    const int border = geometry->border_width;
    return {at->dst_x - border, at->dst_y - border, geometry->width + 2 * border, geometry->height + 2 * border};
}

xcb_window_t XProbe::focus() const
{
    const auto reply = TAVREL_X_ASK(m_c, get_input_focus);
    return reply ? reply->focus : 0;
}

void XProbe::setFocus(xcb_window_t window)
{
    xcb_set_input_focus(m_c, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    sync();
}

xcb_window_t XProbe::frameOf(xcb_window_t window) const
{
    for (;;) {
        const auto tree = TAVREL_X_ASK(m_c, query_tree, window);
        if (!tree || tree->parent == XCB_WINDOW_NONE)
            return XCB_WINDOW_NONE;
        if (tree->parent == m_screen->root)
            return window;
        window = tree->parent;
    }
}

xcb_window_t XProbe::topMostAt(const QPoint &point) const
{
    const auto tree = TAVREL_X_ASK(m_c, query_tree, m_screen->root);
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    for (int i = tree->children_len - 1; i >= 0; --i) {
        const auto attributes = TAVREL_X_ASK(m_c, get_window_attributes, children[i]);
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY || !geometry(children[i]).contains(point))
            continue;
        const xcb_window_t canvas = children[i]; // the composite overlay window has ids of the server's own
        if ((canvas & ~xcb_get_setup(m_c)->resource_id_mask) == 0)
            continue;
        return canvas;
    }
    return XCB_WINDOW_NONE;
}

int XProbe::stackPosition(xcb_window_t window) const
{
    const auto tree = TAVREL_X_ASK(m_c, query_tree, m_screen->root);
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    const auto *found = std::find(children, children + tree->children_len, frameOf(window));
    return found == children + tree->children_len ? -1 : static_cast<int>(found - children);
}

QList<quint32> XProbe::property(xcb_window_t window, const QByteArray &name) const
{
    const auto reply =
        TAVREL_X_ASK(m_c, get_property, 0, window ? window : m_screen->root, atom(name), XCB_ATOM_ANY, 0, 1024);
    if (!reply || reply->format != 32)
        return {};
    const auto *first = static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
    return QList<quint32>(first, first + reply->value_len);
}

xcb_atom_t XProbe::atom(const QByteArray &name) const
{
    const auto reply = TAVREL_X_ASK(m_c, intern_atom, 0, static_cast<quint16>(name.size()), name.constData());
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void XProbe::sync() const
{
    const auto reply = TAVREL_X_ASK(m_c, get_input_focus);
}

} // namespace tavrel::test
