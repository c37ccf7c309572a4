#pragma once

#include "account/account_service.h"
#include "app/capture_flow.h"
#include "app/commands.h"
#include "app/desktop_notices.h"
#include "app/history_keeper.h"
#include "app/hotkey_table.h"
#include "app/message_board.h"
#include "app/result_actions.h"
#include "app/tray_menu.h"
#include "cloud/cloud_service.h"
#include "net/feedback_service.h"
#include "overlay/element_probe.h"
#include "platform/auto_start.h"
#include "platform/element_detector.h"
#include "platform/feed_updater.h"
#include "platform/frame_source.h"
#include "platform/global_hotkey.h"
#include "platform/input_monitor.h"
#include "platform/permissions.h"
#include "platform/screen_capturer.h"
#include "platform/screen_recorder.h"
#include "platform/window_controller.h"
#include "ui/dialogs.h"

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>

namespace tavrel {

class SettingsStore;

/// Owns the running program: services, roles and windows, and how they come up and go down. Each role is a class of
/// its own; this one only joins them. GUI thread only.
class AppController final : public QObject
{
    Q_OBJECT

public:
    /// What can be put in place of the system's services. Everything left empty is filled with the system's own.
    struct Deps
    {
        std::unique_ptr<platform::IScreenCapturer> screenCapturer;
        std::unique_ptr<platform::IGlobalHotkey> globalHotkey;
        std::shared_ptr<platform::IWindowController> windowController;
        std::shared_ptr<ui::dialogs::IFileDialogHost> fileDialogHost; ///< empty means QFileDialog
        std::shared_ptr<platform::IAutoStart> autoStart;
        std::shared_ptr<platform::IElementDetector> elementDetector;
        std::shared_ptr<platform::IPermissions> permissions;
        std::unique_ptr<platform::IUpdater> updater;
        std::function<void(const platform::UpdateReport &)> showUpdate; ///< empty means a message of the program
        std::unique_ptr<account::IAccountService> accountService;
        std::unique_ptr<cloud::ICloudService> cloudService;
        std::shared_ptr<feedback::IFeedbackService> feedbackApi;
        std::function<void(const QUrl &)> openUrl; ///< replaces the system browser
        std::function<QList<QImage>(const QString &path, bool isVideo)> frameExtractor;
        bool enableBackground = true; ///< false: no tray, no periodic timers, no welcome check
        QString historyRoot;          ///< empty means the application's data folder + "/history"
        bool showPermissionHelp = true;

        struct RecordOverrides
        {
            std::shared_ptr<platform::IScreenRecorder> recorder;
            std::shared_ptr<platform::IInputMonitor> inputMonitor;
            QString recordsDir;
            std::function<QString(const QString &suggested, const QString &suffix)> saveTarget;
        } record;

        struct StepOverrides
        {
            std::shared_ptr<platform::IFrameSource> frameSource;
            std::shared_ptr<platform::IInputMonitor> inputMonitor;
            QString stepsDir;
        } steps;

        std::shared_ptr<platform::INotifier> notifier; ///< the desktop's messages; may stay empty
        std::shared_ptr<IUserNotices> notices;         ///< replaces all messages
        std::shared_ptr<IHistoryKeeper> history;
        std::shared_ptr<IClipboard> clipboard;
        std::function<QPoint()> cursorPosition;
    };

    AppController(SettingsStore &settings, Deps deps, QObject *parent = nullptr);
    ~AppController() override;

    /// Builds the tray and registers the hotkeys; called once.
    void start();

    void startCapture();
    /// Carries out a command that came from outside, or tells that this version does not have it.
    void request(Command command);
    /// Recordings cannot be opened by this version: says so.
    void openRecording(const QString &path);
    /// Tells that the program runs and how to use it, since it has no window of its own. Failed hotkeys are tried
    /// once more before.
    void showStatus();
    void quit();
    void retranslateUi();

    [[nodiscard]] QString lastSavedPath() const { return m_results.lastSavedPath(); }
    [[nodiscard]] const QMap<QString, QString> &hotkeyErrors() const { return m_hotkeys.errors(); }
    [[nodiscard]] QString captureHotkeyError() const { return hotkeyErrors().value(QStringLiteral("capture")); }
    [[nodiscard]] QString pinHotkeyError() const { return hotkeyErrors().value(QStringLiteral("pin")); }
    [[nodiscard]] CaptureFlow &captureFlow() { return m_flow; }

Q_SIGNALS:
    void captureSessionClosed();
    void permissionRequired();

private:
    void applySettings();
    void storePalette();
    [[nodiscard]] Deps withMessages(Deps deps);
    void openPage(const QUrl &page);
    void setCommands();
    void startTray();
    void registerHotkeys();
    /// The rows that failed, each with its combination: what the user has been told about.
    [[nodiscard]] QStringList failedHotkeys() const;
    void onAccessRefused();
    void updateCanShutdown();
    /// A warning that has no notification area to appear in.
    void showWarning(const QString &title, const QString &text);
    void scheduleRelease();
    void release(int activationsBefore, bool wasApplicationActive);
    void activate(QWindow *window);

    SettingsStore &m_settings;
    Deps m_deps;
    NoticeRelay m_notices;
    ui::ElementProbe m_probe;
    CaptureFlow m_flow;
    ResultActions m_results;
    Commands m_commands;
    HotkeyTable m_hotkeys;
    MessageBoard m_messages;
    std::unique_ptr<TrayMenu> m_tray;
    std::unique_ptr<DesktopNotices> m_desktopNotices;
    QStringList m_reportedHotkeys;
    QTimer m_hotkeyRetry;
    int m_activations = 0;
};

} // namespace tavrel
