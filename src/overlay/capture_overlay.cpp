#include "overlay/capture_overlay.h"

#include "annotate/effect_image_cache.h"
#include "annotate/smart_erase_engine.h"
#include "annotate/tool_memory.h"

#include "annotate/selection_renderer.h"
#include "overlay/element_probe.h"
#include "overlay/long_capture_mode.h"
#include "overlay/overlay_panels.h"
#include "overlay/selection_geometry.h"
#include "platform/window_controller.h"
#include "ui/shape_text_editor.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEnterEvent>
#include <QMouseEvent>

#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr double kSmallestBand = 4; ///< a shorter drag is a click

} // namespace

CaptureOverlay::CaptureOverlay(const platform::CapturedDisplay &display, const SettingsConfig &config, QWidget *parent)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_display(static_cast<const platform::DisplayInfo &>(display)),
      m_config(config),
      m_picture(display.image),
      m_toolMemory(std::make_shared<ToolMemory>()),
      m_panels(new OverlayPanels(this, m_document, config)),
      m_long(new LongCaptureMode(this)),
      m_effects(std::make_unique<EffectImageCache>(m_picture.image())),
      m_textEditor(new ShapeTextEditor(this, m_document)),
      m_markerLines(new MarkerLines(this)),
      m_livePicture(m_picture.image().cacheKey()),
      m_colorFormat(config.colorFormat)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
    setGeometry(display.geometry);
    setWindowTitle(QStringLiteral("Tavrel"));
    setAccessibleName(QCoreApplication::translate("CaptureOverlay", "截图选区"));
    setAccessibleDescription(QCoreApplication::translate("CaptureOverlay", "拖拽选择区域，Enter 复制，Esc 取消"));
    connect(&m_toast, &Toast::changed, this, [this] {
        updateLongHole();
        scheduleUpdate();
    });
    connect(m_long, &LongCaptureMode::actionTriggered, this, &CaptureOverlay::runLongAction);
    connect(m_long, &LongCaptureMode::troubled, this, &CaptureOverlay::showToast);
    connect(m_long, &LongCaptureMode::changed, this, [this](const QRect &area) {
        updateLongHole();
        update(area);
    });
    setStarter(AutoStart::LongCapture, [this] { startLongMode(); });
    connect(&m_hover, &HoverTracker::changed, this, &CaptureOverlay::scheduleUpdate);
    refreshHoverScene();
    connectTools();
    rebuildHints();
}

CaptureOverlay::~CaptureOverlay()
{
    // A field that has the focus tells its last words while the document is still there.
    hide();
}

void CaptureOverlay::setConfig(const SettingsConfig &config)
{
    m_config = config;
    m_document.setMarkerSnapText(config.markerSnapText);
    m_panels->setConfig(config);
    m_hintKey = -1;
    rebuildHints();
    scheduleUpdate();
}

void CaptureOverlay::setWindowController(std::shared_ptr<platform::IWindowController> controller)
{
    m_windowController = std::move(controller);
}

void CaptureOverlay::setDetection(const QList<platform::WindowInfo> &windows, ElementProbe *probe)
{
    m_windows = windows;
    connectProbe(probe);
    refreshHoverScene();
}

void CaptureOverlay::connectProbe(ElementProbe *probe)
{
    if (m_probe)
        disconnect(m_probe, nullptr, this, nullptr);
    m_probe = probe;
    if (!probe) {
        m_hover.setElementSource({});
        return;
    }
    connect(probe, &ElementProbe::ready, this,
            [this](const QPointF &global, qint64 processId, const QList<QRectF> &chain) {
                if (isVisible() && !hasSelection())
                    m_hover.takeElements(global, processId, chain);
            });
    m_hover.setElementSource([this](const QPointF &global, qint64 processId) {
        // A picture of the past does not show the elements of now.
        if (m_probe && m_picture.image().cacheKey() == m_livePicture)
            m_probe->request(global, processId);
    });
}

void CaptureOverlay::refreshHoverScene()
{
    m_hover.setPicture(m_picture.image(), m_picture.origin());
    m_hover.setSurroundings(m_windows, globalOrigin(), area());
}

void CaptureOverlay::setPickMode(bool pick)
{
    m_pickMode = pick;
    layoutPanels();
    scheduleUpdate();
}

void CaptureOverlay::setToolMemory(std::shared_ptr<ToolMemory> memory)
{
    m_toolMemory = std::move(memory);
    m_toolMemory->begin(m_document);
}

// --- selection -------------------------------------------------------------------------------------------------------

