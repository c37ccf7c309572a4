#pragma once

#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

/// The hairline round a frameless window. Lies over everything in it and lets the pointer through.
class WindowBorder final : public QWidget
{
    Q_OBJECT

public:
    WindowBorder(const Theme &theme, QWidget *window);
    void setTheme(const Theme &theme);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Theme m_theme;
};

} // namespace tavrel::ui
