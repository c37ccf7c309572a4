#include "ui/eyedropper_layer.h"

#include "ui/color_value.h"
#include "ui/eyedropper_sample.h"

#include <QCoreApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr qreal kDistance = 24; ///< of the loupe from the point, and of the label when it stands above
constexpr qreal kLabelGap = 12;
constexpr qreal kLabelWidth = 84;
constexpr qreal kShadowOffset = 2;
constexpr qreal kRim = 2.5;
constexpr QColor kLabelSurface{28, 28, 30, 230};

QPainterPath circle(const QRectF &rect)
{
    QPainterPath path;
    path.addEllipse(rect);
    return path;
}

void paintCells(QPainter &painter, const QRectF &loupe, const QImage &sample)
{
    painter.save();
    painter.setClipPath(circle(loupe));
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.fillRect(loupe, kLabelSurface); // where the picture ends
    painter.drawImage(loupe, sample);
    painter.restore();

    constexpr qreal kCell = EyedropperLayer::kCell;
    QRectF middle(0, 0, kCell, kCell);
    middle.moveCenter(loupe.center());
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 200), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(middle.adjusted(-1, -1, 1, 1));
    painter.setPen(QPen(Qt::white, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(middle.adjusted(0.5, 0.5, -0.5, -0.5));
}

} // namespace

EyedropperLayer::EyedropperLayer(QWidget *host, Source source)
    : QWidget(host),
      m_source(std::move(source)),
      m_focusBefore(host->window()->focusWidget())
{
    setObjectName(QStringLiteral("eyedropperLayer"));
    setAccessibleName(tr("取色器"));
    setAttribute(Qt::WA_NoMousePropagation);
    setCursor(Qt::CrossCursor);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setGeometry(host->rect());
    host->installEventFilter(this);
    show();
    raise();
    setFocus(Qt::PopupFocusReason);
    const QPoint pointer = mapFromGlobal(QCursor::pos());
    if (rect().contains(pointer))
        lookAt(pointer);
}

EyedropperLayer::Places EyedropperLayer::placesFor(const QPointF &point, const QSizeF &layer)
{
    constexpr qreal kHeight = kDiameter + kLabelGap + kLabelHeight;
    QPointF corner = point + QPointF(kDistance, kDistance);
    if (corner.x() + kDiameter > layer.width())
        corner.setX(point.x() - kDistance - kDiameter);
    if (corner.y() + kHeight > layer.height())
        corner.setY(point.y() - kDistance - kHeight);
    // A layer with room on neither side.
    corner.setX(std::clamp(corner.x(), 0.0, std::max(0.0, layer.width() - kDiameter)));
    corner.setY(std::clamp(corner.y(), 0.0, std::max(0.0, layer.height() - kHeight)));
    // On whole pixels the cells are of one size.
    const QRectF loupe(std::round(corner.x()), std::round(corner.y()), kDiameter, kDiameter);
    return {loupe, QRectF(loupe.center().x() - kLabelWidth / 2, loupe.bottom() + kLabelGap, kLabelWidth, kLabelHeight)};
}

void EyedropperLayer::lookAt(const QPointF &point)
{
    updateLoupe();
    m_point = point;
    m_sample = m_source ? m_source(point) : QImage();
    m_valid = m_sample.size() == QSize(kEyedropperSide, kEyedropperSide);
    m_sample.setDevicePixelRatio(1);
    if (m_valid) {
        m_color = m_sample.pixelColor(kEyedropperSide / 2, kEyedropperSide / 2);
        m_color.setAlpha(255);
    }
    updateLoupe();
}

void EyedropperLayer::hideLoupe()
{
    updateLoupe();
    m_valid = false;
}

void EyedropperLayer::updateLoupe()
{
    if (!m_valid)
        return;
    const Places places = placesFor(m_point, size());
    update(places.loupe.united(places.label).adjusted(-2, -2, 2, 2 + kShadowOffset).toAlignedRect());
}

void EyedropperLayer::paintEvent(QPaintEvent *)
{
    if (!m_valid)
        return;
    const auto [loupe, label] = placesFor(m_point, size());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 55));
    painter.drawEllipse(loupe.translated(0, kShadowOffset));
    paintCells(painter, loupe, m_sample);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 230), kRim)); // else it is lost on a picture of one colour
    painter.drawEllipse(loupe.adjusted(kRim / 2, kRim / 2, -kRim / 2, -kRim / 2));
    painter.setPen(QPen(QColor(0, 0, 0, 28), 1));
    painter.drawEllipse(loupe.adjusted(0.5, 0.5, -0.5, -0.5));

    painter.setPen(Qt::NoPen);
    painter.setBrush(kLabelSurface);
    painter.drawRoundedRect(label, kLabelHeight / 2.0, kLabelHeight / 2.0);
    QFont text = font();
    text.setPixelSize(13);
    text.setWeight(QFont::DemiBold);
    painter.setFont(text);
    painter.setPen(Qt::white);
    painter.drawText(label, Qt::AlignCenter, hexOf(m_color));
}

bool EyedropperLayer::event(QEvent *event)
{
    // A key that is taken here is no shortcut of the window.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

bool EyedropperLayer::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Resize:
        if (parentWidget()) {
            hideLoupe();
            setGeometry(parentWidget()->rect());
        }
        return false;
    // At a ratio above 1 the outermost row and column of pixels are rounded to where no child reaches.
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::Wheel:
        return !m_done && QCoreApplication::sendEvent(this, event);
    default:
        return false;
    }
}

bool EyedropperLayer::focusNextPrevChild(bool)
{
    return true; // Tab leads nowhere
}

QPointF EyedropperLayer::pointOf(const QMouseEvent &event) const
{
    // The position of the event itself is rounded to whole units, at a fractional ratio a pixel beside the pointer's.
    return mapFrom(window(), event.scenePosition());
}

void EyedropperLayer::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_done)
        lookAt(pointOf(*event));
}

void EyedropperLayer::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        if (leave())
            Q_EMIT cancelled();
        return;
    }
    lookAt(pointOf(*event));
    if (!m_valid)
        return;
    const QColor color = m_color;
    if (leave())
        Q_EMIT picked(color);
}

void EyedropperLayer::mouseReleaseEvent(QMouseEvent *) {}

void EyedropperLayer::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}

void EyedropperLayer::wheelEvent(QWheelEvent *event)
{
    event->accept();
}

void EyedropperLayer::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && leave())
        Q_EMIT cancelled();
}

void EyedropperLayer::keyReleaseEvent(QKeyEvent *) {}

void EyedropperLayer::leaveEvent(QEvent *)
{
    hideLoupe();
}

bool EyedropperLayer::leave()
{
    if (std::exchange(m_done, true))
        return false;
    if (m_focusBefore)
        m_focusBefore->setFocus(Qt::OtherFocusReason);
    hide();
    deleteLater();
    return true;
}

} // namespace tavrel::ui
