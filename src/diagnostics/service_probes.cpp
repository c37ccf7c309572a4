#include "diagnostics/service_probes.h"

#include "platform/services.h"
#include "platform/unsupported/unsupported_services.h"

#include <array>
#include <cstdio>

namespace tavrel {
namespace {

using platform::MediaKind;
using platform::PermissionState;
using platform::Unsupported;

/// The services of the system without those that a probe of a small one has no use for.
platform::Services smallServices()
{
    return platform::withSystemServices({.screenCapturer = Unsupported::screenCapturer(),
                                         .globalHotkey = Unsupported::globalHotkey(),
                                         .windowController = Unsupported::windowController(),
                                         .elementDetector = Unsupported::elementDetector()});
}

struct Kind
{
    MediaKind kind;
    const char *name;
};

constexpr std::array kKinds{Kind{MediaKind::Screen, "屏幕录制"}, Kind{MediaKind::Accessibility, "辅助功能"},
                            Kind{MediaKind::Input, "输入监听"}, Kind{MediaKind::Microphone, "麦克风"},
                            Kind{MediaKind::Camera, "摄像头"}};

const char *word(PermissionState state)
{
    switch (state) {
    case PermissionState::Granted:
        return "已授予";
    case PermissionState::Denied:
        return "已拒绝";
    case PermissionState::NotAsked:
        return "未询问";
    }
    return "?";
}

} // namespace

int runAutoStartProbe(const QStringList &values)
{
    const QString word = values.value(0);
    if (values.size() > 1 || (!word.isEmpty() && word != u"on" && word != u"off")) {
        std::fprintf(stderr, "用法: tavrel --autostart-probe [on|off]\n");
        return 2;
    }
    const platform::Services services = smallServices();
    platform::IAutoStart &autoStart = *services.autoStart;
    const bool before = autoStart.isEnabled();
    std::printf("自动启动：%s\n", before ? "已启用" : "未启用");
    const QList<bool> states = word.isEmpty() ? QList<bool>{!before, before} : QList<bool>{word == u"on"};
    bool allWell = true;
    for (const bool wanted : states) {
        QString error;
        const bool done = autoStart.setEnabled(wanted, &error);
        const bool now = autoStart.isEnabled();
        std::printf("%s：%s，现在%s\n", wanted ? "启用" : "停用", done ? "成功" : qPrintable(error),
                    now ? "已启用" : "未启用");
        allWell = allWell && done && now == wanted;
    }
    return allWell ? 0 : 1;
}

int runPermissionsProbe(const QStringList &values)
{
    if (!values.isEmpty()) {
        std::fprintf(stderr, "用法: tavrel --permissions-probe\n");
        return 2;
    }
    const platform::Services services = smallServices();
    for (const Kind &kind : kKinds)
        std::printf("%s\t%s\t%s\n", kind.name, services.permissions->isRequired(kind.kind) ? "需要授权" : "无需授权",
                    word(services.permissions->state(kind.kind)));
    return 0;
}

} // namespace tavrel
