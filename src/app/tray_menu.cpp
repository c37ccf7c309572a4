#include "app/tray_menu.h"

#include "settings/settings_config.h"
#include "ui/glyphs.h"
#include "ui/theme.h"

#include <QAction>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMenu>

namespace tavrel {
namespace {

constexpr int kGlyphSize = 18;

QKeySequence shownShortcut(const HotkeyBinding &binding)
{
    return binding.isActive() ? binding.combo.toKeySequence() : QKeySequence();
}

} // namespace

TrayMenu::TrayMenu(std::function<const SettingsConfig &()> settings, ShowWarning showWarning, QObject *parent)
    : QObject(parent),
      m_settings(std::move(settings)),
      m_showWarning(std::move(showWarning)),
      m_menu(std::make_unique<QMenu>())
{
    m_capture = m_menu->addAction(QString(), this, &TrayMenu::captureRequested);
    m_capture->setShortcutVisibleInContextMenu(true);
    m_menu->addSeparator();
    m_quit = m_menu->addAction(QString(), this, &TrayMenu::quitRequested);
    connect(m_menu.get(), &QMenu::aboutToShow, this, &TrayMenu::refresh);

    m_icon.setIcon(ui::appIcon());
    m_icon.setToolTip(QStringLiteral("Tavrel"));
    m_icon.setContextMenu(m_menu.get());
    refresh();
    m_icon.show();
}

TrayMenu::~TrayMenu() = default;

void TrayMenu::refresh()
{
    const QColor color = ui::themeFor(QStringLiteral("system")).dark ? QColor(236, 236, 236) : QColor(43, 43, 43);
    m_capture->setText(QCoreApplication::translate("AppController", "截图"));
    m_capture->setIcon(ui::glyphIcon(QStringLiteral("capture"), color, kGlyphSize));
    m_capture->setShortcut(shownShortcut(m_settings().captureHotkey));
    m_quit->setText(QCoreApplication::translate("AppController", "退出 Tavrel"));
}

void TrayMenu::show(const QString &title, const QString &text, Kind kind, std::chrono::milliseconds duration)
{
    const auto line = QStringLiteral("%1：%2").arg(title, text);
    if (kind == Kind::Warning)
        qWarning().noquote() << line;
    else
        qInfo().noquote() << line;
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        if (kind == Kind::Warning)
            m_showWarning(title, text);
        return;
    }
    m_icon.showMessage(title, text, kind == Kind::Warning ? QSystemTrayIcon::Warning : QSystemTrayIcon::Information,
                       static_cast<int>(duration.count()));
}

} // namespace tavrel
