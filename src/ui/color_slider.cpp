#include "ui/color_slider.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>

#include <limits>
#include <optional>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kPageSteps = 10;

class AccessibleColorSlider final : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit AccessibleColorSlider(ColorSlider *slider)
        : QAccessibleWidget(slider, QAccessible::Slider),
          m_slider(*slider)
    {}

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? m_slider.valueText() : QAccessibleWidget::text(kind);
    }
    QVariant currentValue() const override { return m_slider.fraction() * 100; }
    void setCurrentValue(const QVariant &value) override { m_slider.setFraction(value.toDouble() / 100); }
    QVariant maximumValue() const override { return 100.0; }
    QVariant minimumValue() const override { return 0.0; }
    QVariant minimumStepSize() const override { return ColorSlider::kStep * 100; }

private:
    ColorSlider &m_slider;
};

QAccessibleInterface *accessibleSlider(const QString &, QObject *object)
{
    auto *slider = qobject_cast<ColorSlider *>(object);
    return slider ? new AccessibleColorSlider(slider) : nullptr;
}

std::optional<QPointF> stepsOf(const QKeyEvent &event)
{
    constexpr double kEnd = std::numeric_limits<double>::infinity();
    const int few = event.modifiers() & Qt::ShiftModifier ? kPageSteps : 1;
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return {};
    switch (event.key()) {
    case Qt::Key_Left:
        return QPointF(-few, 0);
    case Qt::Key_Right:
        return QPointF(few, 0);
    case Qt::Key_Up:
        return QPointF(0, few);
    case Qt::Key_Down:
        return QPointF(0, -few);
    case Qt::Key_PageUp:
        return QPointF(0, kPageSteps);
    case Qt::Key_PageDown:
        return QPointF(0, -kPageSteps);
    case Qt::Key_Home:
        return QPointF(-kEnd, 0);
    case Qt::Key_End:
        return QPointF(kEnd, 0);
    default:
        return {};
    }
}

} // namespace

ColorSlider::ColorSlider(QWidget *parent) : QWidget(parent), m_theme(lightTheme())
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleSlider);
        return true;
    }();
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::ArrowCursor);
}

void ColorSlider::applyTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ColorSlider::setFraction(double fraction)
{
    const double delta = fraction - this->fraction();
    if (delta == 0 || m_dragging)
        return;
    const QPointer<ColorSlider> self(this);
    stepBy(QPointF(delta, 0));
    Q_EMIT moved();
    if (self)
        Q_EMIT committed();
}

void ColorSlider::announce()
{
    if (!QAccessible::isActive())
        return;
    QAccessibleValueChangeEvent event(this, fraction() * 100);
    QAccessible::updateAccessibility(&event);
}

void ColorSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_dragging)
        return;
    m_stepped = false; // the end of the drag commits them, too
    m_showsFocus = false;
    m_dragging = true;
    moveTo(event->position());
    Q_EMIT moved();
}

void ColorSlider::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging)
        return;
    moveTo(event->position());
    Q_EMIT moved();
}

void ColorSlider::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        endDrag();
}

void ColorSlider::keyPressEvent(QKeyEvent *event)
{
    const std::optional<QPointF> steps = stepsOf(*event);
    if (!steps) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (m_dragging)
        return;
    m_showsFocus = true;
    m_stepped = true;
    stepBy(*steps * kStep);
    Q_EMIT moved();
}

void ColorSlider::keyReleaseEvent(QKeyEvent *event)
{
    if (!stepsOf(*event))
        QWidget::keyReleaseEvent(event);
    else if (!event->isAutoRepeat())
        commitSteps();
}

void ColorSlider::focusInEvent(QFocusEvent *event)
{
    m_showsFocus = event->reason() != Qt::MouseFocusReason;
    update();
}

void ColorSlider::focusOutEvent(QFocusEvent *)
{
    m_showsFocus = false;
    update();
    commitSteps();
}

void ColorSlider::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (m_dragging)
        endDrag();
    else
        commitSteps();
}

void ColorSlider::commitSteps()
{
    if (std::exchange(m_stepped, false))
        Q_EMIT committed();
}

void ColorSlider::endDrag()
{
    if (std::exchange(m_dragging, false))
        Q_EMIT committed();
}

} // namespace tavrel::ui
