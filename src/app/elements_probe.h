#pragma once

#include "app/default_services.h"
#include "platform/unsupported/unsupported_services.h"

#include <QStringList>
#include <QtConcurrent>

#include <cstdio>

namespace tavrel {

/// Prints whether elements of other applications can be read, and the visible windows from top to bottom. With
/// --request-access it asks the system for that first.
///
/// arguments  as the process got them, program name first
/// returns    the exit code of the process; negative when the option is not there
[[nodiscard]] inline int runElementsProbe(const QStringList &arguments)
{
    const auto at = arguments.indexOf(u"--elements-probe");
    if (at < 1)
        return -1;
    const QStringList values = arguments.mid(at + 1);
    if (!values.isEmpty() && values != QStringList(QStringLiteral("--request-access"))) {
        std::fprintf(stderr, "用法: tavrel --elements-probe [--request-access]\n");
        return 2;
    }
    AppController::Deps wanted;
    wanted.globalHotkey = platform::Unsupported::globalHotkey(); // nothing to listen to
    const AppController::Deps services = withDefaultServices(std::move(wanted));
    platform::IElementDetector &detector = *services.elementDetector;
    if (!values.isEmpty())
        detector.requestAccess();
    // Only off the GUI thread is the answer final.
    const bool available = QtConcurrent::run([&detector] { return detector.isAvailable(); }).result();
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
