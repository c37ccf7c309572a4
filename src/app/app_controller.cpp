#include "app/app_controller.h"

#include "app/feed_updater.h"
#include "app/update_messages.h"
#include "app/update_source.h"
#include "overlay/capture_overlay.h"
#include "process/hotkey_table.h"
#include "settings/settings_store.h"
#include "ui/color_library.h"
#include "ui/dialog_services.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QDir>
#include <QLoggingCategory>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <algorithm>

namespace tavrel {
namespace {

using namespace std::chrono_literals;

constexpr auto kReleaseDelay = 150ms;
constexpr auto kFlushTime = 3000ms;
constexpr auto kSaveShare = 1000ms; ///< of that, for the files of pictures that come at the last moment

} // namespace

AppController::AppController(SettingsStore &settings, platform::Services services, Roles roles, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_services(platform::withSystemServices(std::move(services))),
      m_themes(settings.config().theme),
      m_history(roles.history ? std::move(roles.history) : std::make_shared<NoHistory>()),
      m_givenNotices(std::move(roles.notices)),
      m_probe(m_services.elementDetector),
      m_busyNote({m_services.windowController, [this] { return m_themes.current(); }, m_services.cursorPosition}),
      m_flow({*m_services.screenCapturer, m_services.windowController, m_services.elementDetector, settings, *m_history,
              m_notices, m_services.cursorPosition, &m_probe, &m_themes}),
      m_results(settings, m_notices, std::move(roles.clipboard)),
      m_hotkeys(*m_services.globalHotkey, m_commands, settings, m_notices),
      m_messages({m_services.windowController, [this](QWindow *window) { activate(window); }, m_themes}),
      m_updater(roles.updater ? std::move(roles.updater) : makeUpdater())
{
    m_notices.setReceiver(m_givenNotices.get());
    ui::dialogs::setWindowController(m_services.windowController);
    ui::dialogs::setThemeSource(&m_themes);
    ui::dialogs::setHotkeySuspender([this](bool suspended) { m_services.globalHotkey->setSuspended(suspended); });

    auto &palette = ui::ColorLibrary::instance();
    palette.setColors(settings.config().paletteColors);
    connect(&palette, &ui::ColorLibrary::changed, this, &AppController::storePalette);

    connect(m_updater.get(), &platform::IUpdater::shutdownRequested, this, &AppController::quit, Qt::QueuedConnection);
    connect(&m_hotkeys, &HotkeyWatch::refreshed, this, [this] {
        if (m_tray)
            m_tray->refresh();
    });
    setCommands();
    connect(&m_flow, &CaptureFlow::accessRefused, this, &AppController::onAccessRefused);
    connect(&m_flow, &CaptureFlow::sessionStarted, this, [this] {
        m_busyNote.hide(); // nothing of the program stays over an overlay
        updateCanShutdown();
    });
    connect(&m_flow, &CaptureFlow::idleReached, this, [this] {
        updateCanShutdown();
        scheduleRelease();
    });
    connect(&m_flow, &CaptureFlow::finishingChanged, this, &AppController::updateCanShutdown);
    connect(&m_flow, &CaptureFlow::lastingChanged, this, [this](bool lasting) {
        if (lasting && !m_flow.isActive()) // nothing of the program comes up over an overlay
            m_busyNote.show(QCoreApplication::translate("AppController", "正在生成图片…"));
        else
            m_busyNote.hide();
    });
    connect(&m_flow, &CaptureFlow::textReady, &m_results, &ResultActions::copyText);
    m_flow.setReceiver(CaptureOutcome::Action::Copy, [this](const CaptureFlow::Finished &finished) {
        m_results.copyImage(finished.image, finished.context);
    });
    m_flow.setReceiver(CaptureOutcome::Action::Save, [this](const CaptureFlow::Finished &finished) {
        m_results.saveImage(finished.image, finished.context, false, nullptr,
                            [this, uuid = finished.record](const QString &path) {
                                if (!uuid.isEmpty())
                                    m_history->setSavedPath(uuid, path);
                            });
    });
    connect(&m_settings, &SettingsStore::changed, this, &AppController::applySettings);
}

AppController::~AppController()
{
    m_flow.disconnect(this);
    ui::ColorLibrary::instance().disconnect(this);
    m_settings.disconnect(this); // what the last saves change registers nothing anew
    m_flow.closeSession();
    m_services.globalHotkey->unregisterAll();
    ui::dialogs::setHotkeySuspender({});
    ui::dialogs::setWindowController(nullptr);
    ui::dialogs::setThemeSource(nullptr);
    m_results.beginEnd();
    // One deadline for all: a new start waits no longer than that for this one to go.
    const QDeadlineTimer deadline(kFlushTime);
    if (!m_flow.finishPictures(QDeadlineTimer(kFlushTime - kSaveShare)))
        qWarning().noquote() << QStringLiteral("退出时仍有截图没有生成");
    if (!m_results.finish(deadline))
        qWarning().noquote() << QStringLiteral("退出时仍有截图没有写完");
    m_history->finish(deadline);
    m_notices.setReceiver(nullptr);
}

void AppController::start()
{
    startTray();
    m_hotkeys.refresh();
    qInfo().noquote() << QStringLiteral("就绪，等待快捷键");
}

std::unique_ptr<platform::IUpdater> AppController::makeUpdater()
{
    FeedUpdater::Options options;
    options.config = updateSource();
    options.buildNumber = buildNumber();
    options.present = [this](const UpdateReport &report) { showUpdate(report); };
    options.lookUp = m_services.lookUpHost;
    return std::make_unique<FeedUpdater>(std::move(options));
}

void AppController::showUpdate(const UpdateReport &report)
{
    if (report.isAsked)
        m_messages.show(updateMessage(report, [this](const QUrl &page) { openPage(page); }));
    else // a window would take the keyboard from whoever is typing
        m_notices.show(updateMessage(report, {}).title,
                       QCoreApplication::translate("AppController", "在托盘菜单里选择“检查更新…”查看内容。"),
                       IUserNotices::Kind::Information, 8000ms);
}

void AppController::openPage(const QUrl &page)
{
    if (QDesktopServices::openUrl(page))
        return;
    m_messages.show({.topic = QStringLiteral("browser"),
                     .icon = ui::dialogs::Icon::Warning,
                     .title = QCoreApplication::translate("AppController", "无法打开浏览器"),
                     .text = QCoreApplication::translate("AppController", "请自行打开这个地址：%1")
                                 .arg(page.toString(QUrl::FullyEncoded))});
}

void AppController::setCommands()
{
    m_commands.set(Command::Capture, [this] { startCapture(); });
    m_commands.set(Command::LongCapture, [this] { m_flow.startLongCapture(); });
    m_commands.set(Command::Quit, [this] { quit(); });
    if (m_updater->isAvailable())
        m_commands.set(Command::Updates, [this] { m_updater->checkNow(); });
}

void AppController::startTray()
{
    const auto detector = m_services.elementDetector;
    m_tray = std::make_unique<TrayMenu>(TrayMenu::Services{
        .settings = [this]() -> const SettingsConfig & { return m_settings.config(); },
        .commands = m_commands,
        .state = [this] { return TrayState{.hasUpdates = m_updater->isAvailable()}; },
        .guides = {.windows = [detector] { return detector->topLevelWindows(); },
                   .applicationIcon = [detector](qint64 process,
                                                 int size) { return detector->applicationIcon(process, size); }},
    });
    m_desktopNotices = std::make_unique<DesktopNotices>(DesktopNotices::Ways{
        .notifier = m_services.notifier,
        .showBesideIcon =
            [this](const QString &title, const QString &text, IUserNotices::Kind kind,
                   std::chrono::milliseconds duration) { return m_tray->showNotice(title, text, kind, duration); },
        .showMessage = [this](const QString &title, const QString &text) { showWarning(title, text); },
    });
    if (!m_givenNotices)
        m_notices.setReceiver(m_desktopNotices.get());
}

void AppController::request(Command command)
{
    if (m_commands.has(command)) {
        m_commands.run(command);
        return;
    }
    const auto &rows = HotkeyTable::rows();
    const auto row =
        std::find_if(rows.cbegin(), rows.cend(), [command](const auto &known) { return known.command == command; });
    if (row == rows.cend()) {
        showStatus();
        return;
    }
    m_messages.show({.topic = QStringLiteral("command ") + commandWord(command),
                     .title = HotkeyTable::label(*row),
                     .text = QCoreApplication::translate("AppController", "此版本还没有这项功能。")});
}

void AppController::startCapture()
{
    m_flow.startCapture();
}

void AppController::applySettings()
{
    m_themes.setSetting(m_settings.config().theme);
    ui::ColorLibrary::instance().setColors(m_settings.config().paletteColors);
    m_hotkeys.refresh();
    m_flow.applySettings();
}

void AppController::storePalette()
{
    SettingsConfig config = m_settings.config();
    config.paletteColors = ui::ColorLibrary::instance().colors();
    m_settings.update(config);
}

void AppController::onAccessRefused()
{
    const QString text =
        QCoreApplication::translate("AppController", "Tavrel 需要「屏幕录制」权限才能截图。") + QStringLiteral("\n\n") +
        QCoreApplication::translate("AppController",
                                    "请在 系统设置 → 隐私与安全性 → 屏幕录制与系统音频录制 中勾选 Tavrel");
    m_messages.show({.topic = QStringLiteral("access"),
                     .icon = ui::dialogs::Icon::Warning,
                     .title = QCoreApplication::translate("AppController", "需要屏幕录制权限"),
                     .text = text,
                     .okText = QCoreApplication::translate("AppController", "打开系统设置"),
                     .cancelText = QCoreApplication::translate("AppController", "稍后"),
                     .answer = [this](bool open) {
                         if (open)
                             m_services.permissions->openSystemSettings(platform::MediaKind::Screen);
                     }});
}

void AppController::updateCanShutdown()
{
    m_updater->setCanShutdown(!m_flow.isActive() && !m_flow.isFinishing());
}

void AppController::showWarning(const QString &title, const QString &text)
{
    // Over an overlay nothing of the program may appear, nor take the keyboard from it.
    if (ui::CaptureOverlay *overlay = m_flow.overlay())
        overlay->showToast(text);
    else
        m_messages.show({.topic = title, .icon = ui::dialogs::Icon::Warning, .title = title, .text = text});
}

void AppController::openRecording(const QString &path)
{
    const QString text = QCoreApplication::translate("AppController", "此版本还不能打开录制文件。") + u'\n' +
                         QDir::toNativeSeparators(path);
    m_messages.show({.topic = QStringLiteral("recording ") + path,
                     .icon = ui::dialogs::Icon::Warning,
                     .title = QCoreApplication::translate("AppController", "无法打开录像"),
                     .text = text});
}

void AppController::showStatus()
{
    m_hotkeys.refresh();
    const HotkeyBinding &capture = m_settings.config().captureHotkey;
    QStringList lines;
    if (capture.isActive() && captureHotkeyError().isEmpty())
        lines.append(
            QCoreApplication::translate("AppController", "按 %1 开始截图。").arg(capture.combo.toDisplayText()));
    else
        lines.append(
            QCoreApplication::translate("AppController", "截图快捷键没有生效，可以用命令 tavrel --capture 截图。"));
    const QString errors = m_hotkeys.table().errorLines();
    if (!errors.isEmpty())
        lines.append(errors);
    m_messages.show({.topic = QStringLiteral("status"),
                     .title = QCoreApplication::translate("AppController", "Tavrel 正在运行"),
                     .text = lines.join(u'\n')});
}

void AppController::quit()
{
    m_flow.closeSession();
    QCoreApplication::quit();
}

void AppController::retranslateUi()
{
    m_hotkeys.refresh(); // the words of a conflict are in the language of the moment
}

void AppController::activate(QWindow *window)
{
    ++m_activations;
    m_services.windowController->activate(window);
}

void AppController::scheduleRelease()
{
    QTimer::singleShot(kReleaseDelay, this, [this, before = m_activations, active = m_flow.takeApplicationActive()] {
        release(before, active);
    });
}

void AppController::release(int activationsBefore, bool wasApplicationActive)
{
    if (m_flow.isActive() || ui::dialogs::openDialogCount() > 0)
        return;
    const bool goesBack = !wasApplicationActive && m_activations == activationsBefore;
    if (goesBack)
        m_services.windowController->deactivateApplication();
    if (goesBack || !m_messages.isOpen())
        m_services.windowController->releaseActivation();
}

} // namespace tavrel
