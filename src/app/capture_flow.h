#pragma once

#include "app/history_walk.h"
#include "app/long_frame_pump.h"
#include "output/name_template.h"
#include "platform/element_detector.h"
#include "platform/screen_capturer.h"
#include "record/record_request.h"

#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QPointer>

#include <functional>
#include <memory>
#include <utility>

namespace tavrel {

class IHistoryKeeper;
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
} // namespace ui

/// One capture after the other: from the request over the grab to the overlay, and from its result back to idle.
///
/// A session is active from the request until the overlay is taken down. Results leave through signals after the
/// session has been closed; the record of the result has been handed to the history before that, because it reads
/// the overlay. GUI thread only.
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
        std::function<QPoint()> cursorPosition; ///< global logical coordinates
        ui::ElementProbe *probe = nullptr;      ///< asked for elements while the settings say so; may be null
    };

    explicit CaptureFlow(Services services, QObject *parent = nullptr);
    ~CaptureFlow() override;

    /// Does nothing while a session is active.
    void startCapture();
    /// A scrolling capture: over the selection there is, else as soon as there is one.
    void startLongCapture();
    /// Takes everything of the session down; safe to call at any time.
    void closeSession();
    void applySettings();

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
    void copyReady(const QImage &image, const tavrel::FilenameContext &context);
    void textReady(const QString &text); ///< for the clipboard
    void saveReady(const QImage &image, const tavrel::FilenameContext &context, const QString &historyUuid);

private:
    void onCaptured(const platform::CaptureResult &result);
    void openOverlay(const platform::CapturedDisplay &display);
    void connectResults(ui::CaptureOverlay *overlay);
    void connectSettings(ui::CaptureOverlay *overlay);
    void connectLong(ui::CaptureOverlay *overlay);
    void takeRecordPrefs();
    void onOverlayGone(const QObject *gone);
    void logFirstPaint(ui::CaptureOverlay *overlay);
    void navigateHistory(ui::CaptureOverlay *overlay, int delta);
    [[nodiscard]] FilenameContext contextOf(const ui::CaptureOverlay *overlay) const;
    QString remember(ui::CaptureOverlay *overlay, const QString &source, const QImage &rendered);

    Services m_services;
    HistoryWalk m_walk;
    LongFramePump m_pump;
    QElapsedTimer m_timer;
    std::unique_ptr<QObject> m_grab; ///< one on its way; it answers nobody when this goes
    QList<platform::WindowInfo> m_windows;
    QList<QPointer<ui::CaptureOverlay>> m_overlays;
    record::RecordPrefs m_recordPrefs;
    std::shared_ptr<ToolMemory> m_toolMemory; ///< of all sessions
    bool m_longPending = false;               ///< the next overlay begins a scrolling capture
    bool m_wasApplicationActive = true;
};

/// Logs an application-modal widget that is open: such a box blocks the overlay and has no place in this program.
void warnAboutModalWidget();

} // namespace tavrel
