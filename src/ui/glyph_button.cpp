#include "ui/glyph_button.h"

#include "ui/glyphs.h"

#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr QSize kButton{30, 28};
constexpr double kGlyph = 18;
constexpr double kRadius = 7;
constexpr double kDisabledOpacity = 0.35;

} // namespace

GlyphButton::GlyphButton(const QString &glyph, const QString &tip, const Theme &theme, QWidget *parent)
    : QToolButton(parent),
      m_glyph(glyph),
      m_theme(theme)
{
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    setFixedSize(kButton);
    setToolTip(tip);
    setAccessibleName(tip);
}

void GlyphButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face(rect());
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown()                      ? m_theme.toolPressedFill()
                     : isChecked()                 ? m_theme.toolCheckedFill()
                     : underMouse() && isEnabled() ? m_theme.hoverFill()
                                                   : m_theme.transparent());
    painter.drawRoundedRect(face, kRadius, kRadius);
    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(face.adjusted(0.75, 0.75, -0.75, -0.75), kRadius - 0.75, kRadius - 0.75);
    }
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    QRectF box(0, 0, kGlyph, kGlyph);
    box.moveCenter(face.center());
    paintAttributeGlyph(painter, m_glyph, box, isChecked() ? m_theme.toolIconActive() : m_theme.toolIcon());
}

} // namespace tavrel::ui
