#include "annotate/shape_document.h"

#include "annotate/selection_marks.h"
#include "annotate/shape_painting.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMultiHash>

#include <algorithm>
#include <cmath>

namespace tavrel {
namespace {

constexpr double kHoverMargin = 3.0;
constexpr double kLowestWatermarkOpacity = 0.05;
constexpr double kSmallestWatermark = 8.0;
constexpr double kLargestWatermark = 200.0;

} // namespace

ShapeDocument::ShapeDocument(const ShapeFactory &factory) : m_factory(&factory) {}

// --- tool and attributes ---------------------------------------------------------------------------------------------

void ShapeDocument::setTool(ToolType tool)
{
    if (m_tool == ToolType::Watermark && tool != ToolType::Watermark)
        commit();
    m_hovered = nullptr;
    if (m_lastCreated && m_lastCreated->type() != tool)
        m_lastCreated = nullptr;
    m_tool = tool;
    if (tool == ToolType::Watermark)
        loadWatermarkFields();
}

void ShapeDocument::loadWatermarkFields()
{
    for (const ShapePtr &shape : m_shapes) {
        if (shape->type() == ToolType::Watermark) {
            shape->giveAttributes(m_attributes);
            return;
        }
    }
}

void ShapeDocument::setAttributes(const ShapeAttributes &attributes)
{
    const double scale = m_attributes.displayScale;
    m_attributes = attributes;
    setDisplayScale(scale);
}

void ShapeDocument::setDisplayScale(double scale)
{
    m_attributes.displayScale = std::isfinite(scale) && scale > 0 ? scale : 1.0;
    m_attributes.thickness = m_attributes.baseThickness * m_attributes.displayScale;
    m_attributes.fontSize = m_attributes.baseFontSize * m_attributes.displayScale;
}

void ShapeDocument::change(ShapeAttribute attribute, Commit whether)
{
    if (!m_selected)
        return;
    if (m_selected->applyAttribute(attribute, m_attributes)) {
        markChanged(m_selected);
        m_unsettled = true;
    }
    // What is being drawn or dragged is committed once, when it is let go.
    if (isInteracting())
        return;
    // The last step of a dragged slider often brings no change of its own but ends those before it.
    if (m_unsettled && whether == Commit::Yes)
        commit();
}

void ShapeDocument::setColor(const QString &color, Commit commit)
{
    m_attributes.color = color;
    change(ShapeAttribute::Color, commit);
}

void ShapeDocument::setThickness(double thickness, Commit commit)
{
    m_attributes.baseThickness = thickness;
    m_attributes.thickness = thickness * m_attributes.displayScale;
    change(ShapeAttribute::Thickness, commit);
}

void ShapeDocument::setFontSize(double size, Commit commit)
{
    m_attributes.baseFontSize = size;
    m_attributes.fontSize = size * m_attributes.displayScale;
    change(ShapeAttribute::FontSize, commit);
}

void ShapeDocument::setFontFamily(const QString &family, Commit commit)
{
    m_attributes.fontFamily = family;
    change(ShapeAttribute::FontFamily, commit);
}

void ShapeDocument::setArrowStyle(ArrowStyle style)
{
    m_attributes.arrowStyle = style;
    change(ShapeAttribute::ArrowStyle, Commit::Yes);
}

void ShapeDocument::setTextStyle(TextStyle style)
{
    m_attributes.textStyle = style;
    change(ShapeAttribute::TextStyle, Commit::Yes);
}

void ShapeDocument::setMosaicMode(MosaicMode mode)
{
    m_attributes.mosaicMode = mode;
    change(ShapeAttribute::MosaicMode, Commit::Yes);
}

void ShapeDocument::setMosaicStrength(double strength, Commit commit)
{
    m_attributes.mosaicStrength = strength;
    change(ShapeAttribute::MosaicStrength, commit);
}

void ShapeDocument::setBlurStrength(double strength, Commit commit)
{
    m_attributes.blurStrength = strength;
    change(ShapeAttribute::BlurStrength, commit);
}

void ShapeDocument::setSpotlightRound(bool round)
{
    m_attributes.spotlightRound = round;
    change(ShapeAttribute::SpotlightRound, Commit::Yes);
}

void ShapeDocument::setSpotlightDim(double dim)
{
    m_attributes.spotlightDim = dim;
    change(ShapeAttribute::SpotlightDim, Commit::Yes);
}

void ShapeDocument::setMagnifierRound(bool round)
{
    m_attributes.magnifierRound = round;
    change(ShapeAttribute::MagnifierRound, Commit::Yes);
}

void ShapeDocument::setMagnifierZoom(double zoom)
{
    m_attributes.magnifierZoom = zoom;
    change(ShapeAttribute::MagnifierZoom, Commit::Yes);
}

void ShapeDocument::setMagnifierDash(double dash)
{
    m_attributes.magnifierDash = dash;
    change(ShapeAttribute::MagnifierDash, Commit::Yes);
}

void ShapeDocument::setEraseWholeBox(bool wholeBox)
{
    m_attributes.eraseWholeBox = wholeBox;
    change(ShapeAttribute::EraseWholeBox, Commit::Yes);
}

void ShapeDocument::setSequenceArrow(bool arrow)
{
    m_attributes.sequenceArrow = arrow;
    change(ShapeAttribute::SequenceArrow, Commit::Yes);
}

void ShapeDocument::setWatermarkOpacity(double opacity)
{
    m_attributes.watermarkOpacity =
        std::isnan(opacity) ? kLowestWatermarkOpacity : std::clamp(opacity, kLowestWatermarkOpacity, 1.0);
}

void ShapeDocument::setWatermarkFontSize(double logical)
{
    m_attributes.watermarkFontSize =
        std::isnan(logical) ? kSmallestWatermark : std::clamp(logical, kSmallestWatermark, kLargestWatermark);
}

void ShapeDocument::setWatermark(Commit whether)
{
    const auto at = std::find_if(m_shapes.cbegin(), m_shapes.cend(),
                                 [](const ShapePtr &shape) { return shape->type() == ToolType::Watermark; });
    ShapePtr mark = at == m_shapes.cend() ? nullptr : *at;
    if (m_attributes.watermarkText.isEmpty()) {
        if (mark)
            takeOut(mark.get());
    } else {
        if (!mark && (mark = m_factory->create(ToolType::Watermark, m_attributes)))
            append(mark);
        if (mark) {
            mark->applyAttribute(ShapeAttribute::Watermark, m_attributes);
            mark->selected = false;
            markChanged(mark.get());
        }
    }
    if (whether == Commit::Yes)
        commit();
}

// --- shapes ----------------------------------------------------------------------------------------------------------

int ShapeDocument::indexOf(const BaseShape *shape) const
{
    for (qsizetype i = 0; i < m_shapes.size(); ++i) {
        if (m_shapes[i].get() == shape)
            return static_cast<int>(i);
    }
    return -1;
}

BaseShape *ShapeDocument::takeActivated()
{
    return std::exchange(m_activated, nullptr);
}

bool ShapeDocument::takeRenumbered()
{
    return std::exchange(m_renumbered, false);
}

void ShapeDocument::append(ShapePtr shape)
{
    m_shapes.append(std::move(shape));
}

void ShapeDocument::select(BaseShape *shape)
{
    clearSelection();
    m_selected = shape;
    if (shape)
        shape->selected = true;
}

void ShapeDocument::clearSelection()
{
    if (m_selected && m_selected->commitsOnDeselect())
        commit();
    // An editor may have written to the selected shape; afterwards nobody is left to tell.
    markChanged(m_selected);
    for (const ShapePtr &shape : std::as_const(m_shapes))
        shape->selected = false;
    m_selected = nullptr;
    m_activeHandle = -1;
    m_dragging = false;
    m_creating = false;
}

void ShapeDocument::raise(BaseShape *shape)
{
    const int index = indexOf(shape);
    if (index >= 0)
        m_shapes.move(index, m_shapes.size() - 1);
}

void ShapeDocument::forget(const BaseShape *shape)
{
    if (m_selected == shape) {
        m_activeHandle = -1;
        m_dragging = m_creating = false;
    }
    for (BaseShape **tracked : {&m_selected, &m_hovered, &m_lastCreated, &m_activated}) {
        if (*tracked == shape)
            *tracked = nullptr;
    }
    m_stored.remove(shape);
    m_glow.forget(shape);
}

void ShapeDocument::takeOut(BaseShape *shape)
{
    const int index = indexOf(shape);
    if (index < 0)
        return;
    const auto numbering = shape->numbering();
    forget(shape);
    m_shapes.removeAt(index);
    if (numbering)
        closeGap(*numbering);
}

void ShapeDocument::takeOutUnfinished(BaseShape *shape)
{
    const int index = indexOf(shape);
    if (index < 0)
        return;
    const bool counts = shape->numbering().has_value();
    forget(shape);
    m_shapes.removeAt(index);
    if (counts)
        recomputeCounters();
}

void ShapeDocument::removeShape(BaseShape *shape)
{
    if (indexOf(shape) < 0)
        return;
    takeOut(shape);
    commit();
}

void ShapeDocument::removeSelected()
{
    if (m_selected)
        removeShape(m_selected);
}

void ShapeDocument::adopt(const BaseShape &shape)
{
    shape.giveAttributes(m_attributes);
}

void ShapeDocument::duplicateSelected(double offset)
{
    if (!m_selected || m_selected->isBeingEdited())
        return;
    ShapePtr copy = m_factory->read(m_selected->toJsonText());
    if (!copy)
        return;
    copy->id = newShapeId();
    const double distance = offset * m_attributes.displayScale;
    copy->translate(distance, distance);
    if (copy->numbering()) {
        int highest = 0;
        for (const ShapePtr &shape : std::as_const(m_shapes)) {
            if (const auto numbering = shape->numbering())
                highest = std::max(highest, numbering->number);
        }
        copy->setNumber(highest + 1);
    }
    BaseShape *raw = copy.get();
    append(std::move(copy));
    select(raw);
    if (raw->numbering())
        recomputeCounters();
    m_lastCreated = raw;
    m_activated = raw;
    adopt(*raw);
    commit();
}

void ShapeDocument::markChanged(const BaseShape *shape, ShapeDamage::Change change)
{
    m_damage.mark(shape, change);
    if (const auto stored = m_stored.find(shape); stored != m_stored.end())
        stored->isCurrent = false;
}

void ShapeDocument::markAllChanged()
{
    m_stored.clear();
    m_damage.markAll();
}

void ShapeDocument::closeGap(const BaseShape::Numbering &removed)
{
    for (const ShapePtr &shape : std::as_const(m_shapes)) {
        const auto numbering = shape->numbering();
        if (numbering && numbering->type == removed.type && numbering->number > removed.number) {
            shape->setNumber(numbering->number - 1);
            markChanged(shape.get());
            m_renumbered = true;
        }
    }
    recomputeCounters();
}

void ShapeDocument::recomputeCounters()
{
    for (int type = 0; type < kNumberTypeCount; ++type)
        m_counters[static_cast<NumberType>(type)] = 1;
    for (const ShapePtr &shape : std::as_const(m_shapes)) {
        if (const auto numbering = shape->numbering())
            m_counters[numbering->type] = std::max(m_counters.value(numbering->type), numbering->number + 1);
    }
}

bool ShapeDocument::setSequenceValue(int value)
{
    const int wanted = std::clamp(value, 1, 999);
    const auto own = m_selected ? m_selected->numbering() : std::nullopt;
    if (!own) {
        const int before = m_counters.value(m_attributes.sequenceType, 1);
        m_counters[m_attributes.sequenceType] = wanted;
        return before != wanted;
    }
    QList<BaseShape *> higher;
    for (const ShapePtr &shape : std::as_const(m_shapes)) {
        const auto numbering = shape->numbering();
        if (numbering && numbering->type == own->type && numbering->number > own->number)
            higher.append(shape.get());
    }
    std::stable_sort(higher.begin(), higher.end(), [](const BaseShape *a, const BaseShape *b) {
        return a->numbering()->number < b->numbering()->number;
    });
    bool changed = false;
    int number = wanted;
    const auto renumber = [&](BaseShape *shape) {
        if (shape->numbering()->number != number) {
            shape->setNumber(number);
            markChanged(shape);
            changed = true;
        }
        ++number;
    };
    renumber(m_selected);
    for (BaseShape *shape : std::as_const(higher))
        renumber(shape);
    if (changed)
        recomputeCounters();
    return changed;
}

int ShapeDocument::sequenceValue() const
{
    if (const auto own = m_selected ? m_selected->numbering() : std::nullopt)
        return own->number;
    return m_counters.value(m_attributes.sequenceType, 1);
}

void ShapeDocument::scaleAll(double factor)
{
    if (!(factor > 0) || !std::isfinite(factor) || factor == 1.0)
        return;
    for (const ShapePtr &shape : std::as_const(m_shapes))
        shape->scale(factor);
    markAllChanged();
}

void ShapeDocument::translateAll(double dx, double dy)
{
    for (const ShapePtr &shape : std::as_const(m_shapes))
        shape->translate(dx, dy);
    markAllChanged();
}

int ShapeDocument::cropTo(const QRectF &rect)
{
    QList<BaseShape *> outside;
    for (const ShapePtr &shape : std::as_const(m_shapes)) {
        const auto handles = shape->handles();
        const bool handleInside = std::any_of(handles.begin(), handles.end(),
                                              [&rect](const QPointF &handle) { return rect.contains(handle); });
        const auto bounds = shape->bounds();
        // A straight line has a box without area, which QRectF::intersects() never meets.
        if (handleInside || !bounds || bounds->adjusted(-0.5, -0.5, 0.5, 0.5).intersects(rect))
            shape->translate(-rect.left(), -rect.top());
        else
            outside.append(shape.get());
    }
    for (BaseShape *shape : std::as_const(outside))
        takeOut(shape);
    markAllChanged();
    return static_cast<int>(outside.size());
}

void ShapeDocument::rotateAllCW(double imageHeight)
{
    for (const ShapePtr &shape : std::as_const(m_shapes))
        shape->transformRotate90(imageHeight);
    markAllChanged();
}

void ShapeDocument::rotateAllCCW(double imageWidth)
{
    for (const ShapePtr &shape : std::as_const(m_shapes))
        shape->transformRotate90CCW(imageWidth);
    markAllChanged();
}

void ShapeDocument::flipAllH(double imageWidth)
{
    for (const ShapePtr &shape : std::as_const(m_shapes))
        shape->transformFlipH(imageWidth);
    markAllChanged();
}

// --- state -----------------------------------------------------------------------------------------------------------

QByteArray ShapeDocument::jsonOf(const BaseShape *shape) const
{
    StoredShape &stored = m_stored[shape];
    if (!stored.isCurrent) {
        const QByteArray json = shape->toJsonText();
        if (json != stored.json)
            stored.json = json;
        stored.isCurrent = true;
    }
    return stored.json;
}

ShapeState ShapeDocument::currentState() const
{
    ShapeState state;
    state.reserve(m_shapes.size());
    for (const ShapePtr &shape : m_shapes)
        state.append(jsonOf(shape.get()));
    return state;
}

void ShapeDocument::commit()
{
    // What is selected may have been changed through its pointer, by an editor for instance.
    markChanged(m_selected);
    m_unsettled = false;
    m_history.commit(currentState());
}

void ShapeDocument::undo()
{
    if (m_history.canUndo())
        restore(m_history.undo());
}

void ShapeDocument::redo()
{
    if (m_history.canRedo())
        restore(m_history.redo());
}

void ShapeDocument::resetInteraction()
{
    m_selected = m_hovered = m_lastCreated = m_activated = nullptr;
    m_activeHandle = -1;
    m_dragging = m_creating = m_erasing = m_moved = m_renumbered = m_unsettled = false;
}

void ShapeDocument::restore(const ShapeState &state)
{
    // A shape whose bytes stand in the new state as well is the same shape: reading it again would cost the time of
    // a long stroke for nothing. What is selected may have been changed through its pointer and is always read.
    markChanged(m_selected);
    QMultiHash<QByteArray, ShapePtr> known;
    for (const ShapePtr &shape : std::as_const(m_shapes)) {
        const StoredShape stored = m_stored.value(shape.get());
        if (stored.isCurrent)
            known.insert(stored.json, shape);
    }
    resetInteraction();
    m_shapes.clear();
    m_stored.clear();
    m_glow.clear();
    for (const QByteArray &bytes : state) {
        ShapePtr shape = known.take(bytes);
        if (!shape)
            shape = m_factory->read(bytes);
        if (!shape)
            continue;
        shape->selected = false;
        m_stored.insert(shape.get(), {bytes, true});
        m_shapes.append(std::move(shape));
    }
    recomputeCounters();
    ++m_generation;
    if (m_tool == ToolType::Watermark) {
        m_attributes.watermarkText.clear();
        loadWatermarkFields();
    }
}

ShapeState ShapeDocument::shapeState() const
{
    if (const auto stored = m_stored.find(m_selected); stored != m_stored.end())
        stored->isCurrent = false;
    return currentState();
}

QString ShapeDocument::shapesJson() const
{
    return QString::fromUtf8(stateToJson(shapeState()));
}

QString ShapeDocument::countersJson() const
{
    QJsonObject object;
    for (int i = 0; i < kNumberTypeCount; ++i) {
        const auto type = static_cast<NumberType>(i);
        object.insert(enumName(type), m_counters.value(type, 1));
    }
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void ShapeDocument::loadState(const QString &shapes, const QString &counters, const QStringList &undoStack,
                              int undoIndex)
{
    m_shapes.clear();
    markAllChanged();
    // Counters without an entry of their own go on behind the highest number there is.
    restore(stateFromJson(shapes.toUtf8()));
    const QJsonObject stored = QJsonDocument::fromJson(counters.toUtf8()).object();
    for (int i = 0; i < kNumberTypeCount; ++i) {
        const auto type = static_cast<NumberType>(i);
        const QJsonValue value = stored.value(enumName(type));
        if (value.isDouble())
            m_counters.insert(type, std::max(value.toInt(1), 1));
    }
    m_history.load(undoStack, undoIndex, currentState());
}

// --- drawing ---------------------------------------------------------------------------------------------------------

void ShapeDocument::paintShapes(QPainter &painter, const ShapeRenderContext &context) const
{
    tavrel::paintShapes(painter, m_shapes, context);
}

void ShapeDocument::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    painter.save();
    if (!context.contentClip.isNull())
        painter.setClipRect(context.contentClip, Qt::IntersectClip);
    paintShapes(painter, context);
    painter.restore();

    if (m_selected)
        m_selected->paintSelection(painter, context);
    if (m_hovered && !m_hovered->selected)
        paintHoverMark(painter, context);
}

void ShapeDocument::paintHoverMark(QPainter &painter, const ShapeRenderContext &context) const
{
    if (m_hovered->paintHoverOutline(painter, context.handleScale) ||
        m_glow.paint(painter, *m_hovered, jsonOf(m_hovered), context))
        return;
    if (const auto bounds = m_hovered->bounds())
        paintRoundedGlow(painter, bounds->adjusted(-kHoverMargin, -kHoverMargin, kHoverMargin, kHoverMargin),
                         context.handleScale);
}

QRectF ShapeDocument::boundsPadded() const
{
    QRectF all;
    for (const ShapePtr &shape : m_shapes)
        all |= shape->paintedBounds();
    return all;
}

QList<QRectF> ShapeDocument::takeDamage()
{
    return m_damage.take(m_shapes, m_hovered);
}

QList<EraseSpec> ShapeDocument::eraseRegions(double imageScale, const QPointF &origin) const
{
    return tavrel::eraseRegions(m_shapes, imageScale, origin);
}

} // namespace tavrel
