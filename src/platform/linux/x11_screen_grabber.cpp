#include "platform/linux/x11_screen_grabber.h"

#include "platform/linux/capture_exclusions.h"
#include "platform/linux/shm_picture.h"
#include "platform/linux/x_connection.h"

#include <QHash>
#include <QPainter>

#include <xcb/composite.h>
#include <xcb/render.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <bit>
#include <utility>
#include <vector>

namespace tavrel::platform {

namespace {

// How far outside a picture the pointer may be and still be drawn into it, in pixels.
constexpr int kCursorMargin = 64;
// A compositing manager paints shadows around a window that are not part of the window.
constexpr int kShadowMargin = 48;
// A window that goes away while a picture is put together leaves a gap that is filled in another round.
constexpr int kAssemblyRounds = 4;
constexpr int kBands = 4;
constexpr int kBandsFrom = 400; ///< rows

/// What Render has to know of a visual.
struct VisualFormat
{
    xcb_render_pictformat_t format = 0;
    bool alpha = false;
};

xcb_rectangle_t toXcb(const QRect &rect)
{
    return {static_cast<qint16>(rect.x()), static_cast<qint16>(rect.y()), static_cast<quint16>(rect.width()),
            static_cast<quint16>(rect.height())};
}

std::vector<xcb_rectangle_t> toXcb(const QRegion &region)
{
    std::vector<xcb_rectangle_t> rects;
    rects.reserve(static_cast<std::size_t>(region.rectCount()));
    std::transform(region.begin(), region.end(), std::back_inserter(rects), [](const QRect &r) { return toXcb(r); });
    return rects;
}

} // namespace

struct X11ScreenGrabber::Private
{
    /// What is kept for one display.
    struct Slot
    {
        std::unique_ptr<ShmSegment> segment;
        xcb_pixmap_t pixmap = XCB_NONE; ///< depth 24, where a picture is put together
        xcb_render_picture_t picture = XCB_NONE;
        QSize pixmapSize;
        bool pixmapInSegment = false;
    };

    std::shared_ptr<XConnection> x;
    std::shared_ptr<CaptureExclusions> exclusions;
    QHash<QString, std::shared_ptr<Slot>> slotsByName;
    QHash<xcb_visualid_t, VisualFormat> visuals;
    xcb_render_pictformat_t rgb24 = 0;
    bool rootIsPlain = false; ///< the root's pixels are 0xXXRRGGBB in this machine's byte order
    bool shareMemory = true;

    void readFormats();
    Slot &slot(const QString &name);
    void freePixmap(Slot &slot);
    bool ensurePixmap(Slot &slot, const QSize &size);
    QImage fetch(Slot &slot, xcb_drawable_t from, const QRect &rect);
    void ensureSegment(Slot &slot, const QSize &size);
    QImage fetchAssembled(Slot &slot);
    QImage fetchShared(const ShmSegment &segment, xcb_drawable_t from, const QRect &rect);
    bool assemble(Slot &slot, const QRect &rect, const Hidden &hidden);
    xcb_render_picture_t pictureOf(xcb_drawable_t drawable, xcb_render_pictformat_t format, quint32 mask = 0,
                                   quint32 value = 0) const;
    void setClip(const Slot &slot, const QRegion &region) const;
    void drawScreen(const Slot &slot, const QRect &rect) const;
    void drawBackground(const Slot &slot, const QRect &rect, const QRegion &open, xcb_pixmap_t rootPixmap) const;
    void drawWindow(const Slot &slot, const QRect &rect, const RootChild &child, xcb_pixmap_t contents,
                    const QRegion &visible, bool blend) const;
};

void X11ScreenGrabber::Private::readFormats()
{
    const xcb_setup_t *setup = xcb_get_setup(x->xcb());
    bool fourBytes = false;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0; xcb_format_next(&it)) {
        if (it.data->depth == x->screen().root_depth)
            fourBytes = it.data->bits_per_pixel == 32;
    }
    const bool sameOrder =
        (setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST) == (std::endian::native == std::endian::little);
    for (auto depth = xcb_screen_allowed_depths_iterator(&x->screen()); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto it = xcb_depth_visuals_iterator(depth.data); it.rem > 0; xcb_visualtype_next(&it)) {
            if (it.data->visual_id == x->screen().root_visual)
                rootIsPlain = fourBytes && sameOrder && it.data->red_mask == 0xff0000U &&
                              it.data->green_mask == 0xff00U && it.data->blue_mask == 0xffU;
        }
    }
    if (!x->extensions().render)
        return;
    const XReply<xcb_render_query_pict_formats_reply_t> reply{
        xcb_render_query_pict_formats_reply(x->xcb(), xcb_render_query_pict_formats(x->xcb()), nullptr)};
    if (!reply)
        return;
    QHash<xcb_render_pictformat_t, bool> hasAlpha;
    for (auto it = xcb_render_query_pict_formats_formats_iterator(reply.get()); it.rem > 0;
         xcb_render_pictforminfo_next(&it)) {
        const xcb_render_directformat_t &direct = it.data->direct;
        hasAlpha.insert(it.data->id, direct.alpha_mask != 0);
        if (it.data->depth == 24 && direct.alpha_mask == 0 && direct.red_shift == 16 && direct.red_mask == 0xff &&
            direct.green_shift == 8 && direct.blue_shift == 0)
            rgb24 = it.data->id;
    }
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(reply.get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto it = xcb_render_pictdepth_visuals_iterator(depth.data); it.rem > 0;
                 xcb_render_pictvisual_next(&it))
                visuals.insert(it.data->visual, {it.data->format, hasAlpha.value(it.data->format)});
        }
    }
}

