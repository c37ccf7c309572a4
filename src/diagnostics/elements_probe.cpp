#include "diagnostics/elements_probe.h"

#include "platform/services.h"
#include "platform/unsupported/unsupported_services.h"

#include <cstdio>
#include <thread>

namespace tavrel {

int runElementsProbe(const QStringList &values)
{
    if (!values.isEmpty() && values != QStringList(QStringLiteral("--request-access"))) {
        std::fprintf(stderr, "用法: tavrel --elements-probe [--request-access]\n");
        return 2;
    }
    const platform::Services services =
        platform::withSystemServices({.globalHotkey = platform::Unsupported::globalHotkey()}); // nothing to listen to
    platform::IElementDetector &detector = *services.elementDetector;
    if (!values.isEmpty())
        detector.requestAccess();
    // Only off the GUI thread is the answer final.
    bool available = false;
    std::thread([&] { available = detector.isAvailable(); }).join();
    std::printf("元素检测：%s\n", available ? "可用" : "不可用");
    const QList<platform::WindowInfo> windows = detector.topLevelWindows();
    std::printf("窗口（从上到下）：%lld\n", static_cast<long long>(windows.size()));
    for (const platform::WindowInfo &window : windows) {
        const QRectF &rect = window.geometry;
        std::printf("%lld %s %g,%g %g×%g %s\n", static_cast<long long>(window.processId),
                    qPrintable(window.applicationName), rect.x(), rect.y(), rect.width(), rect.height(),
                    qPrintable(window.title));
    }
    return 0;
}

} // namespace tavrel
