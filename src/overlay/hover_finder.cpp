#include "overlay/hover_finder.h"

#include <algorithm>

namespace tavrel::ui {
namespace {

/// A point on the right or lower edge belongs to what lies beside the window.
bool covers(const QRectF &geometry, const QPointF &point)
{
    return point.x() >= geometry.left() && point.x() < geometry.right() && point.y() >= geometry.top() &&
           point.y() < geometry.bottom();
}

} // namespace

WindowHoverFinder::WindowHoverFinder(QList<platform::WindowInfo> windows, const QPointF &origin, const QRectF &area)
    : m_windows(std::move(windows)),
      m_origin(origin),
      m_area(area)
{}

const platform::WindowInfo *WindowHoverFinder::windowAt(const QPointF &point) const
{
    const QPointF global = point + m_origin;
    const auto found = std::find_if(m_windows.begin(), m_windows.end(),
                                    [&global](const auto &window) { return covers(window.geometry, global); });
    return found == m_windows.end() ? nullptr : &*found;
}

QRectF WindowHoverFinder::rectAt(const QPointF &point) const
{
    const platform::WindowInfo *window = windowAt(point);
    return window ? window->geometry.translated(-m_origin).intersected(m_area) : QRectF();
}

} // namespace tavrel::ui
