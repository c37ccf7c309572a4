#include "overlay/capture_overlay.h"

#include "annotate/crop_rect.h"
#include "overlay/element_probe.h"
#include "overlay/long_capture_mode.h"
#include "overlay/overlay_marks.h"
#include "overlay/overlay_panels.h"
#include "platform/window_controller.h"
#include "ui/eyedropper_sample.h"
#include "ui/theme_source.h"
#include "ui/toolbar_layout.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWheelEvent>

#include <cmath>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr double kSmallestSearched = 10;
constexpr int kGestureSlowness = 4; ///< of a zoom gesture that walks the hovered rectangle

/// Where the pointer is. Widgets get every position but this one rounded to whole units, which at a fractional ratio is
/// a pixel beside the one under the pointer. The overlay is a window, so its scene is itself.
QPointF pointOf(const QWidget &overlay, const QMouseEvent &event)
{
    return overlay.isWindow() ? event.scenePosition() : event.position();
}

/// The buttons of toolbars whose outcome nobody takes.
QSet<ToolType> toolsWithout(const QSet<CaptureOutcome::Action> &offered, bool canRecognise)
{
    // Recordings and uploads are no outcomes yet.
    QSet<ToolType> absent{ToolType::Record, ToolType::Cloud};
    if (!canRecognise)
        absent.insert(ToolType::Ocr);
    for (const auto &[tool, action] : {std::pair(ToolType::Copy, CaptureOutcome::Action::Copy),
                                       std::pair(ToolType::Save, CaptureOutcome::Action::Save),
                                       std::pair(ToolType::Pin, CaptureOutcome::Action::Pin)}) {
        if (!offered.contains(action))
            absent.insert(tool);
    }
    return absent;
}

} // namespace

CaptureOverlay::CaptureOverlay(const platform::CapturedDisplay &display, const SettingsConfig &config,
                               const ThemeSource *themes, QWidget *parent)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_display(static_cast<const platform::DisplayInfo &>(display)),
      m_config(config),
      m_theme(themes ? themes->current() : themeFor(config.theme)),
      m_livePicture(display.image.cacheKey()),
      m_drawing(this),
      m_detection(
          display, [this] { return isVisible() && !hasSelection(); }, this),
      m_panels(new OverlayPanels(this, m_drawing.document(), config, m_theme)),
      m_long(new LongCaptureMode(this)),
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
    m_drawing.setMarkerSnap(config.markerSnapText);
    showPicture(OverlayPicture(display.image));
    connectParts();
    if (themes)
        connect(themes, &ThemeSource::changed, this, &CaptureOverlay::setTheme);
    setStarter(AutoStart::LongCapture, [this] { startLongMode(); });
    rebuildHints();
}

CaptureOverlay::~CaptureOverlay()
{
    // A field that has the focus tells its last words while the document is still there.
    hide();
}