QRectF CaptureOverlay::area() const
{
    // A live capture covers the display, also where rounding leaves its logical size a fraction short.
    return m_picture.origin().isNull() ? QRectF(rect()) : m_picture.area().intersected(QRectF(rect()));
}

void CaptureOverlay::changeMode(OverlayMode mode)
{
    m_mode = mode;
    if (mode != OverlayMode::Resizing)
        m_activeHandle = kNoHit;
}

QPointF CaptureOverlay::pointOf(const QMouseEvent &event) const
{
    // Widgets get every position but this one rounded to whole units, which at a fractional ratio is a pixel beside
    // the one under the pointer. The overlay is a window, so its scene is itself.
    return isWindow() ? event.scenePosition() : event.position();
}

void CaptureOverlay::mousePressEvent(QMouseEvent *event)
{
    if (isLongActive()) {
        setFocus(Qt::MouseFocusReason);
        return;
    }
    m_pointer = pointOf(*event);
    m_pointerInside = true;
    if (event->button() == Qt::LeftButton) {
        if (m_mode == OverlayMode::Idle && isHovering())
            updateHover(m_pointer); // a press need not follow a move
        pressLeft(m_pointer);
    }
    if (event->button() == Qt::RightButton)
        pressRight();
    updateCursor(m_pointer);
    scheduleUpdate();
}

void CaptureOverlay::pressLeft(const QPointF &point)
{
    setFocus(Qt::MouseFocusReason);
    endTextEdit(isOnEditedHandle(point));
    m_pressPoint = point;
    m_pressSelection = m_selection;
    if (!hasSelection()) {
        beginSelection(point);
        return;
    }
    const int hit = hasTool() ? hitNarrow(m_selection, point) : hitBroad(m_selection, point);
    if (hit >= 0 && hit < kInsideHit) {
        if (hasTool())
            m_document.cancelCreation();
        changeMode(OverlayMode::Resizing);
        m_activeHandle = hit;
    } else if (hasTool()) {
        // Beside the selection only a shape can be taken, so that a stray click does not lose the selection.
        const QPointF inside = inPicture(point);
        if (m_selection.contains(point) || m_document.hitAny(inside.x(), inside.y(), kShapeHandleTolerance))
            beginDrawing(point);
    } else if (hit == kInsideHit) {
        changeMode(OverlayMode::Moving);
    } else {
        beginSelection(point);
    }
}

void CaptureOverlay::pressRight()
{
    if (isEditingText())
        endTextEdit();
    else if (hasSelection())
        clearSelection();
    else
        Q_EMIT closeRequested();
}

void CaptureOverlay::beginSelection(const QPointF &point)
{
    clearSelection();
    changeMode(OverlayMode::Selecting);
    m_selection = QRectF(point, QSizeF(0, 0));
    Q_EMIT selectionStarted();
}

void CaptureOverlay::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF point = pointOf(*event);
    m_pointer = point;
    m_pointerInside = true;
    const QPointF delta = point - m_pressPoint;
    switch (m_mode) {
    case OverlayMode::Idle:
        updateCursor(point);
        updateHover(point);
        break;
    case OverlayMode::Selecting:
        m_selection = bandSelection(m_pressPoint, point, area());
        break;
    case OverlayMode::Moving:
        m_selection = movedSelection(m_pressSelection, delta, area());
        layoutPanels();
        break;
    case OverlayMode::Resizing: {
        const QRectF whole = area();
        const QPointF clamped(std::clamp(point.x(), whole.left(), whole.right()),
                              std::clamp(point.y(), whole.top(), whole.bottom()));
        m_selection = resizedSelection(m_pressSelection, m_activeHandle, clamped - m_pressPoint, whole);
        layoutPanels();
        break;
    }
    case OverlayMode::Drawing: {
        const QPointF from = inPicture(m_pressPoint);
        const QPointF to = inPicture(point);
        m_document.move(from.x(), from.y(), to.x(), to.y(), event->modifiers().testFlag(Qt::ShiftModifier));
        break;
    }
    }
    scheduleUpdate();
}

void CaptureOverlay::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pointer = pointOf(*event);
    switch (m_mode) {
    case OverlayMode::Idle:
        return;
    case OverlayMode::Selecting:
        endSelecting();
        break;
    case OverlayMode::Moving:
    case OverlayMode::Resizing:
        changeMode(OverlayMode::Idle);
        if (m_selection.width() < 1 || m_selection.height() < 1)
            m_selection = m_pressSelection;
        layoutPanels();
        break;
    case OverlayMode::Drawing:
        endDrawing();
        break;
    }
    updateCursor(m_pointer);
    scheduleUpdate();
}

