#pragma once

#include <QPoint>

#include <optional>

class QMouseEvent;
class QWidget;

namespace tavrel::ui {

/// Lets the left button move a window: a drag moves it, a double click maximises and restores it. A maximised window
/// stays where it is. The window system does the moving; where it cannot, the window follows the pointer.
class WindowMover final
{
public:
    /// Returns whether the event was one of its own.
    bool handle(QWidget *window, const QMouseEvent &event);

private:
    std::optional<QPoint> m_pressed; ///< global
    QPoint m_corner;                 ///< of the window, from the press
    bool m_follows = false;
};

/// Does nothing for a window of fixed size.
void toggleMaximized(QWidget *window);
/// Whether the user may change the window's size.
[[nodiscard]] bool isResizable(const QWidget *window);

} // namespace tavrel::ui
