// How a ShapeDocument answers the pointer: press, move, release, pick, erase.
#include "annotate/shape_document.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavrel {
namespace {

constexpr int kEraseDirections = 12;
constexpr int kPickDirections = 8;

double signOf(double value)
{
    return value < 0 ? -1.0 : 1.0;
}

/// Tools that draw strokes from anywhere: an older stroke under the pointer must not be grabbed by mistake.
bool drawsFreely(ToolType tool, bool markerRectMode)
{
    switch (tool) {
    case ToolType::Pen:
    case ToolType::Line:
    case ToolType::Arrow:
    case ToolType::MosaicPen:
        return true;
    case ToolType::Marker:
        return !markerRectMode;
    default:
        return false;
    }
}

bool picksAfterClick(ToolType tool)
{
    switch (tool) {
    case ToolType::None:
    case ToolType::Rect:
    case ToolType::Circle:
    case ToolType::Line:
    case ToolType::Arrow:
    case ToolType::Pen:
    case ToolType::Marker:
    case ToolType::Mosaic:
    case ToolType::MosaicPen:
    case ToolType::SmartErase:
    case ToolType::Spotlight:
    case ToolType::Magnifier:
    case ToolType::Sequence:
    case ToolType::Text:
        return true;
    default:
        return false;
    }
}

bool keepsSquareWithShift(ToolType tool)
{
    return tool == ToolType::Rect || tool == ToolType::Circle || tool == ToolType::Spotlight ||
           tool == ToolType::Magnifier;
}

bool isLabelTool(ToolType tool)
{
    return tool == ToolType::Text || tool == ToolType::Sequence;
}

bool hitAround(const BaseShape &shape, double x, double y, double radius, int directions)
{
    for (int i = 0; i < directions; ++i) {
        const double angle = 2 * std::numbers::pi * i / directions;
        if (shape.hitTest(x + radius * std::cos(angle), y + radius * std::sin(angle)))
            return true;
    }
    return false;
}

} // namespace

int ShapeDocument::handleAt(double x, double y, double tolerance) const
{
    if (!m_selected)
        return -1;
    const QList<QPointF> handles = m_selected->handles();
    for (int i = 0; i < handles.size(); ++i) {
        if (std::abs(handles[i].x() - x) < tolerance && std::abs(handles[i].y() - y) < tolerance)
            return i;
    }
    return -1;
}

bool ShapeDocument::mayRegrab() const
{
    return !drawsFreely(m_tool, m_attributes.markerRectMode) || m_selected == m_lastCreated;
}

BaseShape *ShapeDocument::grabAt(double x, double y) const
{
    if (!mayRegrab())
        return nullptr;
    for (auto it = shapes().rbegin(); it != shapes().rend(); ++it) {
        BaseShape *shape = it->get();
        if (m_tool != ToolType::None && shape->type() != m_tool)
            continue;
        if (m_tool != ToolType::None && !isLabelTool(m_tool) && shape != m_selected)
            continue;
        if (shape->hitTest(x, y))
            return shape;
    }
    return nullptr;
}

BaseShape *ShapeDocument::press(double x, double y, double tolerance)
{
    m_moved = false;
    m_pressPoint = {x, y};
    if (const int handle = handleAt(x, y, tolerance); handle >= 0) {
        m_activeHandle = handle;
        return m_selected;
    }
    if (m_tool == ToolType::Eraser) {
        m_erasing = false;
        eraseAt(x, y);
        return nullptr;
    }
    if (BaseShape *shape = grabAt(x, y)) {
        if (!(m_tool == ToolType::None && shape->selected))
            clearSelection();
        raise(shape);
        m_selected = shape;
        shape->selected = true;
        m_dragging = true;
        m_creating = false;
        m_dragPoint = m_pressPoint;
        shape->pressAt(x, y);
        return shape;
    }
    if (m_tool == ToolType::None) {
        clearSelection();
        return nullptr;
    }
    return beginShape(x, y);
}

BaseShape *ShapeDocument::beginShape(double x, double y)
{
    m_lastCreated = nullptr;
    // The watermark is one and covers everything; setWatermark() makes it.
    ShapePtr shape = m_tool == ToolType::Watermark ? nullptr : m_factory->create(m_tool, m_attributes);
    if (!shape) {
        clearSelection();
        return nullptr;
    }
    if (const auto numbering = shape->numbering()) {
        shape->setNumber(counter(numbering->type)++);
    }
    BaseShape *raw = shape.get();
    clearSelection();
    raw->updateDrag(x, y, x, y);
    append(std::move(shape));
    m_selected = raw;
    raw->selected = true;
    m_creating = true;
    return raw;
}