void CaptureOverlay::connectParts()
{
    connect(&m_toast, &Toast::changed, this, [this] {
        updateLongHole();
        scheduleUpdate();
    });
    connect(&m_detection.tracker(), &HoverTracker::changed, this, &CaptureOverlay::scheduleUpdate);

    connect(&m_drawing, &DrawingSession::changed, this, &CaptureOverlay::scheduleUpdate);
    connect(&m_drawing, &DrawingSession::stateChanged, this, [this] {
        layoutPanels();
        updateCursor(m_pointer);
    });
    connect(&m_drawing, &DrawingSession::keyboardReturned, this, [this] { setFocus(Qt::OtherFocusReason); });
    connect(&m_drawing, &DrawingSession::markerSnapChanged, this, &CaptureOverlay::markerSnapChanged);
    connect(&m_drawing, &DrawingSession::linesUnavailable, this,
            [this] { showToast(QCoreApplication::translate("CaptureOverlay", "本版本不含文字识别组件")); });

    m_panels->setEyedropperSource(
        [this](const QPointF &point) { return eyedropperSample(m_picture.image(), point - m_picture.origin()); });
    connect(m_panels, &OverlayPanels::toolChosen, this, &CaptureOverlay::setTool);
    connect(m_panels, &OverlayPanels::actionChosen, this, &CaptureOverlay::runAction);
    connect(m_panels, &OverlayPanels::attributesChanged, &m_drawing, &DrawingSession::takeAttributes);
    connect(m_panels, &OverlayPanels::configChanged, this, &CaptureOverlay::toolbarConfigChanged);
    connect(m_panels, &OverlayPanels::guideDismissed, this, &CaptureOverlay::toolGuideDismissed);
    connect(m_panels, &OverlayPanels::placed, this, &CaptureOverlay::scheduleUpdate);
    connect(m_panels, &OverlayPanels::keyboardReturned, this, [this] { setFocus(Qt::OtherFocusReason); });

    connect(m_long, &LongCaptureMode::actionTriggered, this, &CaptureOverlay::runLongAction);
    connect(m_long, &LongCaptureMode::troubled, this, &CaptureOverlay::showToast);
    connect(m_long, &LongCaptureMode::changed, this, [this](const QRect &area) {
        updateLongHole();
        update(area);
    });
}

void CaptureOverlay::setConfig(const SettingsConfig &config)
{
    m_config = config;
    m_drawing.setMarkerSnap(config.markerSnapText);
    m_panels->setConfig(config);
    m_hintKey = -1;
    scheduleUpdate();
}

void CaptureOverlay::setTheme(const Theme &theme)
{
    m_theme = theme;
    m_panels->setTheme(theme);
    m_long->setTheme(theme);
}

void CaptureOverlay::setWindowController(std::shared_ptr<platform::IWindowController> controller)
{
    m_windowController = std::move(controller);
}

void CaptureOverlay::setOffered(const QSet<Action> &offered)
{
    m_offered = offered;
    m_hintKey = -1;
    layoutPanels();
    scheduleUpdate();
}

void CaptureOverlay::setDetection(const QList<platform::WindowInfo> &windows, ElementProbe *probe)
{
    m_detection.setProbe(probe);
    m_detection.setWindows(windows);
}

void CaptureOverlay::setPickMode(bool pick)
{
    m_pickMode = pick;
    layoutPanels();
    scheduleUpdate();
}

// --- what the pointer does -------------------------------------------------------------------------------------------

void CaptureOverlay::mousePressEvent(QMouseEvent *event)
{
    if (isLongActive()) {
        setFocus(Qt::MouseFocusReason);
        return;
    }
    m_pointer = pointOf(*this, *event);
    m_pointerInside = true;
    if (event->button() == Qt::LeftButton) {
        if (mode() == OverlayMode::Idle && isHovering())
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
    m_drawing.settle(point);
    switch (m_gesture.press(point, hasTool(), m_drawing.meets(point))) {
    case SelectionGesture::Press::Band:
        dropWork();
        Q_EMIT selectionStarted();
        break;
    case SelectionGesture::Press::Adjust:
        if (hasTool())
            m_drawing.cancelDrawing();
        break;
    case SelectionGesture::Press::Draw:
        m_drawing.press(point);
        break;
    case SelectionGesture::Press::Nothing:
        break;
    }
}

void CaptureOverlay::pressRight()
{
    if (m_drawing.isEditingText())
        m_drawing.endTextEdit();
    else if (hasSelection())
        clearSelection();
    else
        leave();
}

void CaptureOverlay::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF point = pointOf(*this, *event);
    m_pointer = point;
    m_pointerInside = true;
    if (mode() == OverlayMode::Idle) {
        updateCursor(point);
        updateHover(point);
    } else if (mode() == OverlayMode::Drawing) {
        m_drawing.move(point, event->modifiers().testFlag(Qt::ShiftModifier));
    } else {
        m_gesture.move(point, area());
        followSelection();
        if (mode() != OverlayMode::Selecting)
            layoutPanels();
    }
    scheduleUpdate();
}

