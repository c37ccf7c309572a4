// What the overlay shows, and which part of it has to be painted anew.
#include "overlay/capture_overlay.h"

#include "annotate/crop_rect.h"
#include "annotate/selection_marks.h"
#include "overlay/long_capture_mode.h"
#include "overlay/overlay_marks.h"
#include "overlay/overlay_panels.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

QRectF grown(const QRectF &rect, double by)
{
    return rect.isNull() ? QRectF() : rect.adjusted(-by, -by, by, by);
}

} // namespace

void CaptureOverlay::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    if (isLongActive()) {
        painter.setClipRegion(event->region());
        m_picture.paintDimmed(painter, devicePixelRatioF());
        m_long->paint(painter);
        m_toast.paint(painter, QSizeF(size()));
        return;
    }
    const QRectF clear = hasSelection() ? m_selection : shownHover();
    // Under a clip of one rectangle a picture is copied row by row; under that of the whole region it is blended span
    // by span, which takes five times as long.
    for (const QRect &part : event->region()) {
        painter.setClipRect(part);
        if (!m_picture.area().contains(QRectF(part)))
            painter.fillRect(part, Qt::black);
        m_picture.paintDimmed(painter, devicePixelRatioF());
        if (!clear.isEmpty())
            m_picture.paintClear(painter, clear, devicePixelRatioF());
    }
    painter.setClipping(false);

    const PaintedRegions now = regionsNow();
    const auto isTouched = [event](const QRectF &part) {
        return !part.isNull() && event->region().intersects(part.toAlignedRect());
    };
    if (hasSelection())
        paintSelection(painter, event->region());
    else if (isTouched(now.hover))
        paintRectOutline(painter, shownHover(), 1.0);
    if (isTouched(now.hint))
        m_hints.paint(painter, hintBox().topLeft());
    if (isTouched(now.magnifier))
        m_magnifier.paint(painter, magnifierBox(m_pointer, magnifierLook(), QSizeF(size())), devicePixelRatioF(),
                          m_picture, m_pointer, magnifierLook());
    if (isTouched(now.toast))
        m_toast.paint(painter, QSizeF(size()));
    m_painted = now;
}

void CaptureOverlay::paintSelection(QPainter &painter, const QRegion &exposed) const
{
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(m_picture.origin());
    ShapeRenderContext context;
    context.backdrop = &m_picture.image();
    context.effectSource = m_effects.get();
    context.eraseEngine = m_eraseEngine.get();
    context.canvasBounds = m_selection.translated(-m_picture.origin());
    context.contentClip = context.canvasBounds;
    for (const QRect &part : exposed)
        context.exposed.append(QRectF(part).translated(-m_picture.origin()));
    if (m_longResult.isNull())
        m_document.paint(painter, context);
    painter.restore();
    if (!m_longResult.isNull())
        paintLongResult(painter);

    paintSelectionMarks(painter, m_selection, 1.0);
    paintSizeLabel(painter, sizeLabel(), sizeText());
}

void CaptureOverlay::paintLongResult(QPainter &painter) const
{
    painter.save();
    painter.setClipRect(m_selection, Qt::IntersectClip);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double scale = m_selection.width() / std::max(1, m_longResult.width());
    // Only what shows: the page may be a hundred times as high.
    const int rows = std::min(m_longResult.height(), static_cast<int>(std::ceil(m_selection.height() / scale)));
    painter.drawImage(QRectF(m_selection.topLeft(), QSizeF(m_selection.width(), rows * scale)), m_longResult,
                      QRectF(0, 0, m_longResult.width(), rows));
    painter.restore();
}

QRegion CaptureOverlay::shapeDamage()
{
    QRegion damage;
    for (const QRectF &place : m_document.takeDamage()) {
        if (place.isNull())
            damage += rect();
        else
            damage += place.translated(m_picture.origin()).toAlignedRect().adjusted(-1, -1, 1, 1);
    }
    return damage;
}

QRectF CaptureOverlay::shownHover() const
{
    return hasSelection() || m_mode == OverlayMode::Selecting ? QRectF() : m_hover.shown();
}

QString CaptureOverlay::sizeText() const
{
    if (!m_longResult.isNull())
        return sizeLabelText(m_longResult.size());
    return sizeLabelText(
        cropRect(m_selection.translated(-m_picture.origin()), m_picture.ratio(), m_picture.image().size()).size());
}

QRectF CaptureOverlay::sizeLabel() const
{
    const QRectF box = sizeLabelBox(m_selection, sizeText(), width());
    if (!m_panels->cover(box))
        return box;
    // Panels above the selection reach over its place there.
    const QRectF inside = sizeLabelBox(m_selection.translated(0, -m_selection.top()), sizeText(), width())
                              .translated(0, m_selection.top());
    return m_panels->cover(inside) ? box : inside;
}

bool CaptureOverlay::picksColor() const
{
    // A stitched page hides the picture below it.
    const bool onPage = !m_longResult.isNull() && m_selection.contains(m_pointer);
    return m_pointerInside && !hasTool() && !onPage && m_picture.hasPixelAt(m_pointer);
}

bool CaptureOverlay::showsMagnifier() const
{
    return magnifierLook().isShown() && m_mode != OverlayMode::Drawing && picksColor();
}

MagnifierLook CaptureOverlay::magnifierLook() const
{
    return {.lens = m_config.showMagnifier, .colors = m_config.showColorPicker, .colorFormat = m_colorFormat};
}

void CaptureOverlay::rebuildHints()
{
    const int key = static_cast<int>(m_document.tool()) * 4;
    if (key == m_hintKey)
        return;
    m_hintKey = key;
    m_hints = HintCard(hintRows(m_document.tool(), m_document.attributes().markerRectMode, m_config.builtin));
}

QRectF CaptureOverlay::hintBox() const
{
    if (!m_config.showOperationTips || m_hints.isEmpty())
        return {};
    const QScreen *display = screen();
    const double inset = display ? display->geometry().bottom() - display->availableGeometry().bottom() : 0;
    const QRectF box = m_hints.place(height(), inset);
    const QRectF reach = grown(box, 8);
    const auto isCovered = [&reach](const QRectF &other) { return !other.isEmpty() && reach.intersects(other); };
    if (box.top() < 0 || isCovered(m_selection) || isCovered(m_hover.target()) || m_panels->cover(reach))
        return {};
    return box;
}

PaintedRegions CaptureOverlay::regionsNow() const
{
    PaintedRegions now;
    now.everything = false;
    if (hasSelection()) {
        now.selectionBox = grown(m_selection, 16);
        if (m_mode == OverlayMode::Selecting || m_mode == OverlayMode::Moving || m_mode == OverlayMode::Resizing)
            now.selectionRect = m_selection;
        now.sizeLabel = grown(sizeLabel(), 4);
    }
    now.hover = grown(shownHover(), 4);
    now.hint = grown(hintBox(), 4);
    now.hintKey = m_hintKey;
    if (showsMagnifier())
        now.magnifier = grown(magnifierBox(m_pointer, magnifierLook(), QSizeF(size())), 3);
    now.toast = grown(m_toast.box(QSizeF(size())), 4);
    return now;
}

void CaptureOverlay::scheduleUpdate()
{
    rebuildHints();
    update(dirtyRegion(m_painted, regionsNow(), rect()) + shapeDamage());
}

} // namespace tavrel::ui