void ShapeDocument::eraseAt(double x, double y)
{
    const double radius = m_eraserRadius * m_attributes.displayScale;
    const auto isHit = [&](const BaseShape &shape) {
        return shape.hitTest(x, y) || (radius > 0 && (hitAround(shape, x, y, radius, kEraseDirections) ||
                                                      hitAround(shape, x, y, radius / 2, kEraseDirections)));
    };
    for (qsizetype i = shapes().size() - 1; i >= 0; --i) {
        if (isHit(*shapes()[i])) {
            takeOut(shapes()[i].get());
            m_erasing = true;
        }
    }
}

void ShapeDocument::move(double startX, double startY, double x, double y, bool shift)
{
    if (m_activeHandle >= 0 && m_selected) {
        m_activeHandle = m_selected->setHandle(m_activeHandle, x, y);
        m_moved = m_moved || x != startX || y != startY;
        markChanged(m_selected);
    } else if (m_dragging && m_selected) {
        const QPointF delta = QPointF(x, y) - m_dragPoint;
        m_selected->translate(delta.x(), delta.y());
        m_moved = m_moved || delta.x() != 0 || delta.y() != 0;
        m_dragPoint = {x, y};
        markChanged(m_selected);
    } else if (m_tool == ToolType::Eraser) {
        eraseAt(x, y);
    } else if (m_creating && m_selected) {
        if (shift && keepsSquareWithShift(m_tool)) {
            const double side = std::max(std::abs(x - startX), std::abs(y - startY));
            x = startX + signOf(x - startX) * side;
            y = startY + signOf(y - startY) * side;
        } else if (shift && (m_tool == ToolType::Pen || m_tool == ToolType::Marker) &&
                   m_selected->straighten({startX, startY}, {x, y})) {
            markChanged(m_selected);
            return;
        }
        m_selected->updateDrag(startX, startY, x, y);
        markChanged(m_selected, m_selected->growth() > 0 ? ShapeDamage::Change::Grown : ShapeDamage::Change::Whole);
    }
}

BaseShape *ShapeDocument::release()
{
    BaseShape *shape = m_selected;
    const bool wasCreating = std::exchange(m_creating, false);
    if (m_activeHandle >= 0) {
        m_activeHandle = -1;
        if (m_moved || m_unsettled)
            commit();
        return shape;
    }
    if (m_dragging) {
        m_dragging = false;
        if (m_moved || m_unsettled)
            commit();
        return shape;
    }
    if (shape && m_tool != ToolType::None)
        return releaseCreated(shape, wasCreating);
    if (m_tool == ToolType::Eraser && m_erasing) {
        commit();
        m_erasing = false;
    }
    return shape;
}

BaseShape *ShapeDocument::releaseCreated(BaseShape *shape, bool wasCreating)
{
    if (wasCreating && shape->waitsForEditor())
        return shape;
    if (wasCreating && shape->isTooSmall()) {
        takeOutUnfinished(shape);
        BaseShape *picked = pickAt(m_pressPoint.x(), m_pressPoint.y());
        if (picked) {
            select(picked);
            raise(picked);
            m_lastCreated = picked;
            m_activated = picked;
            adopt(*picked);
        }
        return picked;
    }
    if (wasCreating) {
        m_lastCreated = shape;
        if (m_markerSnapText && m_textLines) {
            const QList<QRectF> lines = m_textLines();
            const auto pieces = lines.isEmpty() ? QList<ShapePtr>() : shape->snappedTo(lines, m_attributes);
            if (!pieces.isEmpty()) {
                takeOutUnfinished(shape);
                for (const ShapePtr &piece : pieces)
                    append(piece);
                shape = pieces.last().get();
                select(shape);
                m_lastCreated = shape;
            }
        }
    }
    commit();
    return shape;
}

bool ShapeDocument::isPickedAt(const BaseShape &shape, double x, double y) const
{
    return shape.hitTest(x, y) || (m_hitSlop > 0 && hitAround(shape, x, y, m_hitSlop, kPickDirections));
}

BaseShape *ShapeDocument::pickAt(double x, double y) const
{
    if (!picksAfterClick(m_tool))
        return nullptr;
    for (auto it = shapes().rbegin(); it != shapes().rend(); ++it) {
        if (isLabelTool(m_tool) && (*it)->type() != m_tool)
            continue;
        if (isPickedAt(**it, x, y))
            return it->get();
    }
    return nullptr;
}

bool ShapeDocument::isInteracting() const
{
    return m_creating || m_dragging || m_activeHandle >= 0;
}

bool ShapeDocument::cancelCreation()
{
    if (!m_creating)
        return false;
    if (m_selected)
        takeOutUnfinished(m_selected);
    m_creating = m_dragging = m_moved = false;
    m_activeHandle = -1;
    commit();
    return true;
}

bool ShapeDocument::hitAny(double x, double y, double tolerance) const
{
    return handleAt(x, y, tolerance) >= 0 || (m_selected && m_selected->hitTest(x, y)) || grabAt(x, y) != nullptr;
}

} // namespace tavrel
