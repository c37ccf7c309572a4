#pragma once

#include "ui/theme.h"

#include <QAbstractButton>
#include <QPropertyAnimation>

namespace tavrel::ui {

/// A switch that is on or off. Its knob glides while it can be seen. Tab reaches it, Space turns it over.
class ToggleSwitch final : public QAbstractButton
{
    Q_OBJECT
    Q_PROPERTY(double position READ position WRITE setPosition)

public:
    explicit ToggleSwitch(const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);
    /// Where the knob stands: 0 off, 1 on.
    [[nodiscard]] double position() const { return m_position; }
    void setPosition(double position);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void checkStateSet() override;
    void nextCheckState() override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void glide();

    Theme m_theme;
    double m_position = 0;
    bool m_showsFocus = false;
    QPropertyAnimation m_animation;
};

} // namespace tavrel::ui
