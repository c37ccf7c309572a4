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
constexpr double kFocusGap = 1.5;
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
    // The release will go elsewhere.
    if (isSliderDown())
        setSliderDown(false);
    QSlider::hideEvent(event);
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

    QRectF track(kRoom, middle - kTrackHeight / 2, length, kTrackHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.chipFill());
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);
    track.setRight(centre.x());
    painter.setBrush(m_theme.accent());
    painter.drawRoundedRect(track, kTrackHeight / 2, kTrackHeight / 2);

    const double radius = isEnabled() && (underMouse() || isSliderDown()) ? kKnobActive : kKnob;
    painter.setBrush(QColor(0, 0, 0, m_theme.dark ? 90 : 38));
    painter.drawEllipse(centre + QPointF(0, 1), radius, radius);
    painter.setPen(m_theme.dark ? QPen(Qt::NoPen) : QPen(kKnobEdge, 1));
    painter.setBrush(m_theme.dark ? kDarkKnob : QColor(Qt::white));
    painter.drawEllipse(centre, radius, radius);
    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(centre, radius + kFocusGap, radius + kFocusGap);
    }
}

} // namespace tavrel::ui
