#include "ui/window_mover.h"

#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace tavrel::ui {
namespace {

constexpr int kDragDistance = 4;

} // namespace

bool isResizable(const QWidget *window)
{
    return window->minimumSize() != window->maximumSize();
}

void toggleMaximized(QWidget *window)
{
    if (!isResizable(window))
        return;
    if (window->isMaximized())
        window->showNormal();
    else
        window->showMaximized();
}

bool WindowMover::handle(QWidget *window, const QMouseEvent &event)
{
    const QPoint global = event.globalPosition().toPoint();
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        m_follows = false;
        if (event.button() != Qt::LeftButton) {
            m_pressed.reset();
            return false;
        }
        m_pressed = global;
        m_corner = window->pos() - global;
        return true;
    case QEvent::MouseButtonDblClick:
        m_pressed.reset();
        if (event.button() != Qt::LeftButton)
            return false;
        toggleMaximized(window);
        return true;
    case QEvent::MouseMove:
        if (!m_pressed || !(event.buttons() & Qt::LeftButton))
            return false;
        if (m_follows) {
            window->move(global + m_corner);
            return true;
        }
        if ((global - *m_pressed).manhattanLength() < kDragDistance)
            return true;
        if (window->isMaximized() || window->isFullScreen()) {
            m_pressed.reset();
            return true;
        }
        // From here on the window system has the pointer; the release does not come back.
        if (window->windowHandle() && window->windowHandle()->startSystemMove()) {
            m_pressed.reset();
            return true;
        }
        m_follows = true;
        window->move(global + m_corner);
        return true;
    case QEvent::MouseButtonRelease:
        m_follows = false;
        if (event.button() != Qt::LeftButton || !m_pressed)
            return false;
        m_pressed.reset();
        return true;
    default:
        return false;
    }
}

} // namespace tavrel::ui