void CaptureOverlay::endSelecting()
{
    changeMode(OverlayMode::Idle);
    if (m_selection.width() >= kSmallestBand && m_selection.height() >= kSmallestBand) {
        m_hover.clear();
        layoutPanels();
        consumeArmedStarts();
        if (m_pickMode)
            finishPick();
        return;
    }
    // A click takes what is under the pointer.
    m_selection = {};
    const QRectF hover = m_hover.target();
    if (hover.isEmpty())
        return;
    Q_EMIT selectionStarted();
    setSelectionRect(hover);
    if (m_pickMode)
        finishPick();
}

void CaptureOverlay::finishPick()
{
    // The first receiver may close the session: the picture is cut before that.
    const QImage image =
        renderSelection(m_picture.image(), m_selection.translated(-m_picture.origin()), {}, ShapeFactory::standard());
    if (image.isNull())
        return;
    Q_EMIT regionRectPicked(globalSelectionRect());
    Q_EMIT regionPicked(image);
}

void CaptureOverlay::enterEvent(QEnterEvent *event)
{
    // The overlay comes up under a pointer that may not move before it is clicked.
    m_pointerInside = true;
    if (m_mode == OverlayMode::Idle) {
        m_pointer = event->position();
        updateCursor(m_pointer);
        updateHover(m_pointer);
    }
    scheduleUpdate();
    QWidget::enterEvent(event);
}

void CaptureOverlay::leaveEvent(QEvent *event)
{
    m_pointerInside = false;
    m_hover.clear();
    m_document.setHovered(nullptr);
    scheduleUpdate();
    QWidget::leaveEvent(event);
}

void CaptureOverlay::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_painted.everything = true;
    refreshHoverScene();
    layoutPanels();
}

void CaptureOverlay::closeEvent(QCloseEvent *event)
{
    // A session manager or the user by way of the window list; the session has to end with its overlay.
    event->accept();
    Q_EMIT closeRequested();
}

void CaptureOverlay::hideEvent(QHideEvent *event)
{
    finishLongMode(false); // its toolbar is a window of its own
    QWidget::hideEvent(event);
}

void CaptureOverlay::clearSelection()
{
    finishLongMode(false);
    m_longResult = {};
    endTextEdit();
    m_panels->forgetPosition();
    m_selection = {};
    changeMode(OverlayMode::Idle);
    m_document.loadState(QStringLiteral("[]"), QStringLiteral("{}"), {}, 0);
    m_document.setTool(ToolType::None);
    refreshErase();
    layoutPanels();
    scheduleUpdate();
}

void CaptureOverlay::setSelectionRect(const QRectF &rect)
{
    // A key may come while a button is held.
    if (m_mode == OverlayMode::Drawing)
        endDrawing();
    m_hover.clear();
    m_longResult = {};
    m_selection = rect.intersected(area());
    changeMode(OverlayMode::Idle);
    layoutPanels();
    updateCursor(m_pointer);
    scheduleUpdate();
    consumeArmedStarts();
}

QRect CaptureOverlay::globalSelectionRect() const
{
    return m_selection.toAlignedRect().translated(m_display.geometry.topLeft());
}

void CaptureOverlay::updateHover(const QPointF &point)
{
    m_document.setHovered(nullptr);
    if (hasSelection() && hasTool()) {
        const QPointF inside = inPicture(point);
        m_document.setHovered(m_document.pickAt(inside.x(), inside.y()));
    }
    if (isHovering() && m_config.autoDetectWindow)
        m_hover.update(point);
    else
        m_hover.clear();
}

void CaptureOverlay::updateCursor(const QPointF &point)
{
    QCursor wanted(Qt::CrossCursor);
    if (m_mode == OverlayMode::Moving)
        wanted = Qt::ClosedHandCursor;
    else if (m_mode == OverlayMode::Resizing)
        wanted = cursorOfHit(m_activeHandle);
    else if (m_mode == OverlayMode::Drawing)
        return; // keeps the one it began with
    else if (m_mode == OverlayMode::Idle && hasSelection())
        wanted = hasTool() ? toolCursor(point) : QCursor(cursorOfHit(hitBroad(m_selection, point)));
    if (cursor() != wanted)
        setCursor(wanted);
}

void CaptureOverlay::layoutPanels()
{
    m_panels->show({.selection = m_selection,
                    .isShown = !m_pickMode && hasSelection() && m_mode != OverlayMode::Selecting && !isLongActive(),
                    .tool = m_document.tool(),
                    .canUndo = m_document.canUndo(),
                    .canRedo = m_document.canRedo()});
}

