#pragma once

#include "app/guide_menus.h"
#include "app/user_notices.h"
#include "process/commands.h"

#include <QObject>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

class QAction;
class QMenu;

namespace tavrel {

struct HotkeyBinding;
struct SettingsConfig;

/// What the tray shows of the state of the program.
struct TrayState
{
    bool isRecording = false;
    bool isRecordingGuide = false;
    int guideSteps = 0;
    bool hasUpdates = false; ///< whether there is a way to look for newer versions
};

/// The icon in the notification area with its menu; only the menu acts.
///
/// Texts, icons and shortcuts are set again whenever the menu opens, so that language, theme, hotkeys and running
/// recordings need no further signals. An entry whose command has no operation stands disabled and tells why.
class TrayMenu final : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        std::function<const SettingsConfig &()> settings;
        const Commands &commands;
        std::function<TrayState()> state = {}; ///< empty: nothing runs
        GuideMenus::Services guides = {};
    };

    explicit TrayMenu(Services services, QObject *parent = nullptr);
    ~TrayMenu() override;

    void refresh();
    /// Shows a notice beside the icon. False when there is no notification area.
    bool showNotice(const QString &title, const QString &text, IUserNotices::Kind kind,
                    std::chrono::milliseconds duration);

    [[nodiscard]] QMenu *menu() const { return m_menu.get(); }
    /// The entry of a command; null when the menu has none.
    [[nodiscard]] QAction *action(Command command) const { return m_actions.value(command); }

private:
    void addEntries();

    Services m_services;
    std::unique_ptr<QMenu> m_menu;
    QSystemTrayIcon m_icon;
    QMap<Command, QAction *> m_actions;
    GuideMenus *m_guides = nullptr; ///< owned by the menu
};

} // namespace tavrel
