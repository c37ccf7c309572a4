#pragma once

#include "ui/theme.h"
#include "ui/wheel_steps.h"

#include <QWidget>

namespace tavrel::ui {

/// A pill with a line as thick as what it sets, between a minus and a plus; the wheel over it changes the value, too.
/// For a screen reader it is a spin box. The arrow keys change the value once Tab has reached it.
class ThicknessCapsule final : public QWidget
{
    Q_OBJECT

public:
    /// value  limited to least and most
    ThicknessCapsule(int value, int least, int most, const QColor &color, const Theme &theme,
                     QWidget *parent = nullptr);

    void setWheelReversed(bool reversed) { m_isWheelReversed = reversed; }
    [[nodiscard]] int value() const { return m_value; }
    [[nodiscard]] int least() const { return m_least; }
    [[nodiscard]] int most() const { return m_most; }
    /// Limited; raises valueChanged() when it is another one.
    void setValue(int value);

Q_SIGNALS:
    void valueChanged(int value);

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    /// -1 over the minus, 1 over the plus, else 0.
    [[nodiscard]] int stepAt(double x) const;

    Theme m_theme;
    QColor m_color;
    int m_value;
    int m_least;
    int m_most;
    int m_hoveredStep = 0;
    bool m_isWheelReversed = false;
    WheelAccumulator m_wheel;
};

} // namespace tavrel::ui