void CaptureOverlay::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || mode() == OverlayMode::Idle)
        return;
    m_pointer = pointOf(*this, *event);
    switch (m_gesture.release()) {
    case SelectionGesture::Release::Selected:
        followSelection();
        endSelecting();
        break;
    case SelectionGesture::Release::Clicked:
        followSelection();
        clickHovered();
        break;
    case SelectionGesture::Release::Adjusted:
        followSelection();
        layoutPanels();
        break;
    case SelectionGesture::Release::Drawn:
        m_drawing.release(m_pointer);
        break;
    case SelectionGesture::Release::Nothing:
        break;
    }
    updateCursor(m_pointer);
    scheduleUpdate();
}

void CaptureOverlay::endSelecting()
{
    m_detection.tracker().clear();
    layoutPanels();
    consumeArmedStarts();
    if (m_pickMode)
        finish(Action::Pick);
}

void CaptureOverlay::clickHovered()
{
    const QRectF hover = hoverRect();
    if (hover.isEmpty())
        return;
    Q_EMIT selectionStarted();
    setSelectionRect(hover);
    if (m_pickMode)
        finish(Action::Pick);
}

void CaptureOverlay::enterEvent(QEnterEvent *event)
{
    // The overlay comes up under a pointer that may not move before it is clicked.
    m_pointerInside = true;
    if (mode() == OverlayMode::Idle) {
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
    m_detection.tracker().clear();
    m_drawing.leave();
    scheduleUpdate();
    QWidget::leaveEvent(event);
}

void CaptureOverlay::updateHover(const QPointF &point)
{
    if (hasSelection() && hasTool())
        m_drawing.hover(point);
    else
        m_drawing.leave();
    if (isHovering() && m_config.autoDetectWindow)
        m_detection.tracker().update(point);
    else
        m_detection.tracker().clear();
}

void CaptureOverlay::updateCursor(const QPointF &point)
{
    QCursor wanted(Qt::CrossCursor);
    if (mode() == OverlayMode::Moving)
        wanted = Qt::ClosedHandCursor;
    else if (mode() == OverlayMode::Resizing)
        wanted = cursorOfHit(m_gesture.handle());
    else if (mode() == OverlayMode::Drawing)
        return; // keeps the one it began with
    else if (mode() == OverlayMode::Idle && hasSelection())
        wanted = hasTool() ? toolCursor(point) : QCursor(cursorOfHit(hitBroad(selection(), point)));
    if (cursor() != wanted)
        setCursor(wanted);
}

QCursor CaptureOverlay::toolCursor(const QPointF &point)
{
    if (const int hit = hitNarrow(selection(), point); hit >= 0 && hit < kInsideHit)
        return cursorOfHit(hit);
    if (!selection().contains(point) && !m_drawing.meets(point))
        return Qt::ArrowCursor;
    return m_drawing.cursor(point);
}

void CaptureOverlay::wheelEvent(QWheelEvent *event)
{
    if (event->phase() == Qt::ScrollBegin)
        m_drawing.forgetWheel();
    event->accept();
    if (isLongActive())
        return;
    if (isHovering())
        m_detection.tracker().wheel(*event, m_config.wheelZoomReversed);
    else
        m_drawing.wheel(*event, m_config.wheelZoomReversed);
}

bool CaptureOverlay::event(QEvent *event)
{
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            const int value = gestureValue(gesture->value());
            if (isHovering())
                m_detection.tracker().walkSmoothly(value / kGestureSlowness);
            else
                m_drawing.gesture(value, gesture->modifiers().testFlag(Qt::ShiftModifier));
            return true;
        }
    }
    return QWidget::event(event);
}

// --- selection, picture and panels -----------------------------------------------------------------------------------

QRectF CaptureOverlay::area() const
{
    // A live capture covers the display, also where rounding leaves its logical size a fraction short.
    return m_picture.origin().isNull() ? QRectF(rect()) : m_picture.area().intersected(QRectF(rect()));
}

