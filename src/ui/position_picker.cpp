#include "ui/position_picker.h"

#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel::ui {
namespace {

using edit::BackgroundPosition;

constexpr int kNarrowest = 180;
constexpr int kHeight = 104;
constexpr double kBoxPart = 0.4; ///< of the width
constexpr int kNarrowestBox = 40;
constexpr double kBoxHeight = 44;
constexpr double kRadius = 12;
constexpr double kBoxRadius = 8;
constexpr double kLineInset = 8;
constexpr double kBoxPen = 1.5;
constexpr float kBoxFill = 0.22F;
constexpr double kClick = 2; ///< a shorter move is none
constexpr double kDisabledOpacity = 0.45;

/// The nine fields, row by row.
constexpr std::array kFields{
    BackgroundPosition::TopLeft,    BackgroundPosition::Top,    BackgroundPosition::TopRight,
    BackgroundPosition::Left,       BackgroundPosition::Center, BackgroundPosition::Right,
    BackgroundPosition::BottomLeft, BackgroundPosition::Bottom, BackgroundPosition::BottomRight};

int fieldOf(BackgroundPosition position)
{
    const auto *found = std::find(kFields.begin(), kFields.end(), position);
    return static_cast<int>((found == kFields.end() ? kFields.begin() + 4 : found) - kFields.begin());
}

QString nameOf(BackgroundPosition position)
{
    static constexpr std::array kNames{QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "居中"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "左上"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "上"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "右上"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "左"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "右"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "左下"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "下"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "右下"),
                                       QT_TRANSLATE_NOOP("tavrel::ui::PositionPicker", "自定义")};
    return QCoreApplication::translate("tavrel::ui::PositionPicker", kNames[static_cast<std::size_t>(position)]);
}

class PickerAccess final : public QAccessibleWidget
{
public:
    explicit PickerAccess(PositionPicker *picker) : QAccessibleWidget(picker, QAccessible::Grouping), m_picker(*picker)
    {}
    QString text(QAccessible::Text which) const override
    {
        // Not every system asks for the value of what is no slider; the description is read everywhere.
        const QString text = QAccessibleWidget::text(which);
        const bool tellsPosition = which == QAccessible::Value || (which == QAccessible::Description && text.isEmpty());
        return tellsPosition ? nameOf(m_picker.position()) : text;
    }

private:
    PositionPicker &m_picker;
};

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *picker = qobject_cast<PositionPicker *>(object);
    return picker ? new PickerAccess(picker) : nullptr;
}

} // namespace

PositionPicker::PositionPicker(const Theme &theme, QWidget *parent) : QWidget(parent), m_theme(theme)
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessOf);
        return true;
    }();
    setMinimumWidth(kNarrowest);
    setFixedHeight(kHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(tr("位置"));
}

void PositionPicker::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void PositionPicker::set(BackgroundPosition position, double fx, double fy)
{
    const bool isNew = position != m_position; // each pixel of a drag is no news to a listener
    m_position = position;
    m_custom = {fx, fy};
    if (isNew)
        announce();
    update();
}

QSize PositionPicker::sizeHint() const
{
    return {kNarrowest, kHeight};
}

QPointF PositionPicker::fractions() const
{
    if (m_position == BackgroundPosition::Custom)
        return m_custom;
    const int field = fieldOf(m_position);
    return {field % 3 * 0.5, field / 3 * 0.5};
}

QRectF PositionPicker::box() const
{
    const int width = std::max(this->width(), 1);
    const int boxWidth = std::max(static_cast<int>(width * kBoxPart), kNarrowestBox);
    const QPointF at = fractions();
    return {at.x() * (width - boxWidth), at.y() * (kHeight - kBoxHeight), static_cast<double>(boxWidth), kBoxHeight};
}

void PositionPicker::announce()
{
    QAccessibleValueChangeEvent value(this, nameOf(m_position));
    QAccessible::updateAccessibility(&value);
    QAccessibleEvent description(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&description);
}

