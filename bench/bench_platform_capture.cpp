// Grabs of a whole display and the list of windows, on a server of their own.
//
// The sizes in the names are those of the server that bench/platform.cmake asks for.
#include "platform/linux/capture_exclusions.h"
#include "platform/linux/screen_mapping.h"
#include "platform/linux/x11_element_detector.h"
#include "platform/linux/x11_screen_grabber.h"
#include "platform/linux/x_connection.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

#include <benchmark/benchmark.h>

#include <xcb/shape.h>

using namespace tavrel::platform;

namespace {

/// Windows of another client than the services under test, which take their list from the server.
class Windows final
{
public:
    xcb_window_t open(const QRect &rect, bool bypassing = true)
    {
        const quint32 values[] = {0x3355aaU + static_cast<quint32>(rect.x()), bypassing};
        xcb_connection_t *c = m_x->xcb();
        const xcb_window_t window = xcb_generate_id(c);
        xcb_create_window(c, XCB_COPY_FROM_PARENT, window, m_x->root(), static_cast<qint16>(rect.x()),
                          static_cast<qint16>(rect.y()), static_cast<quint16>(rect.width()),
                          static_cast<quint16>(rect.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        const QByteArray title =
            QByteArrayLiteral("A window with a title of ordinary length ") + QByteArray::number(rect.x());
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, m_x->atom(XAtom::NetWmName), m_x->atom(XAtom::Utf8String),
                            8, static_cast<quint32>(title.size()), title.constData());
        const quint32 process = 1; // somebody else's
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, m_x->atom(XAtom::NetWmPid), XCB_ATOM_CARDINAL, 32, 1,
                            &process);
        xcb_map_window(c, window);
        m_x->sync();
        return window;
    }

private:
    std::unique_ptr<XConnection> m_x = XConnection::create();
};

struct Service
{
    std::shared_ptr<XConnection> x = XConnection::create();
    std::shared_ptr<CaptureExclusions> exclusions = std::make_shared<CaptureExclusions>(x);
    X11ScreenGrabber grabber{x, exclusions};
    QRect screen = nativeMonitors(*x).first().rect;
};

void count(benchmark::State &state, const QSize &size)
{
    state.counters["megapixels"] = size.width() * size.height() / 1e6;
}

void openDesktop(Windows &windows)
{
    for (int i = 0; i < 12; ++i)
        windows.open(QRect(100 + 150 * i, 80 + 60 * i, 1600, 1100));
}

void grabThroughQt(benchmark::State &state)
{
    Windows windows;
    openDesktop(windows);
    for (auto _ : state) {
        QImage image = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        benchmark::DoNotOptimize(image.constBits());
    }
    count(state, QGuiApplication::primaryScreen()->size());
}

void grabPlain(benchmark::State &state)
{
    Windows windows;
    openDesktop(windows);
    Service service;
    for (auto _ : state) {
        QImage image = service.grabber.grab(QStringLiteral("a"), service.screen, service.grabber.findHidden({}));
        benchmark::DoNotOptimize(image.constBits());
    }
    count(state, service.screen.size());
}

/// Everything lies behind the one excluded window, as in a long capture; with a hole in it as there, or without.
void grabBehindExcluded(benchmark::State &state, bool hole)
{
    Windows windows;
    openDesktop(windows);
    Service service;
    Windows overlay;
    const xcb_window_t window = overlay.open(service.screen);
    if (hole) {
        const xcb_rectangle_t rects[] = {{0, 0, 3840, 300}, {0, 300, 500, 1860}, {3000, 300, 840, 1860}};
        xcb_shape_rectangles(service.x->xcb(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED,
                             window, 0, 0, 3, rects);
    }
    service.exclusions->add(window);
    for (auto _ : state) {
        QImage image = service.grabber.grab(QStringLiteral("a"), service.screen, service.grabber.findHidden({}));
        benchmark::DoNotOptimize(image.constBits());
    }
    count(state, service.screen.size());
}

/// What the first excluded window costs on a desktop that nobody composites.
void redirectDesktop(benchmark::State &state)
{
    Windows windows;
    openDesktop(windows);
    Service service;
    for (auto _ : state) {
        CaptureExclusions exclusions(service.x);
        exclusions.add(1);
    }
}

void listWindows(benchmark::State &state)
{
    Windows windows;
    for (int i = 0; i < state.range(0); ++i)
        windows.open(QRect(10 * i, 5 * i, 800, 600), false);
    std::shared_ptr<XConnection> x = XConnection::create();
    X11ElementDetector detector(x);
    qsizetype found = 0;
    for (auto _ : state)
        found = detector.topLevelWindows().size();
    if (found != state.range(0))
        state.SkipWithError("the list is not complete");
}

} // namespace

BENCHMARK(grabThroughQt)->Name("grab/3840x2160/QScreen::grabWindow")->Unit(benchmark::kMillisecond);
BENCHMARK(grabPlain)->Name("grab/3840x2160/plain")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(grabBehindExcluded, whole, false)
    ->Name("grab/3840x2160/behind one window over 12")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(grabBehindExcluded, hole, true)
    ->Name("grab/3840x2160/behind one window with a hole over 12")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(redirectDesktop)->Name("redirect/12 windows of 1600x1100")->Unit(benchmark::kMillisecond);
BENCHMARK(listWindows)->Name("windows/list")->Arg(60)->Unit(benchmark::kMillisecond);

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