void CaptureOverlay::showPicture(const OverlayPicture &picture)
{
    m_picture = picture;
    m_drawing.setPicture(m_picture.image());
    m_drawing.setView({.zoom = 1, .origin = m_picture.origin()});
    m_detection.setPicture(m_picture, m_picture.image().cacheKey() == m_livePicture);
    m_detection.setArea(area());
    m_painted.everything = true;
}

void CaptureOverlay::followSelection()
{
    m_drawing.setArea(hasSelection() ? inPicture(selection()) : QRectF());
}

void CaptureOverlay::dropWork()
{
    finishLongMode(false);
    m_page = {};
    m_panels->forgetPosition();
    followSelection();
    m_drawing.clear();
}

void CaptureOverlay::clearSelection()
{
    m_gesture.clear();
    dropWork();
}

void CaptureOverlay::setSelectionRect(const QRectF &rect)
{
    m_drawing.finishDrawing(); // a key may come while a button is held
    m_detection.tracker().clear();
    m_page = {};
    m_gesture.select(rect.intersected(area()));
    followSelection();
    layoutPanels();
    updateCursor(m_pointer);
    scheduleUpdate();
    consumeArmedStarts();
}

QRect CaptureOverlay::globalSelectionRect() const
{
    return selection().toAlignedRect().translated(m_display.geometry.topLeft());
}

void CaptureOverlay::layoutPanels()
{
    m_panels->show(
        {.selection = selection(),
         .isShown = !m_pickMode && hasSelection() && mode() != OverlayMode::Selecting && !isLongActive(),
         .tool = document().tool(),
         .canUndo = document().canUndo(),
         .canRedo = document().canRedo(),
         .absent = toolsWithout(m_offered, static_cast<bool>(m_starts[size_t(AutoStart::TextRecognition)].starter))});
}

void CaptureOverlay::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_painted.everything = true;
    m_detection.setArea(area());
    layoutPanels();
}

void CaptureOverlay::closeEvent(QCloseEvent *event)
{
    // A session manager or the user by way of the window list; the session has to end with its overlay.
    event->accept();
    leave();
}

void CaptureOverlay::hideEvent(QHideEvent *event)
{
    finishLongMode(false); // its toolbar is a window of its own
    QWidget::hideEvent(event);
}

// --- keys and buttons ------------------------------------------------------------------------------------------------

void CaptureOverlay::keyPressEvent(QKeyEvent *event)
{
    if (m_drawing.isEditingText()) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (handleLongKey(event->key()))
        return;
    const KeyCombo combo = KeyCombo::fromEvent(*event);
    OverlayCommand command =
        event->key() == Qt::Key_Escape ? OverlayCommand::Leave : boundCommand(combo, m_config.builtin, hasSelection());
    if (command == OverlayCommand::None && m_drawing.key(combo))
        return;
    if (command == OverlayCommand::None)
        command = fixedCommand(combo, event->key(),
                               {.hasSelection = hasSelection(), .hasTool = hasTool(), .picksColor = picksColor()});
    if (command == OverlayCommand::None)
        QWidget::keyPressEvent(event);
    else
        run(command);
}

void CaptureOverlay::run(OverlayCommand command)
{
    switch (command) {
    case OverlayCommand::Leave:
        leave();
        break;
    case OverlayCommand::SelectAll:
        setSelectionRect(QRectF(rect()));
        Q_EMIT selectionStarted();
        if (m_pickMode)
            finish(Action::Pick);
        break;
    case OverlayCommand::Copy:
        finish(Action::Copy);
        break;
    case OverlayCommand::Save:
        finish(Action::Save);
        break;
    case OverlayCommand::Pin:
        finish(Action::Pin);
        break;
    case OverlayCommand::Older:
        Q_EMIT historyNavigate(-1);
        break;
    case OverlayCommand::Newer:
        Q_EMIT historyNavigate(1);
        break;
    case OverlayCommand::SwitchColorFormat:
        m_colorFormat = m_colorFormat == u"rgb" ? QStringLiteral("hex") : QStringLiteral("rgb");
        scheduleUpdate();
        break;
    case OverlayCommand::CopyColor:
        copyColor();
        break;
    case OverlayCommand::ToggleWindow:
        m_detection.tracker().toggleWindow();
        break;
    case OverlayCommand::None:
        break;
    }
}

