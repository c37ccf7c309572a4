#include "ui/window_drag_bar.h"

#include <QMouseEvent>

namespace tavrel::ui {

WindowDragBar::WindowDragBar(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("windowDragBar"));
    setFocusPolicy(Qt::NoFocus);
}

void WindowDragBar::pass(QMouseEvent *event)
{
    event->setAccepted(m_mover.handle(window(), *event));
}

void WindowDragBar::mousePressEvent(QMouseEvent *event)
{
    pass(event);
}

void WindowDragBar::mouseMoveEvent(QMouseEvent *event)
{
    pass(event);
}

void WindowDragBar::mouseReleaseEvent(QMouseEvent *event)
{
    pass(event);
}

void WindowDragBar::mouseDoubleClickEvent(QMouseEvent *event)
{
    pass(event);
}

} // namespace tavrel::ui
