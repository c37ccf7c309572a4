#include "ui/rail_icon_button.h"

#include "ui/glyphs.h"

#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr int kHeight = 52;
constexpr int kSide = 3; ///< between face and rail
constexpr int kGlyph = 20;
constexpr int kGlyphTop = 8;
constexpr int kLabelTop = 30;
constexpr int kLabelHeight = 16;
constexpr qreal kRadius = 10;

} // namespace

RailIconButton::RailIconButton(const QString &glyph, const QString &label, const Theme &theme, QWidget *parent)
    : StudioButton(theme, parent),
      m_glyph(glyph)
{
    setText(label);
    setToolTip(label);
    setCheckable(true);
    setFixedSize(kRailWidth, kHeight);
}

QSize RailIconButton::sizeHint() const
{
    return {kRailWidth, kHeight};
}

void RailIconButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face = QRectF(rect()).adjusted(kSide, 0, -kSide, 0);
    paintFace(painter, face, kRadius,
              isChecked()           ? theme().railSelectedFill()
              : isDown() || isLit() ? theme().hoverFill()
                                    : theme().transparent());
    const QColor ink = !isEnabled()  ? theme().studioDisabledText()
                       : isChecked() ? theme().studioText()
                                     : theme().studioSecondaryText();
    paintGlyph(painter, m_glyph, QRectF((width() - kGlyph) / 2.0, kGlyphTop, kGlyph, kGlyph),
               isChecked() && isEnabled() ? theme().accent() : ink);
    paintFitted(painter, QRect(kSide + 1, kLabelTop, width() - 2 * kSide - 2, kLabelHeight), 11, 8, ink);
}

} // namespace tavrel::ui