void CaptureOverlay::runAction(ToolType action)
{
    switch (action) {
    case ToolType::Ocr:
        startTextRecognition();
        break;
    case ToolType::Undo:
        m_drawing.undo();
        break;
    case ToolType::Redo:
        m_drawing.redo();
        break;
    case ToolType::Cancel:
        leave();
        break;
    case ToolType::Save:
        finish(Action::Save);
        break;
    case ToolType::Copy:
        finish(Action::Copy);
        break;
    case ToolType::Pin:
        finish(Action::Pin);
        break;
    case ToolType::LongScreenshot:
        startLongMode();
        break;
    default:
        break;
    }
}

void CaptureOverlay::startTextRecognition()
{
    if (selection().width() <= kSmallestSearched || selection().height() <= kSmallestSearched) {
        showToast(QCoreApplication::translate("CaptureOverlay", "请先拖拽选定识别区域"));
        return;
    }
    setTool(ToolType::None);
    armStart(AutoStart::TextRecognition);
}

void CaptureOverlay::setStarter(AutoStart what, std::function<void()> starter)
{
    m_starts[static_cast<std::size_t>(what)].starter = std::move(starter);
    layoutPanels();
}

void CaptureOverlay::armStart(AutoStart what)
{
    m_starts[static_cast<std::size_t>(what)].isArmed = true;
    consumeArmedStarts();
}

