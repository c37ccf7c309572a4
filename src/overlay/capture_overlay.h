#pragma once

#include "annotate/shape_document.h"
#include "overlay/hover_tracker.h"
#include "overlay/magnifier.h"
#include "overlay/overlay_hints.h"
#include "overlay/overlay_mode.h"
#include "overlay/overlay_picture.h"
#include "overlay/overlay_snapshot.h"
#include "overlay/painted_regions.h"
#include "platform/element_detector.h"
#include "platform/screen_capturer.h"
#include "record/record_request.h"
#include "settings/settings_config.h"
#include "ui/brush_cursor.h"
#include "ui/marker_lines.h"
#include "ui/toast.h"
#include "ui/wheel_steps.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace tavrel {
class EffectImageCache;
class SmartEraseEngine;
class ToolMemory;
} // namespace tavrel

namespace tavrel::platform {
class IWindowController;
}

namespace tavrel::ui {

class ElementProbe;
class LongCaptureMode;
class OverlayPanels;
class ShapeTextEditor;

/// Stands over one display from the end of the grab until a result leaves it: selection, keys, annotations.
///
/// It never saves or copies by itself: it renders the result and raises a signal. One overlay serves one display at one
/// pixel ratio; all coordinates are its own logical pixels. Parts of the picture are repainted only where they change.
/// The overlay does not close itself: its owner hides and deletes it.
///
/// Panels are optional: those that are set are shown, placed and hidden with the selection. GUI thread only.
class CaptureOverlay final : public QWidget
{
    Q_OBJECT

public:
    CaptureOverlay(const platform::CapturedDisplay &display, const SettingsConfig &config, QWidget *parent = nullptr);
    ~CaptureOverlay() override;

    void setConfig(const SettingsConfig &config);
    void setWindowController(std::shared_ptr<platform::IWindowController> controller);
    /// windows  the top-level ones, top-most first, that a click may take
    /// probe    asked for the elements in them; may be null
    void setDetection(const QList<platform::WindowInfo> &windows, ElementProbe *probe = nullptr);
    /// Whether the frame of the hovered rectangle glides; true at first.
    void setHoverAnimated(bool animated) { m_hover.setAnimated(animated); }
    /// The selection itself becomes the result: no panels, the release of the button ends it.
    void setPickMode(bool pick);
    void setRecordPrefs(const record::RecordPrefs &prefs) { m_recordPrefs = prefs; }
    [[nodiscard]] const record::RecordPrefs &recordPrefs() const { return m_recordPrefs; }

    /// What tools were set to before; the document starts with it and keeps it up to date.
    void setToolMemory(std::shared_ptr<ToolMemory> memory);
    /// Finds the lines of text that highlighter strokes are pulled onto; without it there are none.
    void setLineSearch(LineSearch search);
    void setTool(ToolType tool);
    [[nodiscard]] const OverlayPanels &panels() const { return *m_panels; }

    /// What can begin by itself as soon as a selection stands.
    enum class AutoStart { TextRecognition, LongCapture };
    /// Says how it is begun; without that, arming it has no effect.
    void setStarter(AutoStart what, std::function<void()> starter);
    /// Begins it with the selection there is, else with the next one. Not while a region is picked.
    void armStart(AutoStart what);

    /// Opens a hole over the selection, through which the page below is scrolled; frames have to come from outside from
    /// longCaptureStarted() to longCaptureFinished(). False, with a message shown, when it cannot begin.
    bool startLongMode();
    [[nodiscard]] bool isLongActive() const;
    /// A picture of the display taken meanwhile. False for one of another display, which is left alone.
    bool addLongFrame(const platform::CapturedDisplay &display);
    /// A frame that was due has not come.
    void missLongFrame();
    /// With commit the stitched page becomes the result that is copied, saved and pinned.
    void finishLongMode(bool commit);

    void clearSelection();
    void setSelectionRect(const QRectF &rect);
    [[nodiscard]] QRectF selection() const { return m_selection; }
    [[nodiscard]] bool hasSelection() const { return !m_selection.isEmpty(); }
    [[nodiscard]] QRect globalSelectionRect() const;
    [[nodiscard]] OverlayMode mode() const { return m_mode; }
    /// What a click takes while nothing is selected; null for nothing.
    [[nodiscard]] QRectF hoverRect() const { return m_hover.target(); }
    [[nodiscard]] ShapeDocument &document() { return m_document; }
    /// The window under the middle of the selection.
    [[nodiscard]] std::optional<platform::WindowInfo> windowUnderSelection() const;

    [[nodiscard]] OverlaySnapshot snapshot() const;
    /// Takes up a stored capture; one of another size lies in the middle. A snapshot without a picture is ignored.
    void loadSnapshot(const OverlaySnapshot &snapshot);

