#pragma once

#include "ui/theme.h"

#include <QWidget>

namespace tavrel::ui {

class WindowControlButton;

/// Minimise, maximise and close for the window it stands on.
class WindowButtons final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kWidth = 138;

    WindowButtons(const Theme &theme, QWidget *window);

    void setTheme(const Theme &theme);
    /// Takes over what the window's state and limits mean for the buttons.
    void refresh();

private:
    WindowControlButton *m_minimize;
    WindowControlButton *m_maximize;
    WindowControlButton *m_close;
};

} // namespace tavrel::ui
