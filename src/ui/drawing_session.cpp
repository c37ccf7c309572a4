#include "ui/drawing_session.h"

#include "annotate/effect_image_cache.h"
#include "annotate/selection_renderer.h"
#include "annotate/smart_erase_engine.h"
#include "annotate/tool_memory.h"

#include <QPainter>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kEraseTickMs = 50;
constexpr double kMarkReach = 24; ///< of handles and glow around a shape, in widget units

} // namespace

DrawingSession::DrawingSession(QWidget *host) : DrawingSession(host, Manner()) {}

DrawingSession::DrawingSession(QWidget *host, const Manner &manner)
    : QObject(host),
      m_host(host),
      m_manner(manner),
      m_toolMemory(std::make_shared<ToolMemory>()),
      m_textEditor(host, m_document)
{
    m_document.setTextLineProvider([this] { return m_markerLines.linesIn(m_area); });
    connect(&m_markerLines, &MarkerLines::unavailable, this, &DrawingSession::linesUnavailable);
    connect(&m_markerLines, &MarkerLines::searched, this, &DrawingSession::ensureLines);
    m_eraseTimer.setInterval(kEraseTickMs);
    connect(&m_eraseTimer, &QTimer::timeout, this, &DrawingSession::onEraseTick);
    connect(&m_textEditor, &ShapeTextEditor::changed, this, &DrawingSession::changed);
    connect(&m_textEditor, &ShapeTextEditor::ended, this, [this](bool byKey) {
        if (byKey)
            Q_EMIT keyboardReturned();
        announce();
    });
}

DrawingSession::~DrawingSession() = default;

// --- what is drawn on ------------------------------------------------------------------------------------------------

void DrawingSession::setPicture(const QImage &picture)
{
    m_picture = picture;
    m_effects = std::make_shared<EffectImageCache>(picture);
    m_eraseEngine.reset();
    m_markerLines.forget();
    refreshErase();
}

void DrawingSession::setView(const View &view)
{
    m_view = view;
    m_document.setDisplayScale(1 / view.zoom);
    m_document.setHitSlop(m_manner.hitSlop / view.zoom);
    m_document.setEraserRadius(m_manner.eraserRadius); // the document applies the display scale itself
    m_textEditor.setView(view);
}

void DrawingSession::setArea(const QRectF &area)
{
    m_area = area;
}

void DrawingSession::load(const QString &shapes, const QString &counters, const QStringList &undoStack, int undoIndex)
{
    m_isDrawing = false;
    m_document.loadState(shapes, counters, undoStack, undoIndex);
    m_document.setTool(ToolType::None);
    refreshErase();
    announce();
}

void DrawingSession::restore(const ShapeDocument::State &state)
{
    endTextEdit();
    m_isDrawing = false;
    m_document.restore(state);
    documentChanged();
}

void DrawingSession::documentChanged()
{
    refreshErase();
    announce();
}

void DrawingSession::clear()
{
    endTextEdit();
    load(QStringLiteral("[]"), QStringLiteral("{}"), {}, 0);
}

// --- tools -----------------------------------------------------------------------------------------------------------

void DrawingSession::setToolMemory(std::shared_ptr<ToolMemory> memory)
{
    m_toolMemory = std::move(memory);
    m_toolMemory->begin(m_document);
}

void DrawingSession::setLineSearch(LineSearch search)
{
    m_markerLines.setSearch(std::move(search));
}

void DrawingSession::setMarkerSnap(bool snaps)
{
    m_document.setMarkerSnapText(snaps);
    m_markerSnap = snaps;
}

void DrawingSession::setTool(ToolType tool)
{
    endTextEdit();
    m_document.setTool(tool);
    m_document.clearSelection();
    m_toolMemory->recall(m_document);
    forgetWheel();
    ensureLines();
    announce();
}

void DrawingSession::takeAttributes()
{
    m_toolMemory->remember(m_document);
    m_textEditor.relayout();
    refreshErase();
    ensureLines();
    announce();
}

void DrawingSession::ensureLines()
{
    if (m_document.markerSnapText() != m_markerSnap) {
        m_markerSnap = m_document.markerSnapText();
        Q_EMIT markerSnapChanged(m_markerSnap);
    }
    if (m_area.isEmpty() || !m_markerSnap || m_document.tool() != ToolType::Marker ||
        m_document.attributes().markerRectMode)
        return;
    m_markerLines.ensure(m_area, [this] { return renderSelection(m_picture, m_area, {}, ShapeFactory::standard()); });
}

