// Drawing on the overlay: tools, the wheel, the pointer, and what the toolbar asks for.
#include "overlay/capture_overlay.h"

#include "annotate/selection_renderer.h"
#include "annotate/smart_erase_engine.h"
#include "annotate/tool_memory.h"
#include "overlay/overlay_panels.h"
#include "overlay/selection_geometry.h"
#include "ui/eyedropper_sample.h"
#include "ui/shape_text_editor.h"
#include "ui/tool_steps.h"

#include <QCoreApplication>
#include <QNativeGestureEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kSmallestSearched = 10;
constexpr int kEraseTickMs = 50;
constexpr double kClick = 4;        ///< a shorter move is none
constexpr int kGestureSlowness = 4; ///< of a zoom gesture that walks the hovered rectangle

void tellWithoutRecognition(CaptureOverlay &overlay)
{
    overlay.showToast(QCoreApplication::translate("CaptureOverlay", "本版本不含文字识别组件"));
}

} // namespace

void CaptureOverlay::connectTools()
{
    m_document.setMarkerSnapText(m_config.markerSnapText);
    m_markerSnap = m_config.markerSnapText;
    m_document.setTextLineProvider(
        [this] { return m_markerLines->linesIn(m_selection.translated(-m_picture.origin())); });
    connect(m_markerLines, &MarkerLines::unavailable, this, [this] { tellWithoutRecognition(*this); });
    connect(m_markerLines, &MarkerLines::searched, this, &CaptureOverlay::ensureMarkerLines);

    m_eraseTimer.setInterval(kEraseTickMs);
    connect(&m_eraseTimer, &QTimer::timeout, this, &CaptureOverlay::onEraseTick);

    connect(m_textEditor, &ShapeTextEditor::changed, this, &CaptureOverlay::scheduleUpdate);
    connect(m_textEditor, &ShapeTextEditor::ended, this, [this](bool byKey) {
        if (byKey)
            setFocus(Qt::OtherFocusReason);
        layoutPanels();
        scheduleUpdate();
    });

    m_panels->setEyedropperSource(
        [this](const QPointF &point) { return eyedropperSample(m_picture.image(), inPicture(point)); });
    connect(m_panels, &OverlayPanels::toolChosen, this, &CaptureOverlay::setTool);
    connect(m_panels, &OverlayPanels::actionChosen, this, &CaptureOverlay::runAction);
    connect(m_panels, &OverlayPanels::attributesChanged, this, &CaptureOverlay::onAttributesChanged);
    connect(m_panels, &OverlayPanels::configChanged, this, &CaptureOverlay::toolbarConfigChanged);
    connect(m_panels, &OverlayPanels::guideDismissed, this, &CaptureOverlay::toolGuideDismissed);
    connect(m_panels, &OverlayPanels::placed, this, &CaptureOverlay::scheduleUpdate);
    connect(m_panels, &OverlayPanels::keyboardReturned, this, [this] { setFocus(Qt::OtherFocusReason); });
}

void CaptureOverlay::setLineSearch(LineSearch search)
{
    m_markerLines->setSearch(std::move(search));
}

void CaptureOverlay::setTool(ToolType tool)
{
    endTextEdit();
    m_document.setTool(tool);
    if (tool != ToolType::None && tool != ToolType::Eraser && !ShapeFactory::standard().knows(tool))
        tellMissing();
    m_document.clearSelection();
    m_toolMemory->recall(m_document);
    m_toolWheel.reset();
    m_sizeWheel.reset();
    ensureMarkerLines();
    layoutPanels();
    updateCursor(m_pointer);
    scheduleUpdate();
}

void CaptureOverlay::runAction(ToolType action)
{
    switch (action) {
    case ToolType::Ocr:
        startTextRecognition();
        break;
    case ToolType::Undo:
        undoShapes();
        break;
    case ToolType::Redo:
        redoShapes();
        break;
    case ToolType::Cancel:
        Q_EMIT closeRequested();
        break;
    case ToolType::Save:
        requestSave();
        break;
    case ToolType::Copy:
        requestCopy();
        break;
    case ToolType::Pin:
        requestPin();
        break;
    case ToolType::Cloud:
        if (const QImage image = renderedSelection(); !image.isNull())
            Q_EMIT cloudRequested(image);
        break;
    case ToolType::LongScreenshot:
        startLongMode();
        break;
    case ToolType::Record:
        tellMissing();
        break;
    default:
        break;
    }
}

