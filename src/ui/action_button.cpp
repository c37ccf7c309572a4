#include "ui/action_button.h"

#include "ui/glyphs.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kHeight = 32;
constexpr int kSide = 12;
constexpr int kGlyph = 16;
constexpr int kChevron = 12;
constexpr int kGap = 6;
constexpr int kFont = 12;
constexpr qreal kRadius = 10;

} // namespace

ActionButton::ActionButton(const QString &glyph, const QString &label, Look look, const Theme &theme, QWidget *parent)
    : StudioButton(theme, parent),
      m_glyph(glyph),
      m_look(look)
{
    setText(label);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

void ActionButton::setGlyph(const QString &glyph)
{
    m_glyph = glyph;
    updateGeometry();
    update();
}

void ActionButton::setHasMenu(bool hasMenu)
{
    m_hasMenu = hasMenu;
    updateGeometry();
    update();
}

int ActionButton::labelWidth() const
{
    return text().isEmpty() ? 0
                            : QFontMetrics(sized(kFont, QFont::Medium))
                                  .size(Qt::TextSingleLine | Qt::TextHideMnemonic, text())
                                  .width();
}

QSize ActionButton::sizeHint() const
{
    int width = 2 * (text().isEmpty() ? (kHeight - kGlyph) / 2 : kSide) + labelWidth();
    if (!m_glyph.isEmpty())
        width += kGlyph + (text().isEmpty() ? 0 : kGap);
    if (m_hasMenu)
        width += kChevron + kGap;
    return {width, kHeight};
}

QColor ActionButton::fill() const
{
    const bool dark = theme().dark;
    switch (m_look) {
    case Look::Plain:
        return isDown() || isLit() || isChecked() ? theme().controlHover() : theme().transparent();
    case Look::Tinted: {
        QColor tint = theme().selectedFill();
        if (isDown() || isLit())
            tint.setAlpha(tint.alpha() + 30);
        return tint;
    }
    case Look::Filled:
        return isDown()      ? theme().chipFill()
               : isLit()     ? theme().controlHover()
               : isChecked() ? theme().selectedFill()
                             : theme().controlSurface();
    case Look::Primary:
        if (!isEnabled())
            return theme().chipFill();
        return isDown()  ? theme().accent().darker(112)
               : isLit() ? theme().accent().lighter(dark ? 108 : 115)
                         : theme().accent();
    }
    return {};
}

QColor ActionButton::ink() const
{
    if (!isEnabled())
        return theme().studioDisabledText();
    switch (m_look) {
    case Look::Primary:
        return Qt::white;
    case Look::Tinted:
        return theme().accent();
    default:
        return theme().studioText();
    }
}

void ActionButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face(rect());
    paintFace(painter, face, kRadius, fill());
    if (hasFocus() && m_look == Look::Primary) { // the ring in the accent would not show on the accent
        painter.setPen(QPen(Qt::white, 1.5));
        painter.drawRoundedRect(face.adjusted(2.75, 2.75, -2.75, -2.75), kRadius - 2.75, kRadius - 2.75);
    }
    const QColor color = ink();
    // Glyph, label and arrow stand together in the middle however wide the layout made the button.
    const QSize needed = sizeHint();
    int left = std::max(0, (width() - needed.width()) / 2) + (text().isEmpty() ? (kHeight - kGlyph) / 2 : kSide);
    if (!m_glyph.isEmpty()) {
        paintGlyph(painter, m_glyph, QRectF(left, (height() - kGlyph) / 2.0, kGlyph, kGlyph), color);
        left += kGlyph + (text().isEmpty() ? 0 : kGap);
    }
    if (!text().isEmpty()) {
        painter.setFont(sized(kFont, QFont::Medium));
        painter.setPen(color);
        painter.drawText(QRect(left, 0, labelWidth() + 1, height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic, text());
        left += labelWidth();
    }
    if (m_hasMenu)
        paintGlyph(painter, QStringLiteral("ed_chevronDown"),
                   QRectF(left + kGap, (height() - kChevron) / 2.0, kChevron, kChevron), color);
}

} // namespace tavrel::ui
