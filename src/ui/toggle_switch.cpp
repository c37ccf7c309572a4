#include "ui/toggle_switch.h"

#include <QAccessibleWidget>
#include <QFocusEvent>
#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr QSize kSize(42, 24);
constexpr int kGlideMs = 130;
constexpr double kKnobRoom = 4; ///< track height less the knob
constexpr double kKnobTop = 2;
constexpr double kShadowTop = 2.6;
constexpr QColor kShadow(0, 0, 0, 40);
constexpr double kDisabledOpacity = 0.55;

class SwitchAccess final : public QAccessibleWidget
{
public:
    explicit SwitchAccess(ToggleSwitch *button) : QAccessibleWidget(button, QAccessible::CheckBox), m_button(*button) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = m_button.isChecked();
        return state;
    }
    QString text(QAccessible::Text which) const override
    {
        const QString text = QAccessibleWidget::text(which);
        return which == QAccessible::Name && text.isEmpty() ? m_button.text() : text;
    }
    QStringList actionNames() const override { return {toggleAction(), setFocusAction()}; }
    void doAction(const QString &action) override
    {
        if (action == toggleAction())
            m_button.click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    ToggleSwitch &m_button;
};

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *button = qobject_cast<ToggleSwitch *>(object);
    return button ? new SwitchAccess(button) : nullptr;
}

/// Each channel on the straight way from `from` to `to`, rounded down.
QColor mixed(const QColor &from, const QColor &to, double position)
{
    const auto mix = [position](int a, int b) { return static_cast<int>(a + (b - a) * position); };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue()),
            mix(from.alpha(), to.alpha())};
}

} // namespace

ToggleSwitch::ToggleSwitch(const Theme &theme, QWidget *parent)
    : QAbstractButton(parent),
      m_theme(theme),
      m_animation(this, "position")
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessOf);
        return true;
    }();
    setCheckable(true);
    setFixedSize(kSize);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    m_animation.setDuration(kGlideMs);
    m_animation.setEasingCurve(QEasingCurve::InOutQuad);
}

void ToggleSwitch::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ToggleSwitch::setPosition(double position)
{
    m_position = position;
    update();
}

QSize ToggleSwitch::sizeHint() const
{
    return kSize;
}

void ToggleSwitch::checkStateSet()
{
    QAbstractButton::checkStateSet();
    glide();
}

void ToggleSwitch::nextCheckState()
{
    QAbstractButton::nextCheckState();
    glide();
}

void ToggleSwitch::glide()
{
    const double target = isChecked() ? 1.0 : 0.0;
    m_animation.stop();
    if (!isVisible()) {
        setPosition(target);
        return;
    }
    m_animation.setStartValue(m_position);
    m_animation.setEndValue(target);
    m_animation.start();
}

void ToggleSwitch::focusInEvent(QFocusEvent *event)
{
    m_showsFocus = event->reason() != Qt::MouseFocusReason;
    QAbstractButton::focusInEvent(event);
}

void ToggleSwitch::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(rect()).adjusted(1, 1, -1, -1);
    const QColor off = m_theme.dark ? QColor(255, 255, 255, 56) : QColor(0, 0, 0, 40);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() ? mixed(off, m_theme.accent(), m_position) : off);
    painter.drawRoundedRect(track, track.height() / 2, track.height() / 2);

    const double diameter = track.height() - kKnobRoom;
    const double left = track.left() + 2 + (track.width() - diameter - kKnobRoom) * m_position;
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    painter.setBrush(kShadow);
    painter.drawEllipse(QRectF(left, track.top() + kShadowTop, diameter, diameter));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(left, track.top() + kKnobTop, diameter, diameter));
    painter.setOpacity(1);
    if (hasFocus() && m_showsFocus) {
        painter.setPen(QPen(isChecked() ? m_theme.primaryText() : m_theme.accent(), 1.5)); // to stand out on both
        painter.setBrush(Qt::NoBrush);
        const QRectF ring = QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75);
        painter.drawRoundedRect(ring, ring.height() / 2, ring.height() / 2);
    }
}

} // namespace tavrel::ui
