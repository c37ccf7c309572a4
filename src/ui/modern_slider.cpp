#include "ui/modern_slider.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QWheelEvent>

namespace tavrel::ui {
namespace {

constexpr int kHeight = 22;
constexpr int kRoom = 9; ///< from the ends of the track to the edges: half a knob
constexpr double kTrackHeight = 4;
constexpr double kKnob = 7.5; ///< radius at rest
constexpr double kKnobActive = 9;
constexpr QColor kDarkKnob(244, 245, 247);
constexpr QColor kKnobEdge(15, 23, 42, 36);
constexpr double kFocusRing = 8.25; ///< radius; with its pen it stays within kRoom, so no end cuts it
constexpr double kFocusPen = 1.5;
constexpr double kDisabledOpacity = 0.45;

} // namespace

ModernSlider::ModernSlider(const Theme &theme, QWidget *parent) : QSlider(Qt::Horizontal, parent), m_theme(theme)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    setFixedHeight(kHeight);
}

void ModernSlider::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

int ModernSlider::valueAt(double x) const
{
    return QStyle::sliderValueFromPosition(minimum(), maximum(), qRound(x - kRoom), width() - 2 * kRoom, false);
}

void ModernSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    setSliderDown(true);
    setValue(valueAt(event->position().x()));
    update();
    event->accept();
}

void ModernSlider::mouseMoveEvent(QMouseEvent *event)
{
    if (isSliderDown())
        setValue(valueAt(event->position().x()));
    event->accept();
}

void ModernSlider::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && isSliderDown())
        setSliderDown(false);
    update();
    event->accept();
}

void ModernSlider::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void ModernSlider::hideEvent(QHideEvent *event)
{
    letGo();
    QSlider::hideEvent(event);
}

void ModernSlider::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        letGo();
    QSlider::changeEvent(event);
}

/// Ends a drag whose release will go elsewhere.
void ModernSlider::letGo()
{
    if (isSliderDown())
        setSliderDown(false);
}

void ModernSlider::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    const double middle = height() / 2.0;
    const double length = width() - 2 * kRoom;
    const int range = maximum() - minimum();
    const double fraction = range > 0 ? double(value() - minimum()) / range : 0;
    const QPointF centre(kRoom + fraction * length, middle);

    const double radius = isEnabled() && (underMouse() || isSliderDown()) ? kKnobActive : kKnob;
    const double hidden = isEnabled() ? 0 : radius; // nothing may shine through a translucent knob
    const auto paintTrack = [&painter, middle](double left, double right, const QColor &color) {
        if (right <= left)
            return;
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(left, middle - kTrackHeight / 2, right - left, kTrackHeight), kTrackHeight / 2,
                                kTrackHeight / 2);
    };
    paintTrack(isEnabled() ? kRoom : centre.x() + hidden, kRoom + length, m_theme.chipFill());
    paintTrack(kRoom, centre.x() - hidden, m_theme.accent());

    painter.setBrush(QColor(0, 0, 0, m_theme.dark ? 90 : 38));
    painter.drawEllipse(centre + QPointF(0, 1), radius, radius);
    painter.setPen(m_theme.dark ? QPen(Qt::NoPen) : QPen(kKnobEdge, 1));
    painter.setBrush(m_theme.dark ? kDarkKnob : QColor(Qt::white));
    painter.drawEllipse(centre, radius, radius);
    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), kFocusPen));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(centre, kFocusRing, kFocusRing);
    }
}

} // namespace tavrel::ui