void CaptureOverlay::consumeArmedStarts()
{
    if (!hasSelection() || m_pickMode || mode() == OverlayMode::Selecting)
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

void CaptureOverlay::finish(Action action)
{
    m_drawing.endTextEdit();
    CaptureOutcome outcome;
    outcome.action = action;
    if (action != Action::Leave) {
        if (cropRect(inPicture(selection()), m_picture.ratio(), m_picture.image().size()).isEmpty())
            return;
        if (!m_offered.contains(action)) {
            showToast(QCoreApplication::translate("CaptureOverlay", "此版本还没有这个功能"));
            return;
        }
        outcome.picture = pictureFor(action);
        outcome.snapshot = snapshot();
    }
    if (hasSelection()) {
        outcome.window = m_detection.windowAt(selection().center());
        outcome.rectangle = globalSelectionRect();
    }
    Q_EMIT finished(outcome);
}

void CaptureOverlay::copyColor()
{
    CaptureOutcome outcome;
    outcome.action = Action::CopyColor;
    outcome.text = colorText(m_picture.colorAt(m_pointer), m_colorFormat);
    Q_EMIT finished(outcome);
}

FlattenRequest CaptureOverlay::pictureFor(Action action) const
{
    FlattenRequest plain;
    if (!m_page.isNull()) {
        plain.picture = m_page;
        plain.selection = QRectF(QPointF(), QSizeF(m_page.size()) / m_page.devicePixelRatio());
        return plain;
    }
    if (action != Action::Pick)
        return m_drawing.flattenRequest(inPicture(selection()));
    plain.picture = m_picture.image();
    plain.selection = inPicture(selection());
    return plain;
}

OverlaySnapshot CaptureOverlay::snapshot() const
{
    if (!m_page.isNull()) {
        const double ratio = m_page.devicePixelRatio() > 0 ? m_page.devicePixelRatio() : 1.0;
        OverlaySnapshot page;
        page.image = m_page;
        page.selection = QRectF(QPointF(), QSizeF(m_page.size()) / ratio);
        page.shapesJson = QStringLiteral("[]");
        page.countersJson = QStringLiteral("{}");
        return page;
    }
    const ShapeDocument &document = m_drawing.document();
    return {.image = m_picture.image(),
            .selection = hasSelection() ? inPicture(selection()) : QRectF(),
            .shapesJson = document.shapesJson(),
            .countersJson = document.countersJson(),
            .undoStack = document.undoStack(),
            .undoIndex = document.undoIndex(),
            .windows = m_detection.windows()};
}

void CaptureOverlay::settle()
{
    finishLongMode(false);
    m_drawing.endTextEdit();
    m_drawing.finishDrawing();
}

void CaptureOverlay::loadSnapshot(const OverlaySnapshot &snapshot)
{
    if (snapshot.image.isNull())
        return;
    settle();
    m_detection.tracker().clear();
    m_page = {};
    m_drawing.clear(); // its erased places are of the old picture
    const double ratio = snapshot.image.devicePixelRatio();
    const QSizeF logical = QSizeF(snapshot.image.size()) / ratio;
    const bool covers = std::abs(logical.width() - width()) < 1 && std::abs(logical.height() - height()) < 1;
    showPicture(OverlayPicture(snapshot.image,
                               covers ? QPointF() : centredOrigin(logical, QSizeF(size()), devicePixelRatioF())));
    m_detection.setWindows(snapshot.windows);
    m_gesture.select(snapshot.selection.isEmpty()
                         ? QRectF()
                         : snapshot.selection.translated(m_picture.origin()).intersected(area()));
    followSelection();
    m_drawing.load(snapshot.shapesJson, snapshot.countersJson, snapshot.undoStack, snapshot.undoIndex);
}

// --- scrolling capture -----------------------------------------------------------------------------------------------

bool CaptureOverlay::isLongActive() const
{
    return m_long->isActive();
}

bool CaptureOverlay::startLongMode()
{
    if (m_long->isActive())
        return true;
    if (!hasSelection()) {
        showToast(QCoreApplication::translate("CaptureOverlay", "请先框选要拼接的区域"));
        return false;
    }
    if (!m_long->begin(m_picture.image(), inPicture(selection()),
                       {.theme = m_theme, .showLabels = m_config.showToolbarText, .offered = m_offered},
                       m_windowController)) {
        showToast(QCoreApplication::translate("CaptureOverlay", "选区太小，长截图需要一块足够大的区域"));
        return false;
    }
    m_drawing.setTool(ToolType::None);
    m_detection.tracker().clear();
    m_page = {};
    layoutPanels();
    updateLongHole();
    Q_EMIT longCaptureStarted();
    update();
    return true;
}

bool CaptureOverlay::addLongFrame(const platform::CapturedDisplay &display)
{
    if (display.id != m_display.id)
        return false;
    m_long->addFrame(display.image);
    return true;
}

void CaptureOverlay::missLongFrame()
{
    m_long->missFrame();
}

void CaptureOverlay::finishLongMode(bool commit)
{
    if (!m_long->isActive())
        return;
    const LongCaptureMode::Result result = m_long->finish(commit);
    m_page = result.page;
    if (commit && m_page.isNull())
        showToast(QCoreApplication::translate("CaptureOverlay", "没有拼出内容：滚动页面后再试"));
    else if (commit)
        qInfo().noquote() << QStringLiteral("长截图完成：%1×%2 像素（%3 帧，填补 %4 行）")
                                 .arg(m_page.width())
                                 .arg(m_page.height())
                                 .arg(result.frames)
                                 .arg(result.filledRows);
    Q_EMIT longCaptureFinished();
    layoutPanels();
    update();
}

void CaptureOverlay::updateLongHole()
{
    if (m_long->isActive())
        m_long->cutHole(m_toast.box(QSizeF(size())));
}

void CaptureOverlay::runLongAction(Action action)
{
    if (!m_long->isActive())
        return;
    finishLongMode(action != Action::Leave);
    if (action != Action::Edit || !m_page.isNull())
        finish(action);
}

bool CaptureOverlay::handleLongKey(int key)
{
    if (!m_long->isActive())
        return false;
    if (key == Qt::Key_Escape) {
        finishLongMode(false);
        leave();
    } else if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        finishLongMode(true);
    }
    return true;
}

