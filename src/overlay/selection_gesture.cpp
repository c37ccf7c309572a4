#include "overlay/selection_gesture.h"

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr double kSmallestBand = 4; ///< a shorter drag is a click

} // namespace

bool SelectionGesture::isChanging() const
{
    return m_mode == OverlayMode::Selecting || m_mode == OverlayMode::Moving || m_mode == OverlayMode::Resizing;
}

void SelectionGesture::begin(OverlayMode mode, int handle)
{
    m_mode = mode;
    m_handle = handle;
}

void SelectionGesture::select(const QRectF &rect)
{
    m_selection = rect;
    begin(OverlayMode::Idle);
}

SelectionGesture::Press SelectionGesture::press(const QPointF &point, bool hasTool, bool isOnShape)
{
    m_pressPoint = point;
    m_pressSelection = m_selection;
    int hit = kNoHit;
    if (!isEmpty())
        hit = hasTool ? hitNarrow(m_selection, point) : hitBroad(m_selection, point);
    if (hit >= 0 && hit < kInsideHit) {
        begin(OverlayMode::Resizing, hit);
        return Press::Adjust;
    }
    if (!isEmpty() && hasTool) {
        // Beside the selection only a shape can be taken, so that a stray click does not lose the selection.
        if (!m_selection.contains(point) && !isOnShape)
            return Press::Nothing;
        begin(OverlayMode::Drawing);
        return Press::Draw;
    }
    if (hit == kInsideHit) {
        begin(OverlayMode::Moving);
        return Press::Adjust;
    }
    select(QRectF(point, QSizeF(0, 0)));
    begin(OverlayMode::Selecting);
    return Press::Band;
}

void SelectionGesture::move(const QPointF &point, const QRectF &area)
{
    switch (m_mode) {
    case OverlayMode::Selecting:
        m_selection = bandSelection(m_pressPoint, point, area);
        break;
    case OverlayMode::Moving:
        m_selection = movedSelection(m_pressSelection, point - m_pressPoint, area);
        break;
    case OverlayMode::Resizing: {
        const QPointF clamped(std::clamp(point.x(), area.left(), area.right()),
                              std::clamp(point.y(), area.top(), area.bottom()));
        m_selection = resizedSelection(m_pressSelection, m_handle, clamped - m_pressPoint, area);
        break;
    }
    case OverlayMode::Idle:
    case OverlayMode::Drawing:
        break;
    }
}

SelectionGesture::Release SelectionGesture::release()
{
    const OverlayMode ended = m_mode;
    begin(OverlayMode::Idle);
    switch (ended) {
    case OverlayMode::Selecting:
        if (m_selection.width() >= kSmallestBand && m_selection.height() >= kSmallestBand)
            return Release::Selected;
        m_selection = {};
        return Release::Clicked;
    case OverlayMode::Moving:
    case OverlayMode::Resizing:
        if (m_selection.width() < 1 || m_selection.height() < 1)
            m_selection = m_pressSelection;
        return Release::Adjusted;
    case OverlayMode::Drawing:
        return Release::Drawn;
    case OverlayMode::Idle:
        break;
    }
    return Release::Nothing;
}

} // namespace tavrel::ui
