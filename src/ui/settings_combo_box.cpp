#include "ui/settings_combo_box.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kFontSize = 13;
constexpr int kHeight = 30;
constexpr int kRoomBesideText = 46;
constexpr int kTextLeft = 11;
constexpr int kTextRight = 22;
constexpr int kIconGap = 6;
constexpr QSize kIconSize{16, 16};
constexpr double kRadius = 7;
constexpr double kArrowsRight = 14; ///< middle of the two arrow heads, from the right edge
constexpr double kArrowPen = 1.5;
constexpr double kFocusPen = 1.5;

QColor faceOf(const Theme &theme)
{
    return theme.dark ? QColor(255, 255, 255, 18) : QColor(Qt::white);
}

} // namespace

SettingsComboBox::SettingsComboBox(const Theme &theme, QWidget *parent) : QComboBox(parent)
{
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    setMaxVisibleItems(12);
    QFont plain = font();
    plain.setPixelSize(kFontSize);
    setFont(plain);
    setTheme(theme);
}

void SettingsComboBox::setTheme(const Theme &theme)
{
    m_theme = theme;
    view()->setStyleSheet(
        QStringLiteral("QAbstractItemView { background: %1; color: %2; border: 1px solid %3; outline: none; "
                       "selection-background-color: %4; selection-color: %2; }"
                       "QAbstractItemView::item { min-height: 26px; padding-left: 6px; }")
            .arg(css(theme.cardSurface()), css(theme.primaryText()), css(theme.cardBorder()),
                 css(theme.selectedFill())));
    update();
}

QSize SettingsComboBox::sizeHint() const
{
    const QFontMetrics metrics(font());
    int widest = 0;
    for (int i = 0; i < count(); ++i)
        widest = std::max(widest, metrics.horizontalAdvance(itemText(i)));
    return {std::max(widest + kRoomBesideText, minimumWidth()), kHeight};
}

QSize SettingsComboBox::minimumSizeHint() const
{
    return {std::max(kRoomBesideText, minimumWidth()), kHeight};
}

void SettingsComboBox::enterEvent(QEnterEvent *event)
{
    m_hovered = true;
    update();
    QComboBox::enterEvent(event);
}

void SettingsComboBox::leaveEvent(QEvent *event)
{
    m_hovered = false;
    update();
    QComboBox::leaveEvent(event);
}

void SettingsComboBox::wheelEvent(QWheelEvent *event)
{
    // Turned over by accident while scrolling a page, it would change a setting.
    event->ignore();
}

void SettingsComboBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(m_theme.strongBorder(), 1));
    painter.setBrush(faceOf(m_theme));
    painter.drawRoundedRect(face, kRadius, kRadius);
    if (m_hovered && isEnabled()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_theme.hoverFill());
        painter.drawRoundedRect(face, kRadius, kRadius);
    }

    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), kFocusPen));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(face, kRadius, kRadius);
    }

    int left = kTextLeft;
    if (const QIcon icon = itemIcon(currentIndex()); !icon.isNull()) {
        const QSize size = iconSize().isValid() ? iconSize() : kIconSize;
        icon.paint(&painter, QRect(QPoint(left, (height() - size.height()) / 2), size));
        left += size.width() + kIconGap;
    }
    const QRect textBox(left, 0, width() - kTextRight - left, height());
    painter.setFont(font());
    painter.setPen(isEnabled() ? m_theme.primaryText() : m_theme.secondaryText());
    const QString text = currentIndex() < 0 ? placeholderText() : currentText();
    painter.drawText(textBox, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, textBox.width()));

    painter.setPen(QPen(m_theme.secondaryText(), kArrowPen, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    const double x = width() - kArrowsRight;
    const double y = height() / 2.0;
    painter.drawPolyline(QPolygonF({{x - 3.2, y - 1.8}, {x, y - 5}, {x + 3.2, y - 1.8}}));
    painter.drawPolyline(QPolygonF({{x - 3.2, y + 1.8}, {x, y + 5}, {x + 3.2, y + 1.8}}));
}

} // namespace tavrel::ui
