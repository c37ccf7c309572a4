#include "ui/chip.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kHeight = 28;
constexpr int kPadding = 12;
constexpr int kFont = 12;

} // namespace

Chip::Chip(const QString &label, const Theme &theme, QWidget *parent) : StudioButton(theme, parent)
{
    setText(label);
    setCheckable(true);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

QSize Chip::sizeHint() const
{
    const QFontMetrics metrics(sized(kFont));
    return {metrics.size(Qt::TextSingleLine | Qt::TextHideMnemonic, text()).width() + 2 * kPadding, kHeight};
}

void Chip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = isChecked() ? theme().selectedFill() : theme().chipFill();
    if (isDown() || isLit())
        fill.setAlpha(std::min(fill.alpha() * 3 / 2, 255)); // the hover surface would be paler than the chip
    paintFace(painter, QRectF(rect()), height() / 2.0, fill);
    const QColor ink = !isEnabled()  ? theme().studioDisabledText()
                       : isChecked() ? theme().accent()
                                     : theme().studioText();
    paintFitted(painter, rect().adjusted(4, 0, -4, 0), kFont, kFont, ink);
}

} // namespace tavrel::ui
