#include "platform/services.h"

#include "platform/linux/host_lookup.h"
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

namespace tavrel::platform {
namespace {

bool isX11()
{
    return QGuiApplication::platformName() == u"xcb";
}

void fillFromX11(Services &services)
{
    if (services.screenCapturer && services.globalHotkey && services.windowController && services.elementDetector)
        return;
    if (!isX11()) {
        qWarning().noquote() << QStringLiteral("窗口系统“%1”不受支持（需要 X11）：不能抓屏，全局快捷键无效")
                                    .arg(QGuiApplication::platformName());
        return;
    }
    QString error;
    const auto x11 = X11Services::create(&error);
    if (!x11) {
        qWarning().noquote() << QStringLiteral("X 服务不可用：") + error;
        return;
    }
    if (!services.screenCapturer)
        services.screenCapturer = x11->screenCapturer();
    if (!services.globalHotkey)
        services.globalHotkey = std::make_unique<X11GlobalHotkey>();
    if (!services.windowController)
        services.windowController = x11->windowController();
    if (!services.elementDetector)
        services.elementDetector = x11->elementDetector();
}

} // namespace

Services withSystemServices(Services services)
{
    fillFromX11(services);
    if (!services.screenCapturer)
        services.screenCapturer = Unsupported::screenCapturer();
    if (!services.globalHotkey)
        services.globalHotkey = Unsupported::globalHotkey();
    if (!services.windowController)
        services.windowController = Unsupported::windowController();
    if (!services.elementDetector)
        services.elementDetector = Unsupported::elementDetector();
    if (!services.permissions)
        services.permissions = std::make_shared<XdgPermissions>();
    if (!services.autoStart)
        services.autoStart = std::make_shared<XdgAutoStart>();
    if (!services.notifier)
        services.notifier = std::make_shared<XdgNotifier>();
    if (!services.cursorPosition)
        services.cursorPosition = [] { return QCursor::pos(); };
    if (!services.lookUpHost)
        services.lookUpHost = [lookup = std::make_shared<HostLookup>()](const QString &host, const auto &done) {
            lookup->find(host, done);
        };
    return services;
}

std::unique_ptr<IInputMonitor> makeInputMonitor()
{
    if (isX11())
        return std::make_unique<X11InputMonitor>();
    return Unsupported::inputMonitor();
}

std::unique_ptr<IInputInjector> makeInputInjector()
{
    return isX11() ? X11InputInjector::create() : nullptr;
}

void followSystemTermination(QObject *owner)
{
    quitOnTerminationSignals(owner);
}

} // namespace tavrel::platform
