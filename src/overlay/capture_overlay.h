#pragma once

#include "capture/capture_outcome.h"
#include "overlay/detection.h"
#include "overlay/overlay_keys.h"
#include "overlay/overlay_scene.h"
#include "overlay/selection_gesture.h"
#include "platform/screen_capturer.h"
#include "settings/settings_config.h"
#include "ui/drawing_session.h"
#include "ui/theme.h"
#include "ui/toast.h"

#include <QSet>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace tavrel {
class ToolMemory;
}

namespace tavrel::platform {
class IWindowController;
}

namespace tavrel::ui {

class LongCaptureMode;
class OverlayPanels;
class ThemeSource;

/// Stands over one display from the end of the grab until a session comes to something: a window in which the selection
/// (SelectionGesture), the annotations (DrawingSession), what lies under the pointer (Detection), a scrolling capture
/// (LongCaptureMode) and the panels (OverlayPanels) meet.
///
/// It never saves or copies by itself: it raises finished() with a value that holds all of it. One overlay serves one
/// display at one pixel ratio; all coordinates are its own logical pixels. Parts of the picture are repainted only
/// where they change. The overlay does not close itself: its owner hides and deletes it. GUI thread only.
class CaptureOverlay final : public QWidget
{
    Q_OBJECT

public:
    using Action = CaptureOutcome::Action;

    /// themes  followed while the overlay stands; null for the theme that the settings name, once
    CaptureOverlay(const platform::CapturedDisplay &display, const SettingsConfig &config,
                   const ThemeSource *themes = nullptr, QWidget *parent = nullptr);
    ~CaptureOverlay() override;

    void setConfig(const SettingsConfig &config);
    void setWindowController(std::shared_ptr<platform::IWindowController> controller);
    /// The outcomes that somebody takes; there are no buttons for others, and their keys say so.
    void setOffered(const QSet<Action> &offered);
    /// windows  the top-level ones, top-most first, that a click may take
    /// probe    asked for the elements in them; may be null
    void setDetection(const QList<platform::WindowInfo> &windows, ElementProbe *probe = nullptr);
    /// Whether the frame of the hovered rectangle glides; true at first.
    void setHoverAnimated(bool animated) { m_detection.tracker().setAnimated(animated); }
    /// The selection itself becomes the result: no panels, the release of the button ends it.
    void setPickMode(bool pick);
    void setToolMemory(std::shared_ptr<ToolMemory> memory) { m_drawing.setToolMemory(std::move(memory)); }
    void setLineSearch(LineSearch search) { m_drawing.setLineSearch(std::move(search)); }
    void setTool(ToolType tool) { m_drawing.setTool(tool); }

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
    [[nodiscard]] QRectF selection() const { return m_gesture.selection(); }
    [[nodiscard]] bool hasSelection() const { return !m_gesture.isEmpty(); }
    [[nodiscard]] QRect globalSelectionRect() const;
    [[nodiscard]] OverlayMode mode() const { return m_gesture.mode(); }
    /// What a click takes while nothing is selected; null for nothing.
    [[nodiscard]] QRectF hoverRect() const { return m_detection.tracker().target(); }
    [[nodiscard]] ShapeDocument &document() { return m_drawing.document(); }
    [[nodiscard]] const OverlayPanels &panels() const { return *m_panels; }

    /// Ends what is going on: a text being typed, a shape being drawn, a scrolling capture.
    void settle();
    [[nodiscard]] OverlaySnapshot snapshot() const;
    /// Takes up a stored capture; one of another size lies in the middle. A snapshot without a picture is ignored.
    void loadSnapshot(const OverlaySnapshot &snapshot);

    /// Shows a message for two seconds.
    void showToast(const QString &text) { m_toast.show(text); }

Q_SIGNALS:
    /// The session has come to something. The receiver takes the overlay down.
    void finished(const tavrel::CaptureOutcome &outcome);
    void selectionStarted();
    void historyNavigate(int delta); ///< -1 to the older capture, 1 back towards the live one
    void longCaptureStarted();
    void longCaptureFinished();
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
    void connectParts();
    void setTheme(const Theme &theme);

    // what the pointer does
    void pressLeft(const QPointF &point);
    void pressRight();
    void endSelecting();
    void clickHovered();
    void updateHover(const QPointF &point);
    void updateCursor(const QPointF &point);
    [[nodiscard]] QCursor toolCursor(const QPointF &point);

    // what selection, picture and panels have to know of each other
    /// What a selection may cover: the picture, in overlay coordinates.
    [[nodiscard]] QRectF area() const;
    [[nodiscard]] QRectF inPicture(const QRectF &rect) const { return rect.translated(-m_picture.origin()); }
    [[nodiscard]] bool hasTool() const { return m_drawing.hasTool(); }
    /// Nothing selected and no tool: the pointer is over what a click would take.
    [[nodiscard]] bool isHovering() const { return !hasSelection() && !hasTool(); }
    void showPicture(const OverlayPicture &picture);
    /// The selection is another one: the drawing keeps to it.
    void followSelection();
    /// What was made with the selection goes with it: annotations, a stitched page, the toolbar's place.
    void dropWork();
    /// Brings the panels in step with selection, tool and history, and puts them in their places.
    void layoutPanels();
    void consumeArmedStarts();

    // what is asked for
    void run(OverlayCommand command);
    void runAction(ToolType action);
    void runLongAction(Action action);
    [[nodiscard]] bool handleLongKey(int key);
    void startTextRecognition();
    void finish(Action action);
    void leave() { finish(Action::Leave); }
    void copyColor();
    /// What the picture of an outcome is made from.
    [[nodiscard]] FlattenRequest pictureFor(Action action) const;

    // painting
    void scheduleUpdate();
    [[nodiscard]] OverlayScene scene() const;
    [[nodiscard]] QString sizeText() const;
    [[nodiscard]] QRectF sizeLabel(const QString &text) const;
    [[nodiscard]] bool picksColor() const; ///< the pointer is on a pixel of the picture
    [[nodiscard]] QRectF hintBox() const;
    void rebuildHints();
    /// Keeps the hole of a scrolling capture around what has to be seen.
    void updateLongHole();

    platform::DisplayInfo m_display;
    SettingsConfig m_config;
    Theme m_theme;
    OverlayPicture m_picture;
    qint64 m_livePicture; ///< cache key of the picture that shows the screen of now
    DrawingSession m_drawing;
    Detection m_detection;
    SelectionGesture m_gesture;
    OverlayPanels *m_panels;
    LongCaptureMode *m_long;
    QImage m_page; ///< stitched; stands in for the selection's picture; null for none
    std::shared_ptr<platform::IWindowController> m_windowController;
    QSet<Action> m_offered;
    struct Start
    {
        bool isArmed = false;
        std::function<void()> starter;
    };
    std::array<Start, 2> m_starts; ///< by AutoStart

    QPointF m_pointer;
    bool m_pointerInside = false;
    bool m_pickMode = false;
    QString m_colorFormat;

    Toast m_toast;
    MagnifierPainter m_magnifier;
    HintCard m_hints;
    int m_hintKey = -1;
    PaintedRegions m_painted;
};

} // namespace tavrel::ui
