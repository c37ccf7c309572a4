#pragma once

#include "platform/element_detector.h"

#include <QList>
#include <QPointF>
#include <QRectF>

namespace tavrel::ui {

/// Says what a click without a drag takes.
class IHoverFinder
{
public:
    IHoverFinder() = default;
    IHoverFinder(const IHoverFinder &) = delete;
    IHoverFinder &operator=(const IHoverFinder &) = delete;
    virtual ~IHoverFinder() = default;

    /// The rectangle under a point, both in overlay coordinates; empty for none.
    [[nodiscard]] virtual QRectF rectAt(const QPointF &point) const = 0;
};

/// Takes the top-most window under the pointer, cut to the overlay.
class WindowHoverFinder final : public IHoverFinder
{
public:
    /// windows  top-most first, global coordinates
    /// origin   of the overlay's coordinates in those of the windows
    /// area     of the overlay that can be taken, in its own coordinates
    WindowHoverFinder(QList<platform::WindowInfo> windows, const QPointF &origin, const QRectF &area);

    [[nodiscard]] QRectF rectAt(const QPointF &point) const override;
    /// The top-most window at a point of overlay coordinates, null for none.
    [[nodiscard]] const platform::WindowInfo *windowAt(const QPointF &point) const;

private:
    QList<platform::WindowInfo> m_windows;
    QPointF m_origin;
    QRectF m_area;
};

} // namespace tavrel::ui
