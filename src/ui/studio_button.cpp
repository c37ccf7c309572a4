#include "ui/studio_button.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>

namespace tavrel::ui {

StudioButton::StudioButton(const Theme &theme, QWidget *parent) : QAbstractButton(parent), m_theme(theme)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
}

void StudioButton::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

bool StudioButton::isLit() const
{
    return isEnabled() && underMouse();
}

void StudioButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

QFont StudioButton::sized(int pixels, QFont::Weight weight) const
{
    QFont result = font();
    result.setPixelSize(pixels);
    result.setWeight(weight);
    return result;
}

void StudioButton::paintFace(QPainter &painter, const QRectF &face, qreal radius, const QColor &fill) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(face, radius, radius);
    painter.setBrush(Qt::NoBrush);
    if (!hasFocus())
        return;
    painter.setPen(QPen(m_theme.accent(), 1.5));
    painter.drawRoundedRect(face.adjusted(0.75, 0.75, -0.75, -0.75), radius - 0.75, radius - 0.75);
}

void StudioButton::paintFitted(QPainter &painter, const QRect &room, int pixels, int least, const QColor &color) const
{
    while (pixels > least &&
           QFontMetrics(sized(pixels)).size(Qt::TextSingleLine | Qt::TextHideMnemonic, text()).width() > room.width())
        --pixels;
    painter.setFont(sized(pixels));
    painter.setPen(color);
    const QString line =
        QFontMetrics(painter.font()).elidedText(text(), Qt::ElideRight, room.width(), Qt::TextShowMnemonic);
    painter.drawText(room, Qt::AlignCenter | Qt::TextSingleLine | Qt::TextHideMnemonic, line);
}

} // namespace tavrel::ui
