#pragma once

#include "ui/theme.h"

#include <QComboBox>

namespace tavrel::ui {

/// A combo box in the program's own look. The closed face is painted by code; the list is a pop-up of its own.
///
/// A click leaves the focus where it is, so that a text being typed elsewhere keeps the keyboard; Tab reaches it.
class SettingsComboBox final : public QComboBox
{
    Q_OBJECT

public:
    explicit SettingsComboBox(const Theme &theme, QWidget *parent = nullptr);

    void setTheme(const Theme &theme);
    /// Wide enough for the longest item, and never wider than the maximum width.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    Theme m_theme;
    bool m_hovered = false;
};

} // namespace tavrel::ui