X11ScreenGrabber::Private::Slot &X11ScreenGrabber::Private::slot(const QString &name)
{
    std::shared_ptr<Slot> &kept = slotsByName[name];
    if (!kept)
        kept = std::make_shared<Slot>();
    return *kept;
}

void X11ScreenGrabber::Private::freePixmap(Slot &slot)
{
    if (slot.pixmap == XCB_NONE || x->isBroken())
        return;
    xcb_render_free_picture(x->xcb(), std::exchange(slot.picture, XCB_NONE));
    xcb_free_pixmap(x->xcb(), std::exchange(slot.pixmap, XCB_NONE));
    slot.pixmapSize = {};
}

/// Where the server can draw into shared memory, the pixmap is the segment, and nothing need be fetched from it.
bool X11ScreenGrabber::Private::ensurePixmap(Slot &slot, const QSize &size)
{
    if (slot.pixmap != XCB_NONE && slot.pixmapSize == size)
        return true;
    freePixmap(slot);
    ensureSegment(slot, size);
    const xcb_pixmap_t pixmap = xcb_generate_id(x->xcb());
    const auto width = static_cast<quint16>(size.width());
    const auto height = static_cast<quint16>(size.height());
    slot.pixmapInSegment = slot.segment && x->extensions().shmPixmaps &&
                           x->succeeded(xcb_shm_create_pixmap_checked(x->xcb(), pixmap, x->root(), width, height, 24,
                                                                      slot.segment->id(), 0));
    if (!slot.pixmapInSegment &&
        !x->succeeded(xcb_create_pixmap_checked(x->xcb(), 24, pixmap, x->root(), width, height)))
        return false;
    slot.pixmap = pixmap;
    slot.picture = pictureOf(pixmap, rgb24);
    slot.pixmapSize = size;
    return true;
}

void X11ScreenGrabber::Private::ensureSegment(Slot &slot, const QSize &size)
{
    const std::size_t bytes = std::size_t(size.width()) * std::size_t(size.height()) * sizeof(quint32);
    if (!shareMemory || (slot.segment && slot.segment->size() == bytes))
        return;
    slot.segment.reset(); // the old one first: two of them would be a lot of memory
    slot.segment = ShmSegment::create(x, bytes);
    shareMemory = slot.segment || x->isBroken();
}

/// The pixels of the slot's pixmap.
QImage X11ScreenGrabber::Private::fetchAssembled(Slot &slot)
{
    if (!slot.pixmapInSegment)
        return fetch(slot, slot.pixmap, QRect(QPoint(0, 0), slot.pixmapSize));
    xcb_flush(x->xcb());
    QImage image = makePicture(slot.pixmapSize);
    if (!x->sync() || image.isNull())
        return {};
    copyOpaque(image, slot.segment->pixels(), 0, image.height());
    return image;
}

