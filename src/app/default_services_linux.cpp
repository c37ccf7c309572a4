#include "app/default_services.h"

#include "platform/feed_updater.h"
#include "platform/linux/host_lookup.h"
#include "platform/linux/libsecret_store.h"
#include "platform/linux/quit_signals.h"
#include "platform/linux/x11_global_hotkey.h"
#include "platform/linux/x11_input_injector.h"
#include "platform/linux/x11_input_monitor.h"
#include "platform/linux/x11_services.h"
#include "platform/linux/xdg_auto_start.h"
#include "platform/linux/xdg_notifier.h"
#include "platform/linux/xdg_permissions.h"
#include "platform/unsupported/unsupported_services.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>

namespace tavrel {

using platform::Unsupported;

namespace {

std::unique_ptr<platform::IUpdater> feedUpdater(const AppController::Deps &deps)
{
    const platform::UpdateValues builtIn{QStringLiteral(TAVREL_UPDATE_FEED_URL),
                                         QStringLiteral(TAVREL_UPDATE_PUBLIC_KEY)};
    const platform::UpdateValues environment{qEnvironmentVariable("TAVREL_UPDATE_FEED"),
                                             qEnvironmentVariable("TAVREL_UPDATE_PUBKEY")};
    platform::FeedUpdater::Options options;
    options.config = platform::readUpdateConfig(builtIn, environment);
    options.buildNumber = TAVREL_BUILD_NUMBER;
    options.present = deps.showUpdate;
    options.mayCheckByItself = deps.enableBackground;
    options.lookUp = [lookup = std::make_shared<platform::HostLookup>()](const QString &host, const auto &done) {
        lookup->find(host, done);
    };
    return std::make_unique<platform::FeedUpdater>(std::move(options));
}

} // namespace

AppController::Deps withDefaultServices(AppController::Deps deps)
{
    const bool x11 = QGuiApplication::platformName() == u"xcb";
    if (!deps.cursorPosition)
        deps.cursorPosition = [] { return QCursor::pos(); };
    QString error;
    const bool complete = deps.screenCapturer && deps.globalHotkey && deps.windowController && deps.elementDetector;
    if (const auto services = x11 ? platform::X11Services::create(&error) : nullptr) {
        if (!deps.screenCapturer)
            deps.screenCapturer = services->screenCapturer();
        if (!deps.globalHotkey)
            deps.globalHotkey = std::make_unique<platform::X11GlobalHotkey>();
        if (!deps.windowController)
            deps.windowController = services->windowController();
        if (!deps.elementDetector)
            deps.elementDetector = services->elementDetector();
    } else if (x11) {
        qWarning().noquote() << QStringLiteral("X 服务不可用：") + error;
    } else if (!complete) {
        qWarning().noquote() << QStringLiteral("窗口系统“%1”不受支持（需要 X11）：不能抓屏，全局快捷键无效")
                                    .arg(QGuiApplication::platformName());
    }
    if (!deps.screenCapturer)
        deps.screenCapturer = Unsupported::screenCapturer();
    if (!deps.globalHotkey)
        deps.globalHotkey = Unsupported::globalHotkey();
    if (!deps.windowController)
        deps.windowController = Unsupported::windowController();
    if (!deps.elementDetector)
        deps.elementDetector = Unsupported::elementDetector();
    if (!deps.autoStart)
        deps.autoStart = std::make_shared<platform::XdgAutoStart>();
    if (!deps.permissions)
        deps.permissions = std::make_shared<platform::XdgPermissions>();
    if (!deps.updater)
        deps.updater = feedUpdater(deps);
    if (!deps.notifier)
        deps.notifier = std::make_shared<platform::XdgNotifier>();
    if (!deps.history)
        deps.history = std::make_shared<NoHistory>();
    return deps;
}

std::unique_ptr<platform::IInputMonitor> makeInputMonitor()
{
    if (QGuiApplication::platformName() == u"xcb")
        return std::make_unique<platform::X11InputMonitor>();
    return Unsupported::inputMonitor();
}

std::unique_ptr<platform::IInputInjector> makeInputInjector()
{
    return QGuiApplication::platformName() == u"xcb" ? platform::X11InputInjector::create() : nullptr;
}

std::unique_ptr<platform::ISecureStore> makeSecureStore()
{
    return std::make_unique<platform::LibsecretStore>();
}

void followSystemTermination(QObject *owner)
{
    platform::quitOnTerminationSignals(owner);
}

} // namespace tavrel
