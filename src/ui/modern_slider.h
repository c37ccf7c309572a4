#pragma once

#include "ui/theme.h"

#include <QSlider>

namespace tavrel::ui {

/// A horizontal slider in the program's own look. A press takes the knob to the pointer; while it is held,
/// isSliderDown() tells values on the way from the last one, which sliderReleased() ends.
///
/// A click leaves the focus where it is; Tab reaches the slider, and the arrow and page keys step it. The wheel is left
/// to what lies below, so that scrolling a page over it changes nothing.
class ModernSlider final : public QSlider
{
    Q_OBJECT

public:
    explicit ModernSlider(const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    [[nodiscard]] int valueAt(double x) const;
    void letGo();

    Theme m_theme;
};

} // namespace tavrel::ui