/// The pixels of a drawable: through shared memory, or through the connection where memory cannot be shared.
QImage X11ScreenGrabber::Private::fetch(Slot &slot, xcb_drawable_t from, const QRect &rect)
{
    const auto [left, top, width, height] = toXcb(rect);
    const std::size_t bytes = std::size_t(width) * height * sizeof(quint32);
    ensureSegment(slot, rect.size());
    if (slot.segment)
        return fetchShared(*slot.segment, from, rect);
    const auto reply = xAnswer<xcb_get_image_reply_t>(
        x->xcb(), xcb_get_image(x->xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, from, left, top, width, height, ~0U),
        xcb_get_image_reply);
    if (!reply || std::size_t(xcb_get_image_data_length(reply.get())) < bytes)
        return {};
    QImage image = makePicture(rect.size());
    if (!image.isNull())
        copyOpaque(image, reinterpret_cast<const quint32 *>(xcb_get_image_data(reply.get())), 0, image.height());
    return image;
}

/// Server and client work side by side: while the one fetches the pixels, the other has the memory for them made
/// ready.
QImage X11ScreenGrabber::Private::fetchShared(const ShmSegment &segment, xcb_drawable_t from, const QRect &rect)
{
    // In bands, so that the server fetches the next one while this one is copied. Nobody may draw in between, or the
    // bands would show different moments.
    const bool isLarge = rect.height() >= kBandsFrom;
    const int bands = isLarge ? kBands : 1;
    std::array<xcb_shm_get_image_cookie_t, kBands> asked{};
    const auto rowOf = [&rect, bands](int band) { return rect.height() * band / bands; };
    if (isLarge)
        xcb_grab_server(x->xcb());
    for (int band = 0; band < bands; ++band) {
        const auto [left, top, width, height] =
            toXcb(QRect(rect.left(), rect.top() + rowOf(band), rect.width(), rowOf(band + 1) - rowOf(band)));
        asked[static_cast<std::size_t>(band)] =
            xcb_shm_get_image(x->xcb(), from, left, top, width, height, ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment.id(),
                              static_cast<quint32>(rowOf(band) * rect.width()) * sizeof(quint32));
    }
    if (isLarge)
        xcb_ungrab_server(x->xcb());
    xcb_flush(x->xcb());
    QImage image = makePicture(rect.size());
    bool isWhole = !image.isNull();
    for (int band = 0; band < bands; ++band) {
        const auto reply = xAnswer<xcb_shm_get_image_reply_t>(x->xcb(), asked[static_cast<std::size_t>(band)],
                                                              xcb_shm_get_image_reply);
        isWhole = isWhole && reply;
        if (isWhole)
            copyOpaque(image, segment.pixels(), rowOf(band), rowOf(band + 1));
    }
    return isWhole ? image : QImage();
}

xcb_render_picture_t X11ScreenGrabber::Private::pictureOf(xcb_drawable_t drawable, xcb_render_pictformat_t format,
                                                          quint32 mask, quint32 value) const
{
    const xcb_render_picture_t picture = xcb_generate_id(x->xcb());
    xcb_render_create_picture(x->xcb(), picture, drawable, format, mask, &value);
    return picture;
}

/// Limits drawing to a region in pixels of the slot's pixmap.
void X11ScreenGrabber::Private::setClip(const Slot &slot, const QRegion &region) const
{
    const std::vector<xcb_rectangle_t> rects = toXcb(region);
    xcb_render_set_picture_clip_rectangles(x->xcb(), slot.picture, 0, 0, static_cast<quint32>(rects.size()),
                                           rects.data());
}

/// What is on the screen, with all windows.
void X11ScreenGrabber::Private::drawScreen(const Slot &slot, const QRect &rect) const
{
    const xcb_render_picture_t root = pictureOf(x->root(), visuals.value(x->screen().root_visual).format,
                                                XCB_RENDER_CP_SUBWINDOW_MODE, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS);
    const auto [left, top, width, height] = toXcb(rect);
    xcb_render_composite(x->xcb(), XCB_RENDER_PICT_OP_SRC, root, XCB_NONE, slot.picture, left, top, 0, 0, 0, 0, width,
                         height);
    xcb_render_free_picture(x->xcb(), root);
}