void CaptureOverlay::onAttributesChanged()
{
    m_toolMemory->remember(m_document);
    m_textEditor->relayout();
    layoutPanels();
    refreshErase();
    ensureMarkerLines();
    updateCursor(m_pointer);
    scheduleUpdate();
}

void CaptureOverlay::tellMissing()
{
    showToast(QCoreApplication::translate("CaptureOverlay", "此版本还没有这个功能"));
}

bool CaptureOverlay::canStart(AutoStart what) const
{
    return static_cast<bool>(m_starts[static_cast<std::size_t>(what)].starter);
}

void CaptureOverlay::startTextRecognition()
{
    if (m_selection.width() <= kSmallestSearched || m_selection.height() <= kSmallestSearched) {
        showToast(QCoreApplication::translate("CaptureOverlay", "请先拖拽选定识别区域"));
        return;
    }
    if (!canStart(AutoStart::TextRecognition)) {
        tellWithoutRecognition(*this);
        return;
    }
    setTool(ToolType::None);
    armStart(AutoStart::TextRecognition);
}

// --- shapes ----------------------------------------------------------------------------------------------------------

void CaptureOverlay::beginDrawing(const QPointF &point)
{
    m_shapesAtPress = m_document.shapes().size();
    ensureMarkerLines();
    m_document.setHovered(nullptr);
    const QPointF inside = inPicture(point);
    m_document.press(inside.x(), inside.y(), kShapeHandleTolerance);
    changeMode(OverlayMode::Drawing);
}

void CaptureOverlay::endDrawing()
{
    BaseShape *shape = m_document.release();
    changeMode(OverlayMode::Idle);
    // The tool follows a shape that was picked, so that its attributes can be changed.
    if (const BaseShape *activated = m_document.takeActivated())
        m_document.setTool(activated->type());
    const bool isCreated = m_document.shapes().size() > m_shapesAtPress;
    const QPointF moved = m_pointer - m_pressPoint;
    if (shape && (isCreated || std::hypot(moved.x(), moved.y()) < kClick))
        m_textEditor->open(shape);
    refreshErase();
    layoutPanels();
}

void CaptureOverlay::endTextEdit(bool keepSelection)
{
    m_textEditor->end(keepSelection);
}

bool CaptureOverlay::isEditingText() const
{
    return m_textEditor->isOpen();
}

bool CaptureOverlay::isOnEditedHandle(const QPointF &point) const
{
    const BaseShape *shape = m_textEditor->shape();
    if (!shape)
        return false;
    const QPointF inside = inPicture(point);
    const QList<QPointF> handles = shape->handles();
    return std::any_of(handles.begin(), handles.end(), [&inside](const QPointF &handle) {
        return std::abs(handle.x() - inside.x()) < kShapeHandleTolerance &&
               std::abs(handle.y() - inside.y()) < kShapeHandleTolerance;
    });
}

void CaptureOverlay::undoShapes()
{
    endTextEdit();
    // While something is being drawn, that is what is taken back.
    if (!m_document.cancelCreation())
        m_document.undo();
    refreshErase();
    layoutPanels();
    scheduleUpdate();
}

void CaptureOverlay::redoShapes()
{
    endTextEdit();
    m_document.redo();
    refreshErase();
    layoutPanels();
    scheduleUpdate();
}

void CaptureOverlay::removeSelectedShape()
{
    endTextEdit(true);
    m_document.removeSelected();
    refreshErase();
    layoutPanels();
    updateCursor(m_pointer);
    scheduleUpdate();
}