void CaptureOverlay::setStarter(AutoStart what, std::function<void()> starter)
{
    m_starts[static_cast<std::size_t>(what)].starter = std::move(starter);
}

void CaptureOverlay::armStart(AutoStart what)
{
    m_starts[static_cast<std::size_t>(what)].isArmed = true;
    consumeArmedStarts();
}

void CaptureOverlay::consumeArmedStarts()
{
    if (!hasSelection() || m_pickMode || m_mode == OverlayMode::Selecting)
        return;
    for (Start &start : m_starts) {
        if (!std::exchange(start.isArmed, false) || !start.starter)
            continue;
        // The selection may be gone once those who hear of it have had their say.
        QTimer::singleShot(0, this, [this, &start] {
            if (hasSelection())
                start.starter();
        });
    }
}

// --- results ---------------------------------------------------------------------------------------------------------

std::optional<platform::WindowInfo> CaptureOverlay::windowUnderSelection() const
{
    if (!hasSelection())
        return {};
    const platform::WindowInfo *window = windowAt(m_windows, m_selection.center() + globalOrigin());
    return window ? std::optional(*window) : std::nullopt;
}

QImage CaptureOverlay::renderedSelection() const
{
    if (!hasSelection())
        return {};
    if (!m_longResult.isNull())
        return m_longResult;
    if (m_eraseEngine)
        m_eraseEngine->solve(m_document.eraseRegions(m_eraseEngine->scale()));
    return renderSelection(m_picture.image(), m_selection.translated(-m_picture.origin()), m_document.shapesJson(),
                           ShapeFactory::standard(), m_effects.get(), m_eraseEngine.get());
}

void CaptureOverlay::requestCopy()
{
    endTextEdit();
    const QImage image = renderedSelection();
    if (!image.isNull())
        Q_EMIT copyRequested(image);
}

void CaptureOverlay::requestSave()
{
    endTextEdit();
    const QImage image = renderedSelection();
    if (!image.isNull())
        Q_EMIT saveRequested(image);
}

void CaptureOverlay::requestPin()
{
    endTextEdit();
    const QImage image = renderedSelection();
    if (!image.isNull())
        Q_EMIT pinRequested(image, globalSelectionRect());
}

OverlaySnapshot CaptureOverlay::snapshot() const
{
    if (!m_longResult.isNull()) {
        const double ratio = m_longResult.devicePixelRatio() > 0 ? m_longResult.devicePixelRatio() : 1.0;
        OverlaySnapshot page;
        page.image = m_longResult;
        page.selection = QRectF(QPointF(), QSizeF(m_longResult.size()) / ratio);
        page.shapesJson = QStringLiteral("[]");
        page.countersJson = QStringLiteral("{}");
        return page;
    }
    return {.image = m_picture.image(),
            .selection = m_selection.isEmpty() ? QRectF() : m_selection.translated(-m_picture.origin()),
            .shapesJson = m_document.shapesJson(),
            .countersJson = m_document.countersJson(),
            .undoStack = m_document.undoStack(),
            .undoIndex = m_document.undoIndex(),
            .windows = m_windows};
}

void CaptureOverlay::loadSnapshot(const OverlaySnapshot &snapshot)
{
    if (snapshot.image.isNull())
        return;
    endTextEdit();
    m_hover.clear();
    m_longResult = {};
    const double ratio = snapshot.image.devicePixelRatio();
    const QSizeF logical = QSizeF(snapshot.image.size()) / ratio;
    const bool covers = std::abs(logical.width() - width()) < 1 && std::abs(logical.height() - height()) < 1;
    m_picture = OverlayPicture(snapshot.image,
                               covers ? QPointF() : centredOrigin(logical, QSizeF(size()), devicePixelRatioF()));
    m_textEditor->setView({.zoom = 1, .origin = m_picture.origin()});
    m_effects = std::make_unique<EffectImageCache>(m_picture.image());
    m_eraseEngine.reset();
    m_markerLines->forget();
    m_windows = snapshot.windows;
    refreshHoverScene();
    m_document.loadState(snapshot.shapesJson, snapshot.countersJson, snapshot.undoStack, snapshot.undoIndex);
    refreshErase();
    m_document.setTool(ToolType::None);
    changeMode(OverlayMode::Idle);
    m_selection =
        snapshot.selection.isEmpty() ? QRectF() : snapshot.selection.translated(m_picture.origin()).intersected(area());
    m_painted.everything = true;
    layoutPanels();
    updateCursor(m_pointer);
    scheduleUpdate();
}

void CaptureOverlay::showToast(const QString &text)
{
    m_toast.show(text);
}

} // namespace tavrel::ui