/// Fills `open` (pixels of the picture) with the desktop's picture; without one with what can be seen of the root,
/// and black where it is covered, since nobody has kept that.
void X11ScreenGrabber::Private::drawBackground(const Slot &slot, const QRect &rect, const QRegion &open,
                                               xcb_pixmap_t rootPixmap) const
{
    setClip(slot, open);
    const xcb_rectangle_t whole{0, 0, static_cast<quint16>(rect.width()), static_cast<quint16>(rect.height())};
    xcb_render_fill_rectangles(x->xcb(), XCB_RENDER_PICT_OP_SRC, slot.picture, {0, 0, 0, 0xffff}, 1, &whole);
    if (rootPixmap != XCB_NONE) {
        const xcb_render_picture_t tile = pictureOf(rootPixmap, visuals.value(x->screen().root_visual).format,
                                                    XCB_RENDER_CP_REPEAT, XCB_RENDER_REPEAT_NORMAL);
        xcb_render_composite(x->xcb(), XCB_RENDER_PICT_OP_SRC, tile, XCB_NONE, slot.picture,
                             static_cast<qint16>(rect.x()), static_cast<qint16>(rect.y()), 0, 0, 0, 0, whole.width,
                             whole.height);
        xcb_render_free_picture(x->xcb(), tile);
        return;
    }
    // Copying, since it alone leaves out what cannot be seen: a Render source has the windows' pixels there.
    if (x->screen().root_depth != 24)
        return;
    const std::vector<xcb_rectangle_t> rects = toXcb(open);
    const xcb_gcontext_t gc = xcb_generate_id(x->xcb());
    const quint32 values[] = {XCB_SUBWINDOW_MODE_CLIP_BY_CHILDREN, 0};
    xcb_create_gc(x->xcb(), gc, slot.pixmap, XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, values);
    xcb_set_clip_rectangles(x->xcb(), XCB_CLIP_ORDERING_UNSORTED, gc, 0, 0, static_cast<quint32>(rects.size()),
                            rects.data());
    xcb_copy_area(x->xcb(), x->root(), slot.pixmap, gc, static_cast<qint16>(rect.x()), static_cast<qint16>(rect.y()), 0,
                  0, whole.width, whole.height);
    xcb_free_gc(x->xcb(), gc);
}

/// Draws a window's pixmap, border included, where it is `visible` (pixels of the picture).
void X11ScreenGrabber::Private::drawWindow(const Slot &slot, const QRect &rect, const RootChild &child,
                                           xcb_pixmap_t contents, const QRegion &visible, bool blend) const
{
    xcb_connection_t *c = x->xcb();
    const QPoint at = child.rect.topLeft() - rect.topLeft();
    if (child.shaped) {
        const std::vector<xcb_rectangle_t> rects = toXcb(visible);
        const xcb_xfixes_region_t clip = xcb_generate_id(c);
        const xcb_xfixes_region_t shape = xcb_generate_id(c);
        xcb_xfixes_create_region(c, clip, static_cast<quint32>(rects.size()), rects.data());
        xcb_xfixes_create_region_from_window(c, shape, child.window, XCB_SHAPE_SK_BOUNDING);
        // A window's shape counts from inside its border.
        xcb_xfixes_translate_region(c, shape, static_cast<qint16>(at.x() + child.border),
                                    static_cast<qint16>(at.y() + child.border));
        xcb_xfixes_intersect_region(c, clip, shape, clip);
        xcb_xfixes_set_picture_clip_region(c, slot.picture, clip, 0, 0);
        xcb_xfixes_destroy_region(c, shape);
        xcb_xfixes_destroy_region(c, clip);
    } else {
        setClip(slot, visible);
    }
    const VisualFormat format = visuals.value(child.visual);
    const xcb_render_picture_t source = pictureOf(contents, format.format);
    const auto [left, top, width, height] = toXcb(QRect(at, child.rect.size()));
    xcb_render_composite(c, blend && format.alpha ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, source, XCB_NONE,
                         slot.picture, 0, 0, 0, 0, left, top, width, height);
    xcb_render_free_picture(c, source);
}

