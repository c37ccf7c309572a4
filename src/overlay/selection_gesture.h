#pragma once

#include "overlay/overlay_mode.h"
#include "overlay/selection_geometry.h"

#include <QPointF>
#include <QRectF>

namespace tavrel::ui {

/// The selection of an overlay and what the pointer does to it while a button is held. A value: it knows neither
/// widgets nor what is drawn, and tells what follows from each event. Overlay coordinates.
class SelectionGesture final
{
public:
    [[nodiscard]] const QRectF &selection() const { return m_selection; }
    [[nodiscard]] bool isEmpty() const { return m_selection.isEmpty(); }
    [[nodiscard]] OverlayMode mode() const { return m_mode; }
    /// The handle that is dragged; kNoHit for none.
    [[nodiscard]] int handle() const { return m_handle; }
    /// The selection itself is changing under the pointer.
    [[nodiscard]] bool isChanging() const;

    /// Takes a rectangle as it is; whatever was going on has ended.
    void select(const QRectF &rect);
    void clear() { select({}); }

    /// What a press leads to.
    enum class Press {
        Nothing,
        Band,   ///< a new selection begins; the old one is gone
        Adjust, ///< the selection is moved or resized
        Draw,   ///< goes to the annotations, until the release
    };
    /// hasTool   a tool is active: handles are narrow, and inside is drawn
    /// isOnShape something drawn is under the point
    Press press(const QPointF &point, bool hasTool, bool isOnShape);
    /// area  what may be selected
    void move(const QPointF &point, const QRectF &area);

    /// What a release ends.
    enum class Release {
        Nothing,
        Selected, ///< a band large enough
        Clicked,  ///< a band too small; nothing is selected
        Adjusted,
        Drawn,
    };
    Release release();

private:
    void begin(OverlayMode mode, int handle = kNoHit);

    QRectF m_selection;
    OverlayMode m_mode = OverlayMode::Idle;
    int m_handle = kNoHit;
    QPointF m_pressPoint;
    QRectF m_pressSelection;
};

} // namespace tavrel::ui
