#include "annotate/shape_document.h"

#include "annotate/selection_marks.h"
#include "annotate/shape_painting.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <utility>

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
    for (const ShapePtr &shape : shapes()) {
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
    const auto at = std::find_if(shapes().cbegin(), shapes().cend(),
                                 [](const ShapePtr &shape) { return shape->type() == ToolType::Watermark; });
    ShapePtr mark = at == shapes().cend() ? nullptr : *at;
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
    m_store.append(std::move(shape));
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
    for (const ShapePtr &shape : shapes())
        shape->selected = false;
    m_selected = nullptr;
    m_activeHandle = -1;
    m_dragging = false;
    m_creating = false;
}

void ShapeDocument::raise(BaseShape *shape)
{
    if (const qsizetype index = m_store.indexOf(shape); index >= 0)
        m_store.raise(index);
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
    m_glow.forget(shape);
}

void ShapeDocument::takeOut(BaseShape *shape)
{
    const qsizetype index = m_store.indexOf(shape);
    if (index < 0)
        return;
    const auto numbering = shape->numbering();
    forget(shape);
    m_store.removeAt(index);
    if (numbering)
        closeGap(*numbering);
}

void ShapeDocument::takeOutUnfinished(BaseShape *shape)
{
    const qsizetype index = m_store.indexOf(shape);
    if (index < 0)
        return;
    const bool counts = shape->numbering().has_value();
    forget(shape);
    m_store.removeAt(index);
    if (counts)
        recomputeCounters();
}

void ShapeDocument::removeShape(BaseShape *shape)
{
    if (m_store.indexOf(shape) < 0)
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
        for (const ShapePtr &shape : shapes()) {
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
    m_store.markChanged(shape, change);
}

void ShapeDocument::closeGap(const BaseShape::Numbering &removed)
{
    for (const ShapePtr &shape : shapes()) {
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
    m_counters = kFirstNumbers;
    for (const ShapePtr &shape : shapes()) {
        if (const auto numbering = shape->numbering())
            counter(numbering->type) = std::max(counter(numbering->type), numbering->number + 1);
    }
}

bool ShapeDocument::setSequenceValue(int value)
{
    const int wanted = std::clamp(value, 1, 999);
    const auto own = m_selected ? m_selected->numbering() : std::nullopt;
    if (!own) {
        return std::exchange(counter(m_attributes.sequenceType), wanted) != wanted;
    }
    QList<BaseShape *> higher;
    for (const ShapePtr &shape : shapes()) {
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
    return m_counters[static_cast<std::size_t>(m_attributes.sequenceType)];
}

void ShapeDocument::scaleAll(double factor)
{
    if (!(factor > 0) || !std::isfinite(factor) || factor == 1.0)
        return;
    for (const ShapePtr &shape : shapes())
        shape->scale(factor);
    m_store.markAllChanged();
}

void ShapeDocument::translateAll(double dx, double dy)
{
    for (const ShapePtr &shape : shapes())
        shape->translate(dx, dy);
    m_store.markAllChanged();
}

int ShapeDocument::cropTo(const QRectF &rect)
{
    QList<BaseShape *> outside;
    for (const ShapePtr &shape : shapes()) {
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
    m_store.markAllChanged();
    return static_cast<int>(outside.size());
}

void ShapeDocument::rotateAllCW(double imageHeight)
{
    for (const ShapePtr &shape : shapes())
        shape->transformRotate90(imageHeight);
    m_store.markAllChanged();
}

void ShapeDocument::rotateAllCCW(double imageWidth)
{
    for (const ShapePtr &shape : shapes())
        shape->transformRotate90CCW(imageWidth);
    m_store.markAllChanged();
}

void ShapeDocument::flipAllH(double imageWidth)
{
    for (const ShapePtr &shape : shapes())
        shape->transformFlipH(imageWidth);
    m_store.markAllChanged();
}

// --- state -----------------------------------------------------------------------------------------------------------

void ShapeDocument::commit()
{
    // What is selected may have been changed through its pointer, by an editor for instance.
    markChanged(m_selected);
    m_unsettled = false;
    m_history.commit(m_store.texts());
}

void ShapeDocument::undo()
{
    if (!m_history.canUndo())
        return;
    show(m_history.undo().shapes);
    recomputeCounters();
}

void ShapeDocument::redo()
{
    if (!m_history.canRedo())
        return;
    show(m_history.redo().shapes);
    recomputeCounters();
}

ShapeDocument::State ShapeDocument::state() const
{
    return {m_store.texts(m_selected), m_counters, m_history};
}

void ShapeDocument::restore(const State &state)
{
    show(state.shapes);
    m_counters = state.counters;
    m_history.adopt(state.history);
}

void ShapeDocument::show(const ShapeTexts &texts)
{
    // What is selected may have been changed through its pointer, so that what it stores is not known.
    markChanged(m_selected);
    if (m_selected)
        m_selected->selected = false;
    m_selected = m_hovered = m_lastCreated = m_activated = nullptr;
    m_activeHandle = -1;
    m_dragging = m_creating = m_erasing = m_moved = m_renumbered = m_unsettled = false;
    m_glow.clear();
    m_store.assign(texts, *m_factory);
    ++m_generation;
    if (m_tool == ToolType::Watermark) {
        m_attributes.watermarkText.clear();
        loadWatermarkFields();
    }
}

QString ShapeDocument::shapesJson() const
{
    return QString::fromUtf8(toJsonArray(m_store.texts(m_selected)));
}

QString ShapeDocument::countersJson() const
{
    QJsonObject object;
    for (std::size_t i = 0; i < m_counters.size(); ++i)
        object.insert(enumName(static_cast<NumberType>(i)), m_counters[i]);
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void ShapeDocument::loadState(const QString &shapes, const QString &counters, const QStringList &undoStack,
                              int undoIndex)
{
    m_store.markAllChanged();
    show(textsFromJsonArray(shapes.toUtf8()));
    // Counters without an entry of their own go on behind the highest number there is.
    recomputeCounters();
    const QJsonObject stored = QJsonDocument::fromJson(counters.toUtf8()).object();
    for (std::size_t i = 0; i < m_counters.size(); ++i) {
        const QJsonValue value = stored.value(enumName(static_cast<NumberType>(i)));
        if (value.isDouble())
            m_counters[i] = std::max(value.toInt(1), 1);
    }
    m_history.load(undoStack, undoIndex, m_store.texts());
}

// --- drawing ---------------------------------------------------------------------------------------------------------

void ShapeDocument::paintShapes(QPainter &painter, const ShapeRenderContext &context) const
{
    tavrel::paintShapes(painter, shapes(), context);
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
        m_glow.paint(painter, *m_hovered, m_store.text(m_hovered), context))
        return;
    if (const auto bounds = m_hovered->bounds())
        paintRoundedGlow(painter, bounds->adjusted(-kHoverMargin, -kHoverMargin, kHoverMargin, kHoverMargin),
                         context.handleScale);
}

QRectF ShapeDocument::boundsPadded() const
{
    QRectF all;
    for (const ShapePtr &shape : shapes())
        all |= shape->paintedBounds();
    return all;
}

QList<QRectF> ShapeDocument::takeDamage()
{
    return m_store.takeDamage(m_hovered);
}

QList<EraseSpec> ShapeDocument::eraseRegions(double imageScale, const QPointF &origin) const
{
    return tavrel::eraseRegions(shapes(), imageScale, origin);
}

} // namespace tavrel
