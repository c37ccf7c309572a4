#include "diagnostics/hw_probe.h"

#include "platform/services.h"
#include "settings/key_combo.h"

#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cstdio>

namespace tavrel {
namespace {

using platform::InputEventRecord;

constexpr int kSettleMs = 300;
constexpr int kPulseMs = 20;
constexpr int kOpenDeadlineMs = 5000;
constexpr KeyCombo kKey{.key = Qt::Key_F13}; // a key that hardly any program listens to

void runFor(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    QTimer pulse; // an event loop without events would wait for ever
    pulse.start(kPulseMs);
    while (timer.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// The click must land on the window of the probe, whatever lies below.
bool waitUntilUnderPointer(const QWidget &target)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kOpenDeadlineMs) {
        if (target.windowHandle()->isExposed() && target.geometry().contains(QCursor::pos()))
            return true;
        runFor(kPulseMs);
    }
    return false;
}

/// How many events are of this type, button and Qt key.
qsizetype count(const QList<InputEventRecord> &events, int type, int button = 0, int qtKey = 0)
{
    return std::count_if(events.cbegin(), events.cend(), [=](const InputEventRecord &event) {
        return event.type == type && event.button == button && event.qtKey == qtKey;
    });
}

const char *typeName(int type)
{
    constexpr const char *kNames[] = {"移动", "按下", "松开", "键按下", "键松开", "滚轮"};
    return kNames[type];
}

} // namespace

int runHwProbe(const QStringList &values)
{
    if (!values.isEmpty()) {
        std::fprintf(stderr, "用法: tavrel --hw-probe\n");
        return 2;
    }
    const auto monitor = platform::makeInputMonitor();
    const auto injector = platform::makeInputInjector();
    QString error;
    if (!monitor->hasAccess(&error))
        monitor->requestAccess();
    if (!monitor->start(&error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    int told = 0;
    QObject context;
    QObject::connect(monitor.get(), &platform::IInputMonitor::eventRecorded, &context, [&told] { ++told; });
    if (!injector) {
        std::fprintf(stderr, "系统不接受模拟输入\n");
        return 1;
    }
    QWidget target(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    target.setGeometry(QRect(QCursor::pos() - QPoint(20, 20), QSize(40, 40)));
    target.show();
    if (!waitUntilUnderPointer(target)) {
        std::fprintf(stderr, "测试窗口没有出现在指针下，未模拟输入\n");
        return 1;
    }
    runFor(kSettleMs);
    bool played = injector->moveBy(8, 6) && injector->moveBy(-8, -6) && injector->click(1) && injector->scroll(true);
    played = injector->tap(kKey) && played;
    runFor(kSettleMs);
    const QList<InputEventRecord> events = monitor->stop();
    for (const InputEventRecord &event : events) {
        std::printf("%.1f ms\t%s\t%g,%g\t按钮 %d\t键码 %d\t键名 %s\tQt 键 0x%x\t修饰 %d\n",
                    event.hostMs - events.first().hostMs, typeName(event.type), event.x, event.y, event.button,
                    event.virtualKey, qPrintable(event.keyName), static_cast<unsigned>(event.qtKey), event.modifiers);
    }
    using Type = InputEventRecord::Type;
    const bool all = played && told >= 4 && count(events, Type::Move) >= 2 && count(events, Type::Wheel) >= 1 &&
                     count(events, Type::ButtonDown, 1) >= 1 && count(events, Type::ButtonUp, 1) >= 1 &&
                     count(events, Type::KeyDown, 0, kKey.key) >= 1 && count(events, Type::KeyUp) >= 1;
    std::printf("%s：记录 %lld 个事件，其中 %d 个即时送达\n", all ? "全部看到" : "有事件没有看到",
                static_cast<long long>(events.size()), told);
    return all ? 0 : 1;
}

} // namespace tavrel
