#include "ui/window_chrome.h"

#include "platform/window_controller.h"
#include "ui/dialog_services.h"
#include "ui/theme_source.h"
#include "ui/window_border.h"
#include "ui/window_buttons.h"
#include "ui/window_grip.h"

#include <QAbstractButton>
#include <QEvent>
#include <QMouseEvent>

#include <algorithm>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr Qt::Edges kEdges[] = {Qt::TopEdge,
                                Qt::BottomEdge,
                                Qt::LeftEdge,
                                Qt::RightEdge,
                                Qt::TopEdge | Qt::LeftEdge,
                                Qt::TopEdge | Qt::RightEdge,
                                Qt::BottomEdge | Qt::LeftEdge,
                                Qt::BottomEdge | Qt::RightEdge};

bool wantsPointer(const QWidget *child)
{
    return qobject_cast<const QAbstractButton *>(child) || (child->focusPolicy() & Qt::ClickFocus) ||
           child->property("noWindowDrag").toBool();
}

} // namespace

WindowChrome *WindowChrome::install(QWidget *window, const ThemeSource &themes, int titleBarHeight)
{
    return new WindowChrome(window, themes, titleBarHeight);
}

WindowChrome *WindowChrome::of(const QWidget *window)
{
    return window ? window->findChild<WindowChrome *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

WindowChrome::WindowChrome(QWidget *window, const ThemeSource &themes, int titleBarHeight)
    : QObject(window),
      m_window(window),
      m_border(new WindowBorder(themes.current(), window)),
      m_buttons(new WindowButtons(themes.current(), window)),
      m_titleBarHeight(titleBarHeight)
{
    window->setWindowFlag(Qt::FramelessWindowHint);
    for (const Qt::Edges edges : kEdges)
        m_grips.append(new WindowGrip(edges, window));
    connect(&themes, &ThemeSource::changed, m_border, &WindowBorder::setTheme);
    connect(&themes, &ThemeSource::changed, m_buttons, &WindowButtons::setTheme);
    window->installEventFilter(this);
    layOut();
}

void WindowChrome::layOut()
{
    const bool framed = !m_window->isMaximized() && !m_window->isFullScreen();
    m_border->setGeometry(m_window->rect());
    m_border->setVisible(framed);
    m_buttons->move(m_window->width() - m_buttons->width(), std::max((m_titleBarHeight - m_buttons->height()) / 2, 0));
    m_buttons->setVisible(!m_window->isFullScreen());
    m_buttons->refresh();
    for (WindowGrip *grip : m_grips) {
        grip->setGeometry(WindowGrip::place(grip->edges(), m_window->size()));
        grip->setVisible(framed && isResizable(m_window));
    }
}

void WindowChrome::restack()
{
    m_border->raise();
    m_buttons->raise();
    for (const auto &cover : std::as_const(m_covers)) {
        if (cover)
            cover->raise();
    }
    for (WindowGrip *grip : m_grips)
        grip->raise();
}

void WindowChrome::addCover(QWidget *cover)
{
    m_covers.removeIf([cover](const auto &other) { return !other || other == cover; });
    m_covers.append(cover);
    restack();
}

void WindowChrome::restackLater()
{
    // The window may itself raise things in answer to the same event; theirs comes first.
    if (std::exchange(m_restackAsked, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_restackAsked = false;
            restack();
        },
        Qt::QueuedConnection);
}

bool WindowChrome::isTitleBar(const QPoint &point) const
{
    if (point.y() < 0 || point.y() >= m_titleBarHeight)
        return false;
    for (const QWidget *child = m_window->childAt(point); child && child != m_window; child = child->parentWidget()) {
        if (wantsPointer(child))
            return false;
    }
    return true;
}

bool WindowChrome::moveBy(const QMouseEvent &event)
{
    const bool begins = event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
    if (begins && event.position().y() >= m_titleBarHeight)
        return false;
    return m_mover.handle(m_window, event);
}

bool WindowChrome::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window)
        return false;
    switch (event->type()) {
    case QEvent::Show:
        if (platform::IWindowController *controller = dialogs::windowController(); controller && !event->spontaneous())
            controller->setTitleBarHeight(m_window->windowHandle(), m_titleBarHeight);
        [[fallthrough]];
    case QEvent::Resize:
    case QEvent::WindowStateChange:
        layOut();
        restackLater();
        break;
    case QEvent::ChildAdded:
        restackLater();
        break;
    // What a child has taken for itself does not come here.
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (!isTitleBar(static_cast<QMouseEvent *>(event)->position().toPoint()))
            break;
        [[fallthrough]];
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return m_mover.handle(m_window, *static_cast<QMouseEvent *>(event));
    default:
        break;
    }
    return false;
}

} // namespace tavrel::ui
