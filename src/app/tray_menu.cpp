#include "app/tray_menu.h"

#include "settings/settings_config.h"
#include "ui/glyphs.h"
#include "ui/theme.h"

#include <QAction>
#include <QCoreApplication>
#include <QIcon>
#include <QMenu>

#include <array>

namespace tavrel {
namespace {

constexpr int kGlyphSize = 18;
constexpr QColor kGlyphOnDark(236, 236, 236);
constexpr QColor kGlyphOnLight(43, 43, 43);

struct Entry
{
    Command command;
    const char *sourceText;
    const char *glyph;
    HotkeyBinding SettingsConfig::*hotkey = nullptr;
    bool startsGroup = false;
};

constexpr std::array kEntries{
    Entry{Command::Capture, QT_TRANSLATE_NOOP("AppController", "截图"), "capture", &SettingsConfig::captureHotkey},
    Entry{Command::LongCapture, QT_TRANSLATE_NOOP("AppController", "长截图"), "long",
          &SettingsConfig::longCaptureHotkey},
    Entry{Command::Ocr, QT_TRANSLATE_NOOP("AppController", "文字识别"), "ocr", &SettingsConfig::ocrHotkey},
    Entry{Command::Record, QT_TRANSLATE_NOOP("AppController", "录屏"), "record", &SettingsConfig::recordHotkey},
    Entry{Command::Guide, QT_TRANSLATE_NOOP("AppController", "录制指南"), "ed_steps",
          &SettingsConfig::stepRecordHotkey},
    Entry{Command::PinClipboard, QT_TRANSLATE_NOOP("AppController", "贴图剪贴板"), "ed_pin",
          &SettingsConfig::pinClipboardHotkey, true},
    Entry{Command::ClosePins, QT_TRANSLATE_NOOP("AppController", "关闭所有贴图"), "ed_close"},
    Entry{Command::ClearClickThrough, QT_TRANSLATE_NOOP("AppController", "取消贴图点击穿透"), "ed_pick"},
    Entry{Command::History, QT_TRANSLATE_NOOP("AppController", "截图历史…"), "ed_history",
          &SettingsConfig::historyHotkey, true},
    Entry{Command::Edit, QT_TRANSLATE_NOOP("AppController", "图片编辑…"), "ed_edit", &SettingsConfig::editHotkey},
    Entry{Command::OpenRecording, QT_TRANSLATE_NOOP("AppController", "打开录像…"), "ed_video"},
    Entry{Command::Settings, QT_TRANSLATE_NOOP("AppController", "设置…"), "gear", nullptr, true},
    Entry{Command::Account, QT_TRANSLATE_NOOP("AppController", "账号…"), "ed_check"},
    Entry{Command::Welcome, QT_TRANSLATE_NOOP("AppController", "使用指南…"), "ed_link"},
    Entry{Command::Feedback, QT_TRANSLATE_NOOP("AppController", "发送反馈…"), "ed_link"},
    Entry{Command::Updates, QT_TRANSLATE_NOOP("AppController", "检查更新…"), "ed_reset"},
    Entry{Command::Quit, QT_TRANSLATE_NOOP("AppController", "退出 Tavrel"), "", nullptr, true},
};

QString text(const char *source)
{
    return QCoreApplication::translate("AppController", source);
}

QString textOf(const Entry &entry, const TrayState &state)
{
    if (entry.command == Command::Record && state.isRecording)
        return text(QT_TRANSLATE_NOOP("AppController", "停止录屏"));
    if (entry.command == Command::Guide && state.isRecordingGuide)
        return text(QT_TRANSLATE_NOOP("AppController", "停止录制指南（%1 步）")).arg(state.guideSteps);
    return text(entry.sourceText);
}

/// A disabled entry has its glyph in the colour of its text.
QIcon menuIcon(const char *glyph, const QColor &color, const ui::Theme &theme)
{
    QIcon icon = ui::glyphIcon(QString::fromLatin1(glyph), color, kGlyphSize);
    const QIcon dimmed = ui::glyphIcon(QString::fromLatin1(glyph), theme.studioDisabledText(), kGlyphSize);
    for (const qreal ratio : {1.0, 2.0})
        icon.addPixmap(dimmed.pixmap(QSize(kGlyphSize, kGlyphSize), ratio), QIcon::Disabled);
    return icon;
}

/// A menu that is drawn by the program itself looks like its other menus; where the desktop draws it, this is unused.
QString menuStyle(const ui::Theme &theme)
{
    return QStringLiteral("QMenu { background: %1; border: 1px solid %2; padding: 6px 0px; icon-size: 18px; }"
                          "QMenu::item { color: %3; padding: 6px 22px 6px 12px; background: transparent; }"
                          "QMenu::item:selected { background: %4; }"
                          "QMenu::item:disabled { color: %5; background: transparent; }"
                          "QMenu::icon { padding-left: 12px; }"
                          "QMenu::separator { height: 1px; background: %6; margin: 5px 12px; }"
                          "QToolTip { color: %3; background: %1; border: 1px solid %2; padding: 4px 6px; }")
        .arg(ui::css(theme.cardSurface()), ui::css(theme.cardBorder()), ui::css(theme.primaryText()),
             ui::css(theme.hoverFill()), ui::css(theme.studioDisabledText()), ui::css(theme.separator()));
}

} // namespace

TrayMenu::TrayMenu(Services services, QObject *parent)
    : QObject(parent),
      m_services(std::move(services)),
      m_menu(std::make_unique<QMenu>())
{
    m_menu->setToolTipsVisible(true);
    addEntries();
    connect(m_menu.get(), &QMenu::aboutToShow, this, &TrayMenu::refresh);

    m_icon.setIcon(ui::appIcon());
    m_icon.setToolTip(QStringLiteral("Tavrel"));
    m_icon.setContextMenu(m_menu.get());
    refresh();
    m_icon.show();
}

TrayMenu::~TrayMenu() = default;

void TrayMenu::addEntries()
{
    m_guides = new GuideMenus(m_services.guides, m_menu.get());
    for (const Entry &entry : kEntries) {
        if (entry.startsGroup) {
            if (entry.command == Command::Settings)
                m_menu->addMenu(m_guides->recentMenu());
            m_menu->addSeparator();
        }
        const Command command = entry.command;
        QAction *action = m_menu->addAction(QString(), this, [this, command] { m_services.commands.run(command); });
        action->setShortcutVisibleInContextMenu(true);
        m_actions.insert(command, action);
        if (command == Command::Guide)
            m_menu->addMenu(m_guides->scopeMenu());
    }
}

void TrayMenu::refresh()
{
    const ui::Theme theme = ui::themeFor(QStringLiteral("system"));
    const QColor color = theme.dark ? kGlyphOnDark : kGlyphOnLight;
    const SettingsConfig &settings = m_services.settings();
    const TrayState state = m_services.state ? m_services.state() : TrayState();
    m_menu->setStyleSheet(menuStyle(theme));
    for (const Entry &entry : kEntries) {
        QAction *action = m_actions.value(entry.command);
        action->setText(textOf(entry, state));
        if (*entry.glyph != '\0')
            action->setIcon(menuIcon(entry.glyph, color, theme));
        if (entry.hotkey) {
            const HotkeyBinding &binding = settings.*entry.hotkey;
            action->setShortcut(binding.isActive() ? binding.combo.toKeySequence() : QKeySequence());
        }
        if (m_services.commands.has(entry.command)) {
            action->setEnabled(true);
            action->setToolTip(QString());
        } else {
            markAsUnavailable(action);
        }
    }
    m_actions.value(Command::Updates)->setVisible(state.hasUpdates);
    m_guides->scopeMenu()->setTitle(text(QT_TRANSLATE_NOOP("AppController", "指南录制范围")));
    m_guides->scopeMenu()->menuAction()->setVisible(!state.isRecordingGuide);
    m_guides->recentMenu()->setTitle(text(QT_TRANSLATE_NOOP("AppController", "最近的指南")));
    m_guides->recentMenu()->setIcon(menuIcon("ed_folder", color, theme));
}

bool TrayMenu::showNotice(const QString &title, const QString &text, IUserNotices::Kind kind,
                          std::chrono::milliseconds duration)
{
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return false;
    m_icon.showMessage(title, text,
                       kind == IUserNotices::Kind::Warning ? QSystemTrayIcon::Warning : QSystemTrayIcon::Information,
                       static_cast<int>(duration.count()));
    return true;
}

} // namespace tavrel