/// Puts the picture together in the slot's pixmap.
bool X11ScreenGrabber::Private::assemble(Slot &slot, const QRect &rect, const Hidden &hidden)
{
    const QRect whole(QPoint(0, 0), rect.size());
    const QRegion behind = (hidden.region & rect).translated(-rect.topLeft());

    QList<RootChild> stack = hidden.stack;
    stack.removeIf([&](const RootChild &child) {
        return child.isInputOnly() || hidden.frames.contains(child.window) || !visuals.contains(child.visual) ||
               !behind.intersects(child.rect.translated(-rect.topLeft()));
    });

    struct Layer
    {
        RootChild child;
        QRegion visible;
        xcb_pixmap_t contents;
        xcb_void_cookie_t named;
    };
    for (int round = 0; round < kAssemblyRounds; ++round) {
        // From the top down: what an opaque window covers need not be drawn, so that the cost is one screenful of
        // pixels however many windows there are.
        std::vector<Layer> layers;
        QRegion open = behind;
        for (auto it = stack.crbegin(); it != stack.crend() && !open.isEmpty(); ++it) {
            const QRect area = it->rect.translated(-rect.topLeft());
            const QRegion visible = open & area;
            if (visible.isEmpty())
                continue;
            if (!it->shaped && !(hidden.composited && visuals.value(it->visual).alpha))
                open -= area;
            const xcb_pixmap_t contents = xcb_generate_id(x->xcb());
            layers.push_back(
                {*it, visible, contents, xcb_composite_name_window_pixmap_checked(x->xcb(), it->window, contents)});
        }
        QSet<quint32> gone;
        for (const Layer &layer : layers) {
            // Also the windows that cannot be redirected end here, such as a compositing manager's own canvas.
            if (!x->succeeded(layer.named))
                gone.insert(layer.child.window);
        }
        const bool complete = gone.isEmpty() || round + 1 == kAssemblyRounds;
        if (complete) {
            if (!(QRegion(whole) - behind).isEmpty()) {
                setClip(slot, QRegion(whole) - behind);
                drawScreen(slot, rect);
            }
            if (!open.isEmpty())
                drawBackground(slot, rect, open, hidden.rootPixmap);
            for (auto it = layers.crbegin(); it != layers.crend(); ++it) {
                if (!gone.contains(it->child.window))
                    drawWindow(slot, rect, it->child, it->contents, it->visible, hidden.composited);
            }
        }
        for (const Layer &layer : layers) {
            if (!gone.contains(layer.child.window))
                xcb_free_pixmap(x->xcb(), layer.contents);
        }
        if (complete)
            return !x->isBroken();
        stack.removeIf([&gone](const RootChild &child) { return gone.contains(child.window); });
    }
    return false;
}

X11ScreenGrabber::X11ScreenGrabber(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions)
    : d(std::make_unique<Private>())
{
    d->x = std::move(x);
    d->exclusions = std::move(exclusions);
    d->readFormats();
}

X11ScreenGrabber::~X11ScreenGrabber()
{
    keepOnly({});
}

void X11ScreenGrabber::dropPages() const
{
    for (const auto &slot : std::as_const(d->slotsByName)) {
        if (slot->segment)
            slot->segment->dropPages();
    }
}