    /// Shows a message for two seconds.
    void showToast(const QString &text);

Q_SIGNALS:
    void selectionStarted();
    void copyRequested(const QImage &image);
    void saveRequested(const QImage &image);
    void pinRequested(const QImage &image, const QRect &globalRect);
    void cloudRequested(const QImage &image);
    void closeRequested();
    void colorCopied(const QString &text); ///< the receiver puts it on the clipboard
    void historyNavigate(int delta);       ///< -1 previous, 1 next
    void editRequested(const QImage &image);
    void regionPicked(const QImage &image);
    void regionRectPicked(const QRect &rect);
    void longCaptureStarted();
    void longCaptureFinished();
    void recordRequested(const tavrel::record::RecordRequest &request);
    void recordPrefsChanged(const tavrel::record::RecordPrefs &prefs);
    void recordMicRequested(bool on);
    void recordCameraRequested(bool on);
    void toolbarConfigChanged(const QString &json);
    void toolGuideDismissed();
    void markerSnapChanged(bool on);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool event(QEvent *event) override;

private:
    // selection
    [[nodiscard]] QPointF pointOf(const QMouseEvent &event) const;
    void pressLeft(const QPointF &point);
    void pressRight();
    void beginSelection(const QPointF &point);
    void beginDrawing(const QPointF &point);
    void endDrawing();
    void endSelecting();
    void finishPick();
    void changeMode(OverlayMode mode);
    /// What a selection may cover: the picture, in overlay coordinates.
    [[nodiscard]] QRectF area() const;
    [[nodiscard]] QPointF inPicture(const QPointF &point) const { return point - m_picture.origin(); }
    [[nodiscard]] bool hasTool() const { return m_document.tool() != ToolType::None; }
    /// Nothing selected and no tool: the pointer is over what a click would take.
    [[nodiscard]] bool isHovering() const { return !hasSelection() && !hasTool(); }
    void updateHover(const QPointF &point);
    void refreshHoverScene();
    void connectProbe(ElementProbe *probe);
    [[nodiscard]] QPointF globalOrigin() const { return m_display.geometry.topLeft() - m_picture.origin(); }
    void updateCursor(const QPointF &point);
    /// Brings the panels in step with selection, tool and history, and puts them in their places.
    void layoutPanels();
    void consumeArmedStarts();

    // tools
    void connectTools();
    void runAction(ToolType action);
    /// How the next shape, and the selected one, look has been changed.
    void onAttributesChanged();
    void tellMissing();
    void runLongAction(int action);
    /// Keeps the hole of a scrolling capture around what has to be seen.
    void updateLongHole();
    [[nodiscard]] bool handleLongKey(int key);
    void paintLongResult(QPainter &painter) const;
    [[nodiscard]] bool canStart(AutoStart what) const;
    void startTextRecognition();
    /// Ends the edit of a text in place, if there is one.
    void endTextEdit(bool keepSelection = false);
    [[nodiscard]] bool isEditingText() const;
    /// Whether a point is on a handle of the text being edited, whose selection a press there keeps.
    [[nodiscard]] bool isOnEditedHandle(const QPointF &point) const;
    void undoShapes();
    void redoShapes();
    void removeSelectedShape();
    /// The pointer over a selection while a tool is active.
    [[nodiscard]] QCursor toolCursor(const QPointF &point);
    /// Wheel and zoom gesture over a selection or with a tool.
    void stepByWheel(int value, int sizeValue, bool isSize);
    /// Lets the boxes of smart erase be solved that have no result yet.
    void refreshErase();
    void onEraseTick();
    void ensureMarkerLines();
    void trackMarkerSnap();
    [[nodiscard]] QImage renderedSelection() const;
    void requestCopy();
    void requestSave();
    void requestPin();

    // keys
    bool handleBinding(const KeyCombo &combo);
    bool handleEditKey(const KeyCombo &combo);
    bool handlePlainKey(const KeyCombo &combo, int key);
    void copyColor();

    // painting
    void scheduleUpdate();
    [[nodiscard]] PaintedRegions regionsNow() const;
    [[nodiscard]] QString sizeText() const;
    [[nodiscard]] QRectF sizeLabel() const;
    [[nodiscard]] bool picksColor() const; ///< the pointer is on a pixel of the picture
    [[nodiscard]] bool showsMagnifier() const;
    [[nodiscard]] MagnifierLook magnifierLook() const;
    [[nodiscard]] QRectF hintBox() const;
    void rebuildHints();
    void paintSelection(QPainter &painter, const QRegion &exposed) const;
    /// Where shapes look different since the last call.
    [[nodiscard]] QRegion shapeDamage();
    /// The hovered rectangle while it is painted.
    [[nodiscard]] QRectF shownHover() const;

    static constexpr double kShapeHandleTolerance = 15; ///< half side of the square around a handle of a shape

    platform::DisplayInfo m_display;
    SettingsConfig m_config;
    OverlayPicture m_picture;
    ShapeDocument m_document;
    QList<platform::WindowInfo> m_windows;
    QPointer<ElementProbe> m_probe;
    std::shared_ptr<platform::IWindowController> m_windowController;
    record::RecordPrefs m_recordPrefs;
    std::shared_ptr<ToolMemory> m_toolMemory;
    OverlayPanels *m_panels;
    LongCaptureMode *m_long;
    QImage m_longResult;                             ///< stands in for the selection's picture; null for none
    std::unique_ptr<EffectImageCache> m_effects;     ///< of the picture
    std::unique_ptr<SmartEraseEngine> m_eraseEngine; ///< of the picture, from the first box on
    QTimer m_eraseTimer;                             ///< moves the light over boxes that are being solved
    ShapeTextEditor *m_textEditor;
    MarkerLines *m_markerLines;
    BrushCursor m_brush;
    WheelAccumulator m_toolWheel;
    WheelAccumulator m_sizeWheel;
    struct Start
    {
        bool isArmed = false;
        std::function<void()> starter;
    };
    std::array<Start, 2> m_starts; ///< by AutoStart
    qsizetype m_shapesAtPress = 0;
    bool m_markerSnap = false; ///< as last told

    QRectF m_selection;
    OverlayMode m_mode = OverlayMode::Idle;
    int m_activeHandle = -1;
    QPointF m_pressPoint;
    QRectF m_pressSelection;
    QPointF m_pointer;
    bool m_pointerInside = false;
    bool m_pickMode = false;
    HoverTracker m_hover{hostClockMs, this};
    qint64 m_livePicture; ///< cache key of the picture that shows the screen of now
    QString m_colorFormat;

    Toast m_toast;
    MagnifierPainter m_magnifier;
    HintCard m_hints;
    int m_hintKey = -1;
    PaintedRegions m_painted;
};

} // namespace tavrel::ui
