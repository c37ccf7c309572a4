#include "ui/toolbar_button.h"

#include "ui/glyphs.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kMinWidth = 40;
constexpr int kMaxWidth = 88;
constexpr int kTextRoom = 8; ///< beside the text
constexpr int kTightMinWidth = 32;
constexpr int kTightTextRoom = 4;
constexpr int kTightPlainWidth = 22;
constexpr int kFontSize = 10;
constexpr int kGlyphButtonWidth = 24;
constexpr int kGlyphSize = 16;
constexpr int kIconTop = 6; ///< of the 18 pixels for the icon, above a label
constexpr QRect kIconBox{0, 0, 18, 18};
constexpr int kLabelTop = 26;
constexpr int kLabelHeight = 14;
constexpr double kDisabledOpacity = 0.35;

/// Glyphs that fill their box look larger than the others.
int toolIconSize(ToolType tool)
{
    return tool == ToolType::Rect || tool == ToolType::Eraser || tool == ToolType::Mosaic ? 16 : 18;
}

} // namespace

ToolbarButton::ToolbarButton(ToolType tool, QWidget *parent) : QToolButton(parent), m_theme(lightTheme()), m_tool(tool)
{
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    setAttribute(Qt::WA_Hover);
    setProperty("tavrelTool", static_cast<int>(tool));
    setIconSize(QSize(toolIconSize(tool), toolIconSize(tool)));
    updateSize();
}

void ToolbarButton::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ToolbarButton::setLabel(const QString &text)
{
    setText(text);
    setAccessibleName(text);
    updateSize();
}

void ToolbarButton::setShowLabel(bool show)
{
    m_showLabel = show;
    updateSize();
}

void ToolbarButton::setTight(bool tight)
{
    m_isTight = tight;
    updateSize();
}

void ToolbarButton::setGlyph(const QString &name)
{
    m_glyph = name;
    setIconSize(QSize(kGlyphSize, kGlyphSize));
    updateSize();
}

QFont ToolbarButton::labelFont() const
{
    QFont small = font();
    small.setPixelSize(kFontSize);
    return small;
}

void ToolbarButton::updateSize()
{
    const int advance = QFontMetrics(labelFont()).horizontalAdvance(text());
    const int textWidth = std::clamp(advance + kTextRoom, kMinWidth, kMaxWidth);
    setProperty("tavrelTextWidth", textWidth);
    const int height = m_showLabel ? kLabelledHeight : kPlainSide;
    if (!m_glyph.isEmpty())
        setFixedSize(kGlyphButtonWidth, height);
    else if (m_showLabel)
        setFixedSize(m_isTight ? std::clamp(advance + kTightTextRoom, kTightMinWidth, kMaxWidth) : textWidth, height);
    else
        setFixedSize(m_isTight ? kTightPlainWidth : kPlainSide, height);
    setToolTip(m_showLabel && m_glyph.isEmpty() ? QString() : text());
    update();
}

void ToolbarButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor fill = isDown()                      ? m_theme.toolPressedFill()
                        : isChecked()                 ? m_theme.toolCheckedFill()
                        : underMouse() && isEnabled() ? m_theme.hoverFill()
                                                      : m_theme.transparent();
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 8, 8);

    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    const QColor icon = isChecked() ? m_theme.toolIconActive() : m_theme.toolIcon();
    const bool labelled = m_showLabel && m_glyph.isEmpty();
    QRect box = kIconBox;
    box.moveLeft((width() - box.width()) / 2);
    box.moveTop(labelled ? kIconTop : (height() - box.height()) / 2);
    const int inset = (box.width() - iconSize().width()) / 2;
    box.adjust(inset, inset, -inset, -inset);
    if (m_glyph.isEmpty())
        paintToolGlyph(painter, m_tool, box, icon);
    else
        paintGlyph(painter, m_glyph, box, icon);
    if (!labelled)
        return;
    painter.setFont(labelFont());
    painter.setPen(isChecked() ? m_theme.toolTextActive() : m_theme.toolText());
    const QString label = painter.fontMetrics().elidedText(text(), Qt::ElideRight, width() - 2);
    painter.drawText(QRect(0, kLabelTop, width(), kLabelHeight), Qt::AlignCenter, label);
}

} // namespace tavrel::ui
