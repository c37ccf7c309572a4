#include "platform/linux/quit_signals.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrel::platform {
namespace {

std::array<int, 2> g_pair{-1, -1};

// Only async-signal-safe calls: the work is done by the notifier at the other end.
extern "C" void onTerminationSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(g_pair[0], &byte, 1);
}

} // namespace

void quitOnTerminationSignals(QObject *owner)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_pair.data()) != 0)
        return;
    auto *notifier = new QSocketNotifier(g_pair[1], QSocketNotifier::Read, owner);
    QObject::connect(notifier, &QSocketNotifier::activated, owner, [] {
        char byte = 0;
        if (::read(g_pair[1], &byte, 1) == 1) {
            qInfo().noquote() << QStringLiteral("收到终止信号，退出");
            QCoreApplication::quit();
        }
    });
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

} // namespace tavrel::platform
