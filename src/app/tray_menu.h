#pragma once

#include "app/user_notices.h"

#include <QKeySequence>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

class QAction;
class QMenu;

namespace tavrel {

struct SettingsConfig;

/// The icon in the notification area with its menu, and the messages that appear beside it.
///
/// Texts, shortcuts and glyph colours are set again whenever the menu opens, so that language, theme and hotkeys
/// need no further signals. Without a notification area messages go to the log, and warnings to somebody else.
class TrayMenu final : public QObject, public IUserNotices
{
    Q_OBJECT

public:
    using ShowWarning = std::function<void(const QString &title, const QString &text)>;

    /// showWarning  shows a warning where there is no notification area
    TrayMenu(std::function<const SettingsConfig &()> settings, ShowWarning showWarning, QObject *parent = nullptr);
    ~TrayMenu() override;

    void refresh();
    void show(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration) override;

    [[nodiscard]] QMenu *menu() const { return m_menu.get(); }

Q_SIGNALS:
    void captureRequested();
    void quitRequested();

private:
    std::function<const SettingsConfig &()> m_settings;
    ShowWarning m_showWarning;
    std::unique_ptr<QMenu> m_menu;
    QSystemTrayIcon m_icon;
    QAction *m_capture = nullptr;
    QAction *m_quit = nullptr;
};

} // namespace tavrel
