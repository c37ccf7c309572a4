#pragma once

#include "app/busy_note.h"
#include "app/capture_flow.h"
#include "app/desktop_notices.h"
#include "app/hotkey_watch.h"
#include "app/message_board.h"
#include "app/result_actions.h"
#include "app/tray_menu.h"
#include "capture/history_keeper.h"
#include "overlay/element_probe.h"
#include "platform/services.h"
#include "platform/updater.h"
#include "process/commands.h"
#include "ui/theme_source.h"

#include <QObject>

#include <memory>

class QUrl;
class QWindow;

namespace tavrel {

class SettingsStore;
struct UpdateReport;

/// Owns the running program: services, roles and windows, and how they come up and go down. Each role is a class of
/// its own; this one only joins them. GUI thread only.
class AppController final : public QObject
{
    Q_OBJECT

public:
    /// What can be put in place of the program's own roles. Everything left empty is the program's own.
    struct Roles
    {
        std::unique_ptr<platform::IUpdater> updater{};
        std::shared_ptr<IUserNotices> notices{}; ///< gets all messages
        std::shared_ptr<IHistoryKeeper> history{};
        std::shared_ptr<IClipboard> clipboard{};
    };

    /// services  what is empty there is the system's
    AppController(SettingsStore &settings, platform::Services services, Roles roles, QObject *parent = nullptr);
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

    /// Why captures cannot be begun by their hotkey; empty when they can.
    [[nodiscard]] QString captureHotkeyError() const
    {
        return m_hotkeys.table().errors().value(QStringLiteral("capture"));
    }
    [[nodiscard]] CaptureFlow &captureFlow() { return m_flow; }

private:
    void applySettings();
    void storePalette();
    void showUpdate(const UpdateReport &report);
    void openPage(const QUrl &page);
    [[nodiscard]] std::unique_ptr<platform::IUpdater> makeUpdater();
    void setCommands();
    void startTray();
    void onAccessRefused();
    void updateCanShutdown();
    /// A warning that has no notification area to appear in.
    void showWarning(const QString &title, const QString &text);
    void scheduleRelease();
    void release(int activationsBefore, bool wasApplicationActive);
    void activate(QWindow *window);

    SettingsStore &m_settings;
    const platform::Services m_services;
    ui::ThemeSource m_themes;
    const std::shared_ptr<IHistoryKeeper> m_history;
    const std::shared_ptr<IUserNotices> m_givenNotices; ///< may be null
    NoticeRelay m_notices;
    ui::ElementProbe m_probe;
    BusyNote m_busyNote;
    CaptureFlow m_flow;
    ResultActions m_results;
    Commands m_commands;
    HotkeyWatch m_hotkeys;
    MessageBoard m_messages;
    const std::unique_ptr<platform::IUpdater> m_updater;
    std::unique_ptr<TrayMenu> m_tray;
    std::unique_ptr<DesktopNotices> m_desktopNotices;
    int m_activations = 0;
};

} // namespace tavrel