QCursor CaptureOverlay::toolCursor(const QPointF &point)
{
    const int hit = hitNarrow(m_selection, point);
    if (hit >= 0 && hit < kInsideHit)
        return cursorOfHit(hit);
    const QPointF inside = inPicture(point);
    if (!m_selection.contains(point) && !m_document.hitAny(inside.x(), inside.y(), kShapeHandleTolerance))
        return Qt::ArrowCursor;
    if (const BaseShape *selected = m_document.selected()) {
        if (const int handle = m_document.handleAt(inside.x(), inside.y(), kShapeHandleTolerance); handle >= 0)
            return selected->handleCursor(handle);
        if (selected->hitTest(inside.x(), inside.y()))
            return Qt::SizeAllCursor;
    }
    const ToolType tool = m_document.tool();
    if (tool == ToolType::Text)
        return Qt::IBeamCursor;
    if (BrushCursor::isFor(tool, m_document.attributes()))
        return m_brush.cursor(tool, m_document.attributes(), 1.0, devicePixelRatioF());
    return Qt::CrossCursor;
}

void CaptureOverlay::refreshErase()
{
    const bool hasBoxes = std::any_of(m_document.shapes().begin(), m_document.shapes().end(),
                                      [](const auto &shape) { return shape->eraseBox().has_value(); });
    if (!m_eraseEngine && !hasBoxes)
        return;
    if (!m_eraseEngine) {
        m_eraseEngine = std::make_unique<SmartEraseEngine>(m_picture.image());
        connect(m_eraseEngine.get(), &SmartEraseEngine::solved, this, &CaptureOverlay::onEraseTick);
    }
    m_eraseEngine->setSpecs(m_document.eraseRegions(m_eraseEngine->scale()));
    if (m_eraseEngine->isSolving())
        m_eraseTimer.start();
}

void CaptureOverlay::onEraseTick()
{
    for (const auto &shape : m_document.shapes()) {
        if (shape->eraseBox())
            m_document.markChanged(shape.get());
    }
    if (!m_eraseEngine || !m_eraseEngine->isSolving())
        m_eraseTimer.stop();
    scheduleUpdate();
}

// --- wheel -----------------------------------------------------------------------------------------------------------

void CaptureOverlay::wheelEvent(QWheelEvent *event)
{
    if (event->phase() == Qt::ScrollBegin) {
        m_toolWheel.reset();
        m_sizeWheel.reset();
    }
    const bool isReversed = m_config.wheelZoomReversed;
    if (isLongActive()) {
        event->accept();
        return;
    }
    if (isHovering())
        m_hover.wheel(*event, isReversed);
    else
        stepByWheel(wheelValue(*event, isReversed), sizeWheelValue(*event, isReversed),
                    event->modifiers().testFlag(Qt::ShiftModifier));
    event->accept();
}

bool CaptureOverlay::event(QEvent *event)
{
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            const int value = gestureValue(gesture->value());
            if (isHovering())
                m_hover.walkSmoothly(value / kGestureSlowness);
            else
                stepByWheel(value, value, gesture->modifiers().testFlag(Qt::ShiftModifier));
            return true;
        }
    }
    return QWidget::event(event);
}

void CaptureOverlay::stepByWheel(int value, int sizeValue, bool isSize)
{
    if (hasSelection() && isSize && hasSizeStep(m_document.tool())) {
        const int steps = m_sizeWheel.take(sizeValue);
        if (steps != 0)
            stepToolSize(m_document, steps);
    } else {
        const int steps = m_toolWheel.take(value);
        if (steps != 0)
            stepTool(m_document, steps, {});
    }
    onAttributesChanged();
}

// --- highlighter -----------------------------------------------------------------------------------------------------

void CaptureOverlay::ensureMarkerLines()
{
    trackMarkerSnap();
    if (!hasSelection() || !m_document.markerSnapText() || m_document.tool() != ToolType::Marker ||
        m_document.attributes().markerRectMode)
        return;
    const QRectF area = m_selection.translated(-m_picture.origin());
    m_markerLines->ensure(area, [&] { return renderSelection(m_picture.image(), area, {}, ShapeFactory::standard()); });
}

void CaptureOverlay::trackMarkerSnap()
{
    if (m_document.markerSnapText() == m_markerSnap)
        return;
    m_markerSnap = m_document.markerSnapText();
    Q_EMIT markerSnapChanged(m_markerSnap);
}

} // namespace tavrel::ui
