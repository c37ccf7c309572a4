#include "ui/chip.h"

#include <QFontMetrics>
#include <QPainter>

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
    paintFace(painter, QRectF(rect()), height() / 2.0,
              isChecked()           ? theme().selectedFill()
              : isDown() || isLit() ? theme().controlHover()
                                    : theme().chipFill());
    const QColor ink = !isEnabled()  ? theme().studioDisabledText()
                       : isChecked() ? theme().accent()
                                     : theme().studioText();
    paintFitted(painter, rect().adjusted(4, 0, -4, 0), kFont, kFont, ink);
}

} // namespace tavrel::ui