X11ScreenGrabber::Hidden X11ScreenGrabber::findHidden(const QSet<WId> &windows) const
{
    const XConnection &x = *d->x;
    QList<quint32> wanted;
    for (const WId window : windows + d->exclusions->windows())
        wanted.append(static_cast<quint32>(window));
    if (wanted.isEmpty() || !x.extensions().composite || !x.extensions().render || d->rgb24 == 0)
        return {};

    Hidden hidden;
    for (const quint32 frame : rootChildrenOf(x, wanted)) {
        if (frame != 0)
            hidden.frames.insert(frame);
    }
    if (hidden.frames.isEmpty())
        return {};
    const auto rootPixmap = x.requestProperty(x.root(), XAtom::RootPixmap, XCB_ATOM_PIXMAP);
    const auto setRootPixmap = x.requestProperty(x.root(), XAtom::SetRootPixmap, XCB_ATOM_PIXMAP);
    const auto manager = xcb_get_selection_owner(x.xcb(), x.atom(XAtom::CompositeManager));
    hidden.stack = viewableRootChildren(x);
    for (const auto &cookie : {rootPixmap, setRootPixmap}) {
        const auto items = propertyItems(x.property(cookie).get());
        if (!items.isEmpty() && hidden.rootPixmap == 0)
            hidden.rootPixmap = items.first();
    }
    const XReply<xcb_get_selection_owner_reply_t> owner{xcb_get_selection_owner_reply(x.xcb(), manager, nullptr)};
    hidden.composited = owner && owner->owner != XCB_WINDOW_NONE;

    for (const RootChild &child : std::as_const(hidden.stack)) {
        if (!hidden.frames.contains(child.window) || child.isInputOnly())
            continue;
        QRegion covered(child.rect);
        if (child.shaped) {
            const auto asked = xcb_shape_get_rectangles(x.xcb(), child.window, XCB_SHAPE_SK_BOUNDING);
            const auto shape =
                xAnswer<xcb_shape_get_rectangles_reply_t>(x.xcb(), asked, xcb_shape_get_rectangles_reply);
            if (shape) {
                const xcb_rectangle_t *rects = xcb_shape_get_rectangles_rectangles(shape.get());
                const QPoint inside = child.rect.topLeft() + QPoint(child.border, child.border);
                covered = QRegion();
                for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(shape.get()); ++i)
                    covered += QRect(rects[i].x, rects[i].y, rects[i].width, rects[i].height).translated(inside);
            }
        }
        if (hidden.composited && !child.shaped) {
            const int m = kShadowMargin;
            covered = QRegion(child.rect.adjusted(-m, -m, m, m));
        }
        hidden.region += covered;
    }
    // A stale picture of the desktop is worse than none: ask for it once, now, and not in each picture.
    if (hidden.rootPixmap != 0) {
        const auto pixmap = xAnswer<xcb_get_geometry_reply_t>(x.xcb(), xcb_get_geometry(x.xcb(), hidden.rootPixmap),
                                                              xcb_get_geometry_reply);
        if (!pixmap || pixmap->depth != x.screen().root_depth)
            hidden.rootPixmap = 0;
    }
    return hidden;
}

QImage X11ScreenGrabber::grab(const QString &slot, const QRect &rect, const Hidden &hidden)
{
    if (rect.isEmpty() || d->x->isBroken())
        return {};
    Private::Slot &kept = d->slot(slot);
    const bool lookBehind = hidden.meets(rect);
    if (!lookBehind && d->rootIsPlain) {
        d->freePixmap(kept);
        return d->fetch(kept, d->x->root(), rect);
    }
    // Roots of other pixel formats are drawn into a pixmap of the usual one; Render converts.
    if (d->rgb24 == 0 || !d->ensurePixmap(kept, rect.size()) || !d->assemble(kept, rect, hidden))
        return {};
    return d->fetchAssembled(kept);
}

void X11ScreenGrabber::drawCursor(QImage &image, const QRect &rect) const
{
    if (!d->x->extensions().fixes)
        return;
    const XReply<xcb_xfixes_get_cursor_image_reply_t> cursor{
        xcb_xfixes_get_cursor_image_reply(d->x->xcb(), xcb_xfixes_get_cursor_image(d->x->xcb()), nullptr)};
    if (!cursor || cursor->width == 0 || cursor->height == 0)
        return;
    const QPoint position = QPoint(cursor->x, cursor->y) - rect.topLeft();
    const int m = kCursorMargin;
    if (!QRect(QPoint(0, 0), rect.size()).adjusted(-m, -m, m, m).contains(position))
        return;
    const QImage shape(reinterpret_cast<const uchar *>(xcb_xfixes_get_cursor_image_cursor_image(cursor.get())),
                       cursor->width, cursor->height, cursor->width * 4, QImage::Format_ARGB32_Premultiplied);
    // In device pixels, whatever ratio the picture carries.
    const double ratio = image.devicePixelRatio();
    image.setDevicePixelRatio(1.0);
    QPainter painter(&image);
    painter.drawImage(position - QPoint(cursor->xhot, cursor->yhot), shape);
    painter.end();
    image.setDevicePixelRatio(ratio);
}

void X11ScreenGrabber::keepOnly(const QSet<QString> &names)
{
    for (auto it = d->slotsByName.begin(); it != d->slotsByName.end();) {
        if (names.contains(it.key())) {
            ++it;
            continue;
        }
        d->freePixmap(**it);
        it = d->slotsByName.erase(it);
    }
}

} // namespace tavrel::platform
