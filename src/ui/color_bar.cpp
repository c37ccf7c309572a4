#include "ui/color_bar.h"

#include "ui/color_paint.h"

#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kHeight = 20;
constexpr qreal kTrackHeight = 12;
constexpr qreal kHandleRadius = 8;
constexpr qreal kEnd = kHandleRadius + 1; ///< from the widget's edge to the handle's outermost centre

} // namespace

ColorBar::ColorBar(QWidget *parent) : ColorSlider(parent)
{
    setFixedHeight(kHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ColorBar::sizeHint() const
{
    return {160, kHeight};
}

void ColorBar::moveTo(const QPointF &point)
{
    setValue(std::clamp((point.x() - kEnd) / std::max(1.0, width() - 2 * kEnd), 0.0, 1.0));
}

void ColorBar::stepBy(const QPointF &fractions)
{
    setValue(std::clamp(fraction() + fractions.x() + fractions.y(), 0.0, 1.0));
}

void ColorBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRectF track(kEnd - kTrackHeight / 2, (height() - kTrackHeight) / 2, width() - 2 * kEnd + kTrackHeight,
                       kTrackHeight);
    paintTrack(painter, track);
    paintHandle(painter, QPointF(kEnd + fraction() * (width() - 2 * kEnd), height() / 2.0), kHandleRadius,
                handleColor());
    if (showsFocus())
        paintFocusRing(painter, rect(), kHeight / 2.0, theme());
}

} // namespace tavrel::ui
