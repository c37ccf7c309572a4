#include "ui/studio_card.h"

#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr qreal kRadius = 14;

} // namespace

StudioCard::StudioCard(const Theme &theme, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    setObjectName(QStringLiteral("studioCard"));
}

void StudioCard::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void StudioCard::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_theme.pillBorder(), 1));
    painter.setBrush(m_theme.studioRaised());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

} // namespace tavrel::ui
