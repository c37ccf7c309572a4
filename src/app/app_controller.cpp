#include "app/app_controller.h"

#include "app/default_services.h"
#include "overlay/capture_overlay.h"
#include "settings/settings_store.h"
#include "ui/color_library.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QLoggingCategory>
#include <QTimer>
#include <QWindow>

namespace tavrel {
namespace {

using namespace std::chrono_literals;

constexpr auto kReleaseDelay = 150ms;
constexpr auto kFlushTime = 3000ms;

} // namespace

AppController::AppController(SettingsStore &settings, Deps deps, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_deps(withDefaultServices(std::move(deps))),
      m_probe(m_deps.elementDetector),
      m_flow({*m_deps.screenCapturer, m_deps.windowController, m_deps.elementDetector, settings, *m_deps.history,
              m_notices, m_deps.cursorPosition, &m_probe}),
      m_results(settings, m_notices, m_deps.clipboard),
      m_hotkeys(*m_deps.globalHotkey),
      m_messages({m_deps.windowController, [this](QWindow *window) { activate(window); },
                  [this] { return ui::themeFor(m_settings.config().theme); }})
{
    m_notices.setReceiver(m_deps.notices.get());
    ui::dialogs::setWindowController(m_deps.windowController);
    ui::dialogs::setFileDialogHost(m_deps.fileDialogHost);
    ui::dialogs::setThemeName(settings.config().theme);
    ui::dialogs::setHotkeySuspender([this](bool suspended) { m_deps.globalHotkey->setSuspended(suspended); });

    auto &palette = ui::ColorLibrary::instance();
    palette.setColors(settings.config().paletteColors);
    connect(&palette, &ui::ColorLibrary::changed, this, &AppController::storePalette);

    connect(m_deps.updater.get(), &platform::IUpdater::shutdownRequested, this, &AppController::quit,
            Qt::QueuedConnection);
    connect(m_deps.globalHotkey.get(), &platform::IGlobalHotkey::activated, this,
            [this](int id) { m_hotkeys.dispatch(id); });
    m_hotkeys.setOperation(HotkeyTable::Capture, [this] { startCapture(); });
    m_hotkeys.setOperation(HotkeyTable::Long, [this] { m_flow.startLongCapture(); });

    connect(&m_flow, &CaptureFlow::accessRefused, this, &AppController::onAccessRefused);
    connect(&m_flow, &CaptureFlow::sessionStarted, this, &AppController::updateCanShutdown);
    connect(&m_flow, &CaptureFlow::sessionClosed, this, &AppController::captureSessionClosed);
    connect(&m_flow, &CaptureFlow::idleReached, this, [this] {
        updateCanShutdown();
        scheduleRelease();
    });
    connect(&m_flow, &CaptureFlow::copyReady, &m_results, &ResultActions::copyImage);
    connect(&m_flow, &CaptureFlow::textReady, &m_results, &ResultActions::copyText);
    connect(&m_flow, &CaptureFlow::saveReady, &m_results,
            [this](const QImage &image, const FilenameContext &context, const QString &uuid) {
                m_results.saveImage(image, context, false, nullptr, [this, uuid](const QString &path) {
                    if (!uuid.isEmpty())
                        m_deps.history->setSavedPath(uuid, path);
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
    m_deps.globalHotkey->unregisterAll();
    ui::dialogs::setHotkeySuspender({});
    ui::dialogs::setWindowController(nullptr);
    ui::dialogs::setFileDialogHost(nullptr);
    // One deadline for both: a new start waits no longer than that for this one to go.
    const QDeadlineTimer deadline(kFlushTime);
    if (!m_results.finish(deadline))
        qWarning().noquote() << QStringLiteral("退出时仍有截图没有写完");
    m_deps.history->flush(static_cast<int>(deadline.remainingTime()));
    m_notices.setReceiver(nullptr);
}

void AppController::start()
{
    if (m_deps.enableBackground) {
        m_tray =
            std::make_unique<TrayMenu>([this]() -> const SettingsConfig & { return m_settings.config(); },
                                       [this](const QString &title, const QString &text) { showWarning(title, text); });
        connect(m_tray.get(), &TrayMenu::captureRequested, this, &AppController::startCapture);
        connect(m_tray.get(), &TrayMenu::quitRequested, this, &AppController::quit);
        if (!m_deps.notices)
            m_notices.setReceiver(m_tray.get());
    }
    registerHotkeys();
    qInfo().noquote() << QStringLiteral("就绪，等待快捷键");
}

void AppController::startCapture()
{
    m_flow.startCapture();
}

void AppController::registerHotkeys()
{
    m_hotkeys.apply(m_settings.config());
    const QString lines = m_hotkeys.errorLines();
    if (!lines.isEmpty() && lines != m_reportedHotkeyErrors)
        m_notices.show(QCoreApplication::translate("AppController", "Tavrel 快捷键注册失败"), lines,
                       IUserNotices::Kind::Warning, 5000ms);
    m_reportedHotkeyErrors = lines;
    if (m_tray)
        m_tray->refresh();
}

void AppController::applySettings()
{
    ui::dialogs::setThemeName(m_settings.config().theme);
    ui::ColorLibrary::instance().setColors(m_settings.config().paletteColors);
    registerHotkeys();
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
    Q_EMIT permissionRequired();
    if (!m_deps.showPermissionHelp)
        return;
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
                             m_deps.permissions->openSystemSettings(platform::MediaKind::Screen);
                     }});
}

void AppController::updateCanShutdown()
{
    m_deps.updater->setCanShutdown(!m_flow.isActive());
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
    registerHotkeys();
    const HotkeyBinding &capture = m_settings.config().captureHotkey;
    QStringList lines;
    if (capture.isActive() && captureHotkeyError().isEmpty())
        lines.append(
            QCoreApplication::translate("AppController", "按 %1 开始截图。").arg(capture.combo.toDisplayText()));
    else
        lines.append(
            QCoreApplication::translate("AppController", "截图快捷键没有生效，可以用命令 tavrel --capture 截图。"));
    const QString errors = m_hotkeys.errorLines();
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
    if (m_tray)
        m_tray->refresh();
}

void AppController::activate(QWindow *window)
{
    ++m_activations;
    m_deps.windowController->activate(window);
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
        m_deps.windowController->deactivateApplication();
    if (goesBack || !m_messages.isOpen())
        m_deps.windowController->releaseActivation();
}

} // namespace tavrel
