#pragma once

#include "app/flattener.h"
#include "app/history_walk.h"
#include "app/long_frame_pump.h"
#include "capture/capture_outcome.h"
#include "output/name_template.h"
#include "platform/element_detector.h"
#include "platform/screen_capturer.h"

#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>

#include <functional>
#include <memory>
#include <utility>

namespace tavrel {

class IUserNotices;
class SettingsStore;
class ToolMemory;

namespace platform {
class IUpdater;
class IWindowController;
} // namespace platform
namespace ui {
class CaptureOverlay;
class ElementProbe;
class ThemeSource;
} // namespace ui

/// One capture after the other: from the request over the grab to the overlay, and from its result back to idle.
///
/// A session is active from the request until the overlay is taken down. What it came to leaves after that, through the
/// receiver of its action; an overlay offers the actions that have one. GUI thread only.
class CaptureFlow final : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        platform::IScreenCapturer &capturer;
        std::shared_ptr<platform::IWindowController> windows;
        std::shared_ptr<platform::IElementDetector> detector; ///< may be null
        SettingsStore &settings;
        IHistoryKeeper &history;
        IUserNotices &notices;
        std::function<QPoint()> cursorPosition;  ///< global logical coordinates
        ui::ElementProbe *probe = nullptr;       ///< asked for elements while the settings say so; may be null
        const ui::ThemeSource *themes = nullptr; ///< null for the theme that the settings name when a capture begins
    };

    /// A picture that a session came to.
    struct Finished
    {
        QImage image;
        FilenameContext context;
        QRect rectangle; ///< of the selection, global logical coordinates
        QString record;  ///< uuid in the history; empty when it is not kept there
    };
    using Receiver = std::function<void(const Finished &finished)>;

    explicit CaptureFlow(Services services, QObject *parent = nullptr);
    ~CaptureFlow() override;

    /// Who takes the pictures of an action, called after the session. To be set before the first capture.
    void setReceiver(CaptureOutcome::Action action, Receiver receiver);

    /// Does nothing while a session is active.
    void startCapture();
    /// A scrolling capture: over the selection there is, else as soon as there is one.
    void startLongCapture();
    /// Takes everything of the session down; safe to call at any time.
    void closeSession();
    void applySettings();

    /// Whether pictures of sessions that have ended are still being made.
    [[nodiscard]] bool isFinishing() const { return m_flattener.isBusy(); }
    /// For the end of the program: waits for them and hands them on. False when one was not done in time.
    [[nodiscard]] bool finishPictures(const QDeadlineTimer &deadline);
    [[nodiscard]] bool isActive() const { return m_grab || !m_overlays.isEmpty(); }
    [[nodiscard]] ui::CaptureOverlay *overlay() const;
    /// Whether this application was the active one when the overlay of the session that ended came up. True for a
    /// session without an overlay, and from the second call on.
    [[nodiscard]] bool takeApplicationActive() { return std::exchange(m_wasApplicationActive, true); }

Q_SIGNALS:
    void sessionStarted();
    /// The last overlay of a session is gone.
    void sessionClosed();
    /// The session has ended, with or without an overlay: the program may release its activation.
    void idleReached();
    void accessRefused();
    void textReady(const QString &text); ///< for the clipboard
    void finishingChanged();             ///< isFinishing() is another one
    /// A picture takes longer than half a second, or no longer does.
    void lastingChanged(bool lasting);

private:
    void onCaptured(const platform::CaptureResult &result);
    void openOverlay(const platform::CapturedDisplay &display);
    void connectResults(ui::CaptureOverlay *overlay);
    void finish(const CaptureOutcome &outcome);
    /// A picture is done: into the history, and to whoever takes it.
    void hand(const CaptureOutcome &outcome, const QString &walked, quint64 number, const QImage &picture);
    void connectSettings(ui::CaptureOverlay *overlay);
    void connectLong(ui::CaptureOverlay *overlay);
    void onOverlayGone(const QObject *gone);
    void logFirstPaint(ui::CaptureOverlay *overlay);
    void pass(CaptureOutcome::Action action, const Finished &finished);
    void passHeld();
    /// Hands a result to the history, as a change of the record that was walked to, if there was one.
    QString remember(const CaptureOutcome &outcome, const QString &walked, const QImage &picture);

    Services m_services;
    HistoryWalk m_walk;
    LongFramePump m_pump;
    Flattener m_flattener;
    QList<std::function<void()>> m_held; ///< results that wait for the session of now to end
    quint64 m_outcomes = 0;              ///< counts them
    quint64 m_clipboardOwner = 0;        ///< the latest one whose result went to the clipboard
    QElapsedTimer m_timer;
    std::unique_ptr<QObject> m_grab; ///< one on its way; it answers nobody when this goes
    QList<platform::WindowInfo> m_windows;
    QList<QPointer<ui::CaptureOverlay>> m_overlays;
    QMap<CaptureOutcome::Action, Receiver> m_receivers;
    std::shared_ptr<ToolMemory> m_toolMemory; ///< of all sessions
    bool m_longPending = false;               ///< the next overlay begins a scrolling capture
    bool m_wasApplicationActive = true;
};

/// Logs an application-modal widget that is open: such a box blocks the overlay and has no place in this program.
void warnAboutModalWidget();

} // namespace tavrel