// --- pointer ---------------------------------------------------------------------------------------------------------

void DrawingSession::settle(const QPointF &point)
{
    endTextEdit(isOnEditedHandle(point));
}

bool DrawingSession::isOnEditedHandle(const QPointF &point) const
{
    const BaseShape *shape = m_textEditor.shape();
    if (!shape)
        return false;
    const QPointF inside = inPicture(point);
    const QList<QPointF> handles = shape->handles();
    return std::any_of(handles.begin(), handles.end(), [this, &inside](const QPointF &handle) {
        return std::abs(handle.x() - inside.x()) < handleReach() && std::abs(handle.y() - inside.y()) < handleReach();
    });
}

bool DrawingSession::meets(const QPointF &point) const
{
    const QPointF inside = inPicture(point);
    return m_document.hitAny(inside.x(), inside.y(), handleReach());
}

void DrawingSession::press(const QPointF &point)
{
    m_shapesAtPress = m_document.shapes().size();
    m_pressPoint = m_lastPoint = point;
    ensureLines();
    leave();
    const QPointF inside = inPicture(point);
    m_document.press(inside.x(), inside.y(), handleReach());
    m_isDrawing = true;
}

void DrawingSession::move(const QPointF &point, bool shift)
{
    m_lastPoint = point;
    const QPointF from = inPicture(m_pressPoint);
    const QPointF to = inPicture(point);
    m_document.move(from.x(), from.y(), to.x(), to.y(), shift);
}

void DrawingSession::release(const QPointF &point)
{
    m_lastPoint = point;
    finishDrawing();
}

void DrawingSession::finishDrawing()
{
    if (!std::exchange(m_isDrawing, false))
        return;
    BaseShape *shape = m_document.release();
    // The tool follows a shape that was picked, so that its attributes can be changed.
    if (const BaseShape *activated = m_document.takeActivated())
        m_document.setTool(activated->type());
    const bool isCreated = m_document.shapes().size() > m_shapesAtPress;
    const QPointF moved = m_lastPoint - m_pressPoint;
    if (shape && (isCreated || std::hypot(moved.x(), moved.y()) < m_manner.click))
        m_textEditor.open(shape);
    refreshErase();
    announce();
}

void DrawingSession::hover(const QPointF &point)
{
    const QPointF inside = inPicture(point);
    m_document.setHovered(m_document.pickAt(inside.x(), inside.y()));
}

QCursor DrawingSession::cursor(const QPointF &point)
{
    const QPointF inside = inPicture(point);
    if (const BaseShape *selected = m_document.selected()) {
        if (const int handle = m_document.handleAt(inside.x(), inside.y(), handleReach()); handle >= 0)
            return selected->handleCursor(handle);
        if (selected->hitTest(inside.x(), inside.y()))
            return Qt::SizeAllCursor;
    }
    const ToolType tool = m_document.tool();
    if (tool == ToolType::Text)
        return Qt::IBeamCursor;
    if (BrushCursor::isFor(tool, m_document.attributes()))
        return m_brush.cursor(tool, m_document.attributes(), m_view.zoom, m_host->devicePixelRatioF());
    return Qt::CrossCursor;
}

// --- wheel and keys --------------------------------------------------------------------------------------------------

void DrawingSession::wheel(const QWheelEvent &event, bool isReversed)
{
    step(wheelValue(event, isReversed), sizeWheelValue(event, isReversed),
         event.modifiers().testFlag(Qt::ShiftModifier));
}

void DrawingSession::gesture(int value, bool shift)
{
    step(value, value, shift);
}

void DrawingSession::forgetWheel()
{
    m_toolWheel.reset();
    m_sizeWheel.reset();
}

void DrawingSession::step(int value, int sizeValue, bool isSize)
{
    if (isSize && !m_area.isEmpty() && hasSizeStep(m_document.tool())) {
        const int steps = m_sizeWheel.take(sizeValue);
        if (steps != 0)
            stepToolSize(m_document, steps);
    } else {
        const int steps = m_toolWheel.take(value);
        if (steps != 0)
            stepTool(m_document, steps, m_manner.steps);
    }
    takeAttributes();
}