void PositionPicker::choose(BackgroundPosition position)
{
    set(position, 0.5, 0.5);
    Q_EMIT positionChanged(position, 0.5, 0.5, true);
}

void PositionPicker::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const QPointF at = event->position();
    if (box().contains(at)) {
        m_dragging = true;
        m_moved = false;
        m_pressPoint = at;
        m_startOrigin = box().topLeft();
        return;
    }
    const int column = std::clamp(static_cast<int>(at.x() / (width() / 3.0)), 0, 2);
    const int row = std::clamp(static_cast<int>(at.y() / (kHeight / 3.0)), 0, 2);
    choose(kFields[static_cast<std::size_t>(row * 3 + column)]);
}

void PositionPicker::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging)
        return;
    const QPointF moved = event->position() - m_pressPoint;
    m_moved = m_moved || std::abs(moved.x()) + std::abs(moved.y()) > kClick;
    const double freeX = width() - box().width();
    const double freeY = kHeight - kBoxHeight;
    const double x = std::clamp(m_startOrigin.x() + moved.x(), 0.0, freeX);
    const double y = std::clamp(m_startOrigin.y() + moved.y(), 0.0, freeY);
    set(BackgroundPosition::Custom, x / freeX, y / freeY);
    Q_EMIT positionChanged(m_position, m_custom.x(), m_custom.y(), false);
}

void PositionPicker::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        endDrag();
}

void PositionPicker::endDrag()
{
    if (!m_dragging)
        return;
    m_dragging = false;
    update();
    if (m_moved)
        Q_EMIT positionChanged(m_position, fractions().x(), fractions().y(), true);
}

// The release of a picker that goes away under the pointer will go elsewhere.
void PositionPicker::hideEvent(QHideEvent *event)
{
    endDrag();
    QWidget::hideEvent(event);
}

void PositionPicker::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::EnabledChange && !isEnabled())
        endDrag();
    QWidget::changeEvent(event);
}

void PositionPicker::keyPressEvent(QKeyEvent *event)
{
    const QPointF at = fractions();
    int column = static_cast<int>(std::lround(at.x() * 2));
    int row = static_cast<int>(std::lround(at.y() * 2));
    switch (event->key()) {
    case Qt::Key_Left:
        --column;
        break;
    case Qt::Key_Right:
        ++column;
        break;
    case Qt::Key_Up:
        --row;
        break;
    case Qt::Key_Down:
        ++row;
        break;
    case Qt::Key_Home:
        column = row = 1;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    const auto field = kFields[static_cast<std::size_t>(std::clamp(row, 0, 2) * 3 + std::clamp(column, 0, 2))];
    if (field != m_position)
        choose(field);
}

void PositionPicker::focusInEvent(QFocusEvent *event)
{
    update();
    QWidget::focusInEvent(event);
}

void PositionPicker::focusOutEvent(QFocusEvent *event)
{
    update();
    QWidget::focusOutEvent(event);
}

void PositionPicker::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.controlSurface());
    painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    painter.setPen(QPen(m_theme.chipFill(), 1, Qt::DashLine));
    for (const int i : {1, 2}) {
        const double x = width() * i / 3.0;
        const double y = kHeight * i / 3.0;
        painter.drawLine(QPointF(x, kLineInset), QPointF(x, kHeight - kLineInset));
        painter.drawLine(QPointF(kLineInset, y), QPointF(width() - kLineInset, y));
    }
    QColor fill = m_theme.accent();
    painter.setPen(QPen(fill, kBoxPen));
    fill.setAlphaF(kBoxFill);
    painter.setBrush(fill);
    painter.drawRoundedRect(box().adjusted(kBoxPen / 2, kBoxPen / 2, -kBoxPen / 2, -kBoxPen / 2), kBoxRadius,
                            kBoxRadius);
    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), kRadius - 0.75, kRadius - 0.75);
    }
}

} // namespace tavrel::ui
