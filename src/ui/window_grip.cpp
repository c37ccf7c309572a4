#include "ui/window_grip.h"

#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kThickness = 4;
constexpr int kCorner = 12;

Qt::CursorShape shapeOf(Qt::Edges edges)
{
    if (edges == (Qt::TopEdge | Qt::LeftEdge) || edges == (Qt::BottomEdge | Qt::RightEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::TopEdge | Qt::RightEdge) || edges == (Qt::BottomEdge | Qt::LeftEdge))
        return Qt::SizeBDiagCursor;
    return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

bool isCorner(Qt::Edges edges)
{
    return (edges & (Qt::LeftEdge | Qt::RightEdge)) && (edges & (Qt::TopEdge | Qt::BottomEdge));
}

} // namespace

WindowGrip::WindowGrip(Qt::Edges edges, QWidget *window) : QWidget(window), m_edges(edges)
{
    setObjectName(QStringLiteral("windowGrip"));
    setAttribute(Qt::WA_NoMousePropagation);
    setCursor(shapeOf(edges));
    setFocusPolicy(Qt::NoFocus);
}

QRect WindowGrip::place(Qt::Edges edges, const QSize &window)
{
    const int across = isCorner(edges) ? kCorner : 0;
    const int right = window.width();
    const int bottom = window.height();
    const int width = across ? across : edges & (Qt::LeftEdge | Qt::RightEdge) ? kThickness : right - 2 * kCorner;
    const int height = across ? across : edges & (Qt::TopEdge | Qt::BottomEdge) ? kThickness : bottom - 2 * kCorner;
    const int x = edges & Qt::LeftEdge ? 0 : edges & Qt::RightEdge ? right - width : kCorner;
    const int y = edges & Qt::TopEdge ? 0 : edges & Qt::BottomEdge ? bottom - height : kCorner;
    return {x, y, std::max(width, 0), std::max(height, 0)};
}

QRect WindowGrip::resized(const QRect &start, Qt::Edges edges, const QPoint &delta, const QSize &least,
                          const QSize &most)
{
    QSize size = start.size();
    if (edges & Qt::LeftEdge)
        size.rwidth() -= delta.x();
    else if (edges & Qt::RightEdge)
        size.rwidth() += delta.x();
    if (edges & Qt::TopEdge)
        size.rheight() -= delta.y();
    else if (edges & Qt::BottomEdge)
        size.rheight() += delta.y();
    size = size.expandedTo(least).boundedTo(most);
    const int x = edges & Qt::LeftEdge ? start.x() + start.width() - size.width() : start.x();
    const int y = edges & Qt::TopEdge ? start.y() + start.height() - size.height() : start.y();
    return {QPoint(x, y), size};
}

void WindowGrip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    QWindow *handle = window()->windowHandle();
    if (!handle || !handle->startSystemResize(m_edges))
        m_drag = Drag{event->globalPosition().toPoint(), window()->geometry()};
}

void WindowGrip::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag)
        return;
    QWidget *top = window();
    top->setGeometry(resized(m_drag->window, m_edges, event->globalPosition().toPoint() - m_drag->pressed,
                             top->minimumSize().expandedTo(top->minimumSizeHint()), top->maximumSize()));
}

void WindowGrip::mouseReleaseEvent(QMouseEvent *)
{
    m_drag.reset();
}

} // namespace tavrel::ui