bool DrawingSession::key(const KeyCombo &combo)
{
    const KeyCombo undoKey{.key = Qt::Key_Z, .ctrl = true};
    const KeyCombo redoKey{.key = Qt::Key_Z, .ctrl = true, .shift = true};
    const KeyCombo otherRedoKey{.key = Qt::Key_Y, .ctrl = true};
    BaseShape *selected = m_document.selected();
    if (combo == undoKey) {
        undo();
    } else if (combo == redoKey || combo == otherRedoKey) {
        redo();
    } else if (selected && (combo.key == Qt::Key_Delete || combo.key == Qt::Key_Backspace)) {
        removeSelected();
    } else if (selected && selected->numbering() && combo == KeyCombo{.key = Qt::Key_A}) {
        m_textEditor.open(selected);
        Q_EMIT changed();
    } else {
        return false;
    }
    return true;
}

void DrawingSession::undo()
{
    endTextEdit();
    // While something is being drawn, that is what is taken back.
    if (!m_document.cancelCreation())
        m_document.undo();
    refreshErase();
    announce();
}

void DrawingSession::redo()
{
    endTextEdit();
    m_document.redo();
    refreshErase();
    announce();
}

void DrawingSession::removeSelected()
{
    endTextEdit(true);
    m_document.removeSelected();
    refreshErase();
    announce();
}

// --- erased places ---------------------------------------------------------------------------------------------------

void DrawingSession::refreshErase()
{
    const bool hasBoxes = std::any_of(m_document.shapes().begin(), m_document.shapes().end(),
                                      [](const auto &shape) { return shape->eraseBox().has_value(); });
    if (!m_eraseEngine && !hasBoxes)
        return;
    if (!m_eraseEngine) {
        m_eraseEngine = std::make_unique<SmartEraseEngine>(m_picture);
        connect(m_eraseEngine.get(), &SmartEraseEngine::solved, this, &DrawingSession::onEraseTick);
    }
    m_eraseEngine->setSpecs(m_document.eraseRegions(m_eraseEngine->scale()));
    if (m_eraseEngine->isSolving())
        m_eraseTimer.start();
}

void DrawingSession::onEraseTick()
{
    for (const auto &shape : m_document.shapes()) {
        if (shape->eraseBox())
            m_document.markChanged(shape.get());
    }
    if (!m_eraseEngine || !m_eraseEngine->isSolving())
        m_eraseTimer.stop();
    Q_EMIT changed();
}

// --- painting --------------------------------------------------------------------------------------------------------

void DrawingSession::paint(QPainter &painter, const QRegion &exposed) const
{
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(m_view.origin);
    if (m_view.zoom != 1)
        painter.scale(m_view.zoom, m_view.zoom);
    ShapeRenderContext context;
    context.backdrop = &m_picture;
    context.effectSource = m_effects.get();
    context.eraseEngine = m_eraseEngine.get();
    context.handleScale = 1 / m_view.zoom;
    context.canvasBounds = m_area;
    context.contentClip = m_area;
    for (const QRect &part : exposed)
        context.exposed.append(QRectF(inPicture(part.topLeft()), QSizeF(part.size()) / m_view.zoom));
    m_document.paint(painter, context);
    painter.restore();
}

FlattenRequest DrawingSession::flattenRequest(const QRectF &selection) const
{
    return tavrel::flattenRequest(m_picture, selection, m_document, m_eraseEngine.get(), m_effects);
}

QRectF DrawingSession::inHost(const QRectF &area) const
{
    return {area.topLeft() * m_view.zoom + m_view.origin, area.size() * m_view.zoom};
}

QRegion DrawingSession::takeDamage()
{
    QRegion damage;
    // Handles and glow keep their size on the screen: of a picture that is shown smaller they reach further.
    const int reach = 1 + static_cast<int>(std::ceil(kMarkReach * std::max(0.0, 1 - m_view.zoom)));
    for (const QRectF &place : m_document.takeDamage()) {
        if (place.isNull())
            damage += m_host->rect();
        else
            damage += inHost(place).toAlignedRect().adjusted(-reach, -reach, reach, reach);
    }
    return damage;
}

void DrawingSession::announce()
{
    Q_EMIT stateChanged();
    Q_EMIT changed();
}

} // namespace tavrel::ui
