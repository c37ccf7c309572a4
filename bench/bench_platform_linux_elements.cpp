// Elements under a point, from another process over a bus of its own: as many messages as a real window needs.
//
// The application answers each question by itself, which takes most of the time; what it needs for the same number of
// rectangles when asked one after the other is beside it.
#include "platform/fake_tree.h"
#include "platform/linux/atspi_tree.h"
#include "platform/linux/bus_client.h"
#include "platform/private_bus.h"

#include <QCoreApplication>
#include <QProcess>

#include <benchmark/benchmark.h>

#include <dbus/dbus.h>

#include <chrono>
#include <memory>

using namespace tavrel::platform;
using namespace tavrel::test;
using namespace std::chrono_literals;

namespace {

class Application final
{
public:
    explicit Application(const char *shape)
    {
        m_process.start(QStringLiteral(ATSPI_ZOO), {QString::fromLatin1(shape), QStringLiteral("0")});
        m_process.waitForReadyRead();
    }

    ~Application()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

    [[nodiscard]] AtspiTree::Target at(const QPoint &point) const
    {
        return {m_process.processId(), {kFakeWindow, kFakeWindow, kFakeWindow, QStringLiteral("Zoo")}, point};
    }

private:
    QProcess m_process;
};

void chain(benchmark::State &state, const char *shape, const QPoint &point, qsizetype length)
{
    const Application application(shape);
    const AtspiTree tree;
    const AtspiTree::Target target = application.at(point);
    qsizetype found = tree.rectanglesAt(target, QDeadlineTimer(10s)).size();
    for (auto _ : state)
        found = tree.rectanglesAt(target, QDeadlineTimer(10s)).size();
    if (found != length)
        state.SkipWithError("the chain is not complete");
    state.counters["elements"] = static_cast<double>(fakeTree(shape, 0).size());
}

/// What 2,000 rectangles cost when each question waits for the answer to the one before.
void oneAfterTheOther(benchmark::State &state)
{
    const Application application("levels");
    const auto bus = BusClient::open(sessionBusAddress(), QDeadlineTimer(10s));
    if (!bus) {
        state.SkipWithError("no bus");
        return;
    }
    for (auto _ : state) {
        for (int i = 1; i <= 2000; ++i) {
            BusMessage message =
                busCall("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/" + QByteArray::number(i),
                        "org.a11y.atspi.Component", "GetExtents");
            const dbus_uint32_t screen = 0;
            dbus_message_append_args(message.get(), DBUS_TYPE_UINT32, &screen, DBUS_TYPE_INVALID);
            if (!bus->call(std::move(message), QDeadlineTimer(10s)))
                state.SkipWithError("no answer");
        }
    }
}

} // namespace

BENCHMARK_CAPTURE(chain, levels, "levels", kFakeWindow.center(), 6)
    ->Name("elements/chain/2000 of which all are asked, 5 levels")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(chain, grid, "grid", kFakeWindow.center(), 3)
    ->Name("elements/chain/2000 in 40 rows of 49")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(chain, deep, "deep", kFakeWindow.center(), 25)
    ->Name("elements/chain/24 levels of 1")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(oneAfterTheOther)
    ->Name("elements/2000 rectangles one after the other")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    PrivateBus bus(PrivateBus::Kind::Bare);
    if (!bus.start())
        return 1;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
