#pragma once

#include <QPoint>
#include <QRectF>
#include <QSize>

#include <optional>

namespace tavrel::ui {

inline constexpr int kPanelEdge = 10; ///< between panels and the overlay's edges but for the lower one

struct PanelPlacement
{
    QPoint toolbar;
    QPoint attributeBar;
};

/// Where toolbar and attribute bar go: below the selection, else above it, else into it.
///
/// overlay       size of the overlay
/// bar           size of the attribute bar; empty when none is shown
/// draggedTo     where the user has dragged the toolbar, if so
[[nodiscard]] PanelPlacement placePanels(const QRectF &selection, const QSize &overlay, const QSize &toolbar,
                                         const QSize &bar, const std::optional<QPoint> &draggedTo);

} // namespace tavrel::ui
