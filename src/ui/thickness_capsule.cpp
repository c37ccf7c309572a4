#include "ui/thickness_capsule.h"

#include "ui/paint_helpers.h"

#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <mutex>

namespace tavrel::ui {
namespace {

constexpr QSize kSize{112, 32};
constexpr double kStepWidth = 26;   ///< of the minus and of the plus
constexpr double kNumberWidth = 22; ///< between the line and the plus
constexpr double kSign = 9;         ///< length of the strokes of minus and plus
constexpr double kSignPen = 1.6;
constexpr double kThickestLine = 18; ///< thicker ones are shown like this
constexpr int kFontSize = 12;
constexpr double kDisabledOpacity = 0.45;

class CapsuleAccess final : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit CapsuleAccess(ThicknessCapsule *capsule)
        : QAccessibleWidget(capsule, QAccessible::SpinBox),
          m_capsule(capsule)
    {}

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text which) const override
    {
        return which == QAccessible::Value ? QString::number(m_capsule->value()) : QAccessibleWidget::text(which);
    }
    QVariant currentValue() const override { return m_capsule->value(); }
    void setCurrentValue(const QVariant &value) override { m_capsule->setValue(value.toInt()); }
    QVariant maximumValue() const override { return m_capsule->most(); }
    QVariant minimumValue() const override { return m_capsule->least(); }
    QVariant minimumStepSize() const override { return 1; }

private:
    ThicknessCapsule *m_capsule;
};

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *capsule = qobject_cast<ThicknessCapsule *>(object);
    return capsule ? new CapsuleAccess(capsule) : nullptr;
}

} // namespace

ThicknessCapsule::ThicknessCapsule(int value, int least, int most, const QColor &color, const Theme &theme,
                                   QWidget *parent)
    : QWidget(parent),
      m_theme(theme),
      m_color(color),
      m_value(std::clamp(value, least, most)),
      m_least(least),
      m_most(most)
{
    static std::once_flag once;
    std::call_once(once, [] { QAccessible::installFactory(accessOf); });
    setFixedSize(kSize);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setMouseTracking(true);
    const QString tip = QCoreApplication::translate("tavrel::ui::AttributeBar", "线宽（悬停滚轮调整）");
    setToolTip(tip);
    setAccessibleName(QCoreApplication::translate("tavrel::ui::AttributeBar", "粗细"));
    setAccessibleDescription(tip);
}

void ThicknessCapsule::setValue(int value)
{
    value = std::clamp(value, m_least, m_most);
    if (value == m_value)
        return;
    m_value = value;
    update();
    QAccessibleValueChangeEvent told(this, m_value);
    QAccessible::updateAccessibility(&told);
    Q_EMIT valueChanged(m_value);
}

int ThicknessCapsule::stepAt(double x) const
{
    return x < kStepWidth ? -1 : x >= width() - kStepWidth ? 1 : 0;
}

void ThicknessCapsule::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    const QRectF face = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius = face.height() / 2;
    painter.setPen(hasFocus() ? QPen(m_theme.accent(), 1.5) : QPen(m_theme.separator(), 1));
    painter.setBrush(m_theme.hoverFill());
    painter.drawRoundedRect(face, radius, radius);

    const double middle = height() / 2.0;
    for (const int step : {-1, 1}) {
        const bool isSpent = step < 0 ? m_value == m_least : m_value == m_most;
        const QPointF centre(step < 0 ? kStepWidth / 2 + 1 : width() - kStepWidth / 2 - 1, middle);
        if (m_hoveredStep == step && !isSpent) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(m_theme.toolCheckedFill());
            painter.drawEllipse(centre, 10, 10);
        }
        QColor sign = m_theme.toolIcon();
        if (isSpent)
            sign.setAlphaF(sign.alphaF() * 0.35F);
        painter.setPen(QPen(sign, kSignPen, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(centre - QPointF(kSign / 2, 0), centre + QPointF(kSign / 2, 0));
        if (step > 0)
            painter.drawLine(centre - QPointF(0, kSign / 2), centre + QPointF(0, kSign / 2));
    }

    const double thickness = std::min<double>(m_value, kThickestLine);
    const double left = kStepWidth + 3 + thickness / 2;
    const double right = width() - kStepWidth - kNumberWidth - 2 - thickness / 2;
    const auto line = [&](double width, const QColor &color) {
        painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(left, middle), QPointF(right, middle));
    };
    line(thickness + 1.4, QColor(swatchEdgeColor(m_color)));
    line(thickness, m_color);

    QFont small = font();
    small.setPixelSize(kFontSize);
    painter.setFont(small);
    painter.setPen(m_theme.primaryText());
    painter.drawText(QRectF(width() - kStepWidth - kNumberWidth, 0, kNumberWidth, height()), Qt::AlignCenter,
                     QString::number(m_value));
}

void ThicknessCapsule::wheelEvent(QWheelEvent *event)
{
    if (event->phase() == Qt::ScrollBegin)
        m_wheel.reset();
    setValue(m_value + m_wheel.take(wheelValue(*event, m_isWheelReversed)));
    event->accept();
}

void ThicknessCapsule::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setValue(m_value + stepAt(event->position().x()));
    event->accept();
}

void ThicknessCapsule::mouseMoveEvent(QMouseEvent *event)
{
    if (const int step = stepAt(event->position().x()); step != m_hoveredStep) {
        m_hoveredStep = step;
        update();
    }
}

void ThicknessCapsule::leaveEvent(QEvent *event)
{
    m_hoveredStep = 0;
    update();
    QWidget::leaveEvent(event);
}

void ThicknessCapsule::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        setValue(m_value - 1);
        break;
    case Qt::Key_Right:
    case Qt::Key_Up:
        setValue(m_value + 1);
        break;
    case Qt::Key_Home:
        setValue(m_least);
        break;
    case Qt::Key_End:
        setValue(m_most);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void ThicknessCapsule::focusInEvent(QFocusEvent *event)
{
    update();
    QWidget::focusInEvent(event);
}

void ThicknessCapsule::focusOutEvent(QFocusEvent *event)
{
    update();
    QWidget::focusOutEvent(event);
}

} // namespace tavrel::ui