// --- painting --------------------------------------------------------------------------------------------------------

void CaptureOverlay::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    if (isLongActive()) {
        painter.setClipRegion(event->region());
        m_picture.paintDimmed(painter, devicePixelRatioF());
        m_long->paint(painter);
        m_toast.paint(painter, QSizeF(size()));
        return;
    }
    const OverlayScene now = scene();
    paintScene(painter, now, event->region(), m_magnifier, [&] { m_drawing.paint(painter, event->region()); });
    m_painted = regionsOf(now);
}

OverlayScene CaptureOverlay::scene() const
{
    OverlayScene scene{.picture = m_picture, .hints = m_hints, .toast = m_toast, .page = m_page, .size = size()};
    scene.ratio = devicePixelRatioF();
    if (hasSelection()) {
        scene.selection = selection();
        scene.isSelectionChanging = m_gesture.isChanging();
        scene.sizeText = sizeText();
        scene.sizeLabel = sizeLabel(scene.sizeText);
    } else if (mode() != OverlayMode::Selecting) {
        scene.hover = m_detection.tracker().shown();
    }
    scene.hintBox = hintBox();
    scene.hintKey = m_hintKey;
    scene.magnifier = {
        .lens = m_config.showMagnifier, .colors = m_config.showColorPicker, .colorFormat = m_colorFormat};
    if (scene.magnifier.isShown() && mode() != OverlayMode::Drawing && picksColor())
        scene.magnifierBox = magnifierBox(m_pointer, scene.magnifier, QSizeF(size()));
    scene.pointer = m_pointer;
    return scene;
}

QString CaptureOverlay::sizeText() const
{
    if (!m_page.isNull())
        return sizeLabelText(m_page.size());
    return sizeLabelText(cropRect(inPicture(selection()), m_picture.ratio(), m_picture.image().size()).size());
}

QRectF CaptureOverlay::sizeLabel(const QString &text) const
{
    const QRectF box = sizeLabelBox(selection(), text, width());
    if (!m_panels->cover(box))
        return box;
    // Panels above the selection reach over its place there.
    const double top = selection().top();
    const QRectF inside = sizeLabelBox(selection().translated(0, -top), text, width()).translated(0, top);
    return m_panels->cover(inside) ? box : inside;
}

bool CaptureOverlay::picksColor() const
{
    // A stitched page hides the picture below it.
    const bool onPage = !m_page.isNull() && selection().contains(m_pointer);
    return m_pointerInside && !hasTool() && !onPage && m_picture.hasPixelAt(m_pointer);
}

void CaptureOverlay::rebuildHints()
{
    const ShapeDocument &document = m_drawing.document();
    const int key = static_cast<int>(document.tool()) * 2 + (document.attributes().markerRectMode ? 1 : 0);
    if (key == m_hintKey)
        return;
    m_hintKey = key;
    BuiltinKeys keys = m_config.builtin;
    keys.pin.enabled &= m_offered.contains(Action::Pin);
    m_hints = HintCard(hintRows(document.tool(), document.attributes().markerRectMode, keys));
}

QRectF CaptureOverlay::hintBox() const
{
    if (!m_config.showOperationTips || m_hints.isEmpty())
        return {};
    const QScreen *display = screen();
    const double inset = display ? display->geometry().bottom() - display->availableGeometry().bottom() : 0;
    const QRectF box = m_hints.place(height(), inset);
    const QRectF reach = box.adjusted(-8, -8, 8, 8);
    const auto isCovered = [&reach](const QRectF &other) { return !other.isEmpty() && reach.intersects(other); };
    if (box.top() < 0 || isCovered(selection()) || isCovered(hoverRect()) || m_panels->cover(reach))
        return {};
    return box;
}

void CaptureOverlay::scheduleUpdate()
{
    rebuildHints();
    update(dirtyRegion(m_painted, regionsOf(scene()), rect()) + m_drawing.takeDamage());
}

} // namespace tavrel::ui
