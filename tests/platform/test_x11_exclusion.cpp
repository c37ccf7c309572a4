// Windows that may not be in a picture: what lies behind them is, and they stay on the screen.
#include "platform/linux/capture_exclusions.h"
#include "platform/linux/x11_screen_capturer.h"
#include "platform/linux/x11_window_controller.h"
#include "platform/linux/x_connection.h"
#include "platform/screen_capturer_contract.h"
#include "platform/x_probe.h"
#include "support/test_main.h"

#include <QPainter>
#include <QRasterWindow>

#include <atomic>
#include <thread>

using namespace tavrel;
using namespace tavrel::platform;
using test::XProbe;

namespace {

/// A window of this program that paints the same whenever it is asked to.
class Striped final : public QRasterWindow
{
public:
    explicit Striped(const QRect &rect) { setGeometry(rect); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        for (int y = 0; y < height(); y += 4)
            painter.fillRect(0, y, width(), 4, QColor::fromHsv(y % 360, 255, 200));
    }
};

} // namespace

Q_DECLARE_METATYPE(tavrel::test::XProbe::Look)

class X11ExclusionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_x = XConnection::create();
        m_exclusions = std::make_shared<CaptureExclusions>(m_x);
        m_capturer = std::make_unique<X11ScreenCapturer>(m_x, m_exclusions);
        m_controller = std::make_unique<X11WindowController>(m_x, m_exclusions);
        m_probe = std::make_unique<XProbe>();
        m_probe->warpPointer({1919, 1079});
        m_probe->setRootNoise();
    }

    void cleanup()
    {
        m_controller.reset();
        m_capturer.reset();
        m_exclusions.reset();
        m_probe.reset(); // and its windows with it
        m_x.reset();
    }

    void whatIsBehindIsSeen_data()
    {
        QTest::addColumn<QRect>("rect");
        QTest::addColumn<XProbe::Look>("look");
        const QRect middle(250, 150, 500, 400);
        QTest::newRow("over several windows") << middle << XProbe::Look{};
        QTest::newRow("over everything") << QRect(0, 0, 1920, 1080) << XProbe::Look{};
        QTest::newRow("partly off the screen") << QRect(-50, -60, 300, 300) << XProbe::Look{};
        QTest::newRow("with a border") << middle << XProbe::Look{.border = 9};
        QTest::newRow("translucent") << middle << XProbe::Look{.color = QColor(0, 0, 200, 100), .argb = true};
        QTest::newRow("managed") << middle << XProbe::Look{.bypassing = false};
        QTest::newRow("with a hole") << QRect(0, 0, 1920, 1080)
                                     << XProbe::Look{.shape = QRegion(0, 0, 1920, 1080) - QRegion(300, 200, 400, 300)};
    }

    /// The picture with the window left out is, to the pixel, the screen as it was before the window came.
    void whatIsBehindIsSeen()
    {
        QFETCH(QRect, rect);
        QFETCH(XProbe::Look, look);
        openScene(look.bypassing); // a window that takes the focus changes the looks of a framed one
        const QImage before = settled();

        look.mapped = false;
        const xcb_window_t window = m_probe->open(rect, look);
        m_exclusions->add(window);
        m_probe->map(window);
        const QImage with = settled();
        QVERIFY(with != before);
        const QImage picture = capture({.includeCursor = false, .excludeOwnWindows = false, .excludeWindows = {}});
        QCOMPARE(difference(picture, before), QRect());
        QVERIFY(m_probe->isViewable(window));
        QCOMPARE(difference(settled(), with), QRect());

        m_exclusions->remove(window);
        QCOMPARE(difference(capture({false, false, {}}), with), QRect());
        QCOMPARE(difference(capture({false, false, {window}}), before), QRect());
    }

    void whatIsAboveStaysAbove()
    {
        openScene();
        const xcb_window_t above = m_probe->open(QRect(400, 300, 100, 100), {.color = Qt::cyan, .patterned = true});
        const QImage before = settled();
        openLeftOut(QRect(250, 150, 500, 400));
        m_probe->raise(above);
        QCOMPARE(difference(capture({false, false, {}}), before), QRect());
    }

    void changesBehindAreSeen()
    {
        const xcb_window_t behind = m_probe->open(QRect(300, 200, 300, 300), {.color = Qt::white});
        const xcb_window_t window = openLeftOut(QRect(0, 0, 1920, 1080));
        const QImage first = capture({false, false, {}});
        m_probe->paintNoise(behind, 3);
        const QImage second = capture({false, false, {}});
        QCOMPARE(difference(second, first), QRect(300, 200, 300, 300));
        m_exclusions->remove(window);
        m_probe->close(window);
        QCOMPARE(difference(settled(), second), QRect());
    }

    /// Nobody has kept what was covered until now: the programs behind paint it anew first. Meanwhile one that waits
    /// for them may be overtaken; both get their own picture.
    void picturesReachThoseWhoAskedForThem()
    {
        Striped behind(QRect(300, 200, 400, 300));
        behind.setFlags(Qt::X11BypassWindowManagerHint);
        behind.show();
        QVERIFY(QTest::qWaitForWindowExposed(&behind));
        const QImage before = settled();
        const xcb_window_t window = m_probe->open(QRect(350, 250, 200, 100), {});
        const QImage with = settled();
        QImage withoutIt;
        QImage asItIs;
        const auto ask = [this](const CaptureOptions &options, QImage &picture) {
            m_capturer->capture(options, this, [&picture](const CaptureResult &result) {
                QVERIFY(picture.isNull());
                picture = result.displays.value(0).image;
            });
        };
        ask({false, false, {window}}, withoutIt);
        ask({false, false, {}}, asItIs);
        QTRY_VERIFY(!withoutIt.isNull() && !asItIs.isNull());
        QCOMPARE(difference(withoutIt, before), QRect());
        QCOMPARE(difference(asItIs, with), QRect());
        QVERIFY(m_probe->isViewable(window));
    }

    void ownWindows()
    {
        openScene(false);
        const QImage before = settled();
        Striped own(QRect(550, 400, 300, 200));
        m_controller->setExcludedFromCapture(&own, true); // without a native window so far
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        const QImage with = settled();
        QVERIFY(with != before);
        QCOMPARE(difference(capture({false, false, {}}), before), QRect());

        m_controller->setExcludedFromCapture(&own, false);
        QCOMPARE(difference(capture({false, false, {}}), with), QRect());
        QCOMPARE(difference(capture({false, true, {}}), before), QRect());

        // An overlay is left out by its role, also when its native window is a new one.
        m_controller->setWindowRole(&own, WindowRole::Overlay);
        own.destroy();
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        QVERIFY(settled() != before);
        QCOMPARE(difference(capture({false, false, {}}), before), QRect());
        QVERIFY(m_probe->isViewable(static_cast<xcb_window_t>(own.winId())));
    }

    void deadWindowsDoNotStandInTheWay()
    {
        openScene();
        const xcb_window_t gone = m_probe->open(QRect(250, 150, 500, 400), {});
        m_exclusions->add(gone);
        m_probe->close(gone);
        const QImage screen = settled();
        QCOMPARE(difference(capture({false, true, {gone, 1, 0xffffffffU}}), screen), QRect());
    }

    /// Windows come and go between the requests of a grab; there is a whole picture all the same.
    void windowsThatComeAndGoMeanwhile()
    {
        openLeftOut(QRect(0, 0, 1920, 1080));
        std::atomic<bool> stop = false;
        std::thread churn([&stop] {
            const XProbe probe;
            xcb_connection_t *c = probe.xcb();
            const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
            const quint32 values[] = {screen->white_pixel, 1};
            while (!stop) {
                const xcb_window_t brief = xcb_generate_id(c);
                xcb_create_window(c, XCB_COPY_FROM_PARENT, brief, screen->root, 100, 100, 600, 400, 0,
                                  XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                                  XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
                xcb_map_window(c, brief);
                probe.sync();
                xcb_destroy_window(c, brief);
                probe.sync();
            }
        });
        int whole = 0;
        for (int i = 0; i < 60; ++i) {
            const QImage picture = capture({false, false, {}});
            // The brief window or the desktop, never the window that is left out and never a gap.
            if (!picture.isNull() && picture.pixelColor(300, 300) != QColor(Qt::red) &&
                picture.pixelColor(300, 300) != QColor(Qt::black))
                ++whole;
        }
        stop = true;
        churn.join();
        QCOMPARE(whole, 60);
    }

private:
    /// Overlapping windows of all kinds on the noise of the desktop.
    void openScene(bool framedToo = true)
    {
        m_probe->open(QRect(100, 100, 400, 300), {.patterned = true});
        m_probe->open(QRect(300, 200, 400, 300), {.patterned = true, .border = 5});
        m_probe->open(QRect(350, 300, 300, 300), {.color = QColor(0, 100, 0, 128), .argb = true});
        m_probe->open(QRect(450, 150, 200, 200),
                      {.patterned = true, .border = 3, .shape = QRegion(0, 0, 200, 200, QRegion::Ellipse)});
        if (framedToo)
            m_probe->open(QRect(600, 350, 300, 250), {.color = Qt::green, .bypassing = false});
    }

    xcb_window_t openLeftOut(const QRect &rect)
    {
        const xcb_window_t window = m_probe->open(rect, {.mapped = false});
        m_exclusions->add(window);
        m_probe->map(window);
        return window;
    }

    [[nodiscard]] QImage settled() const { return m_probe->settled(); }

    QImage capture(const CaptureOptions &options)
    {
        const auto result = test::captureWith(*m_capturer, options);
        return result.isGood() ? result.displays.first().image : QImage();
    }

    /// The smallest rectangle that holds all pixels in which two pictures differ.
    static QRect difference(const QImage &a, const QImage &b)
    {
        if (a.size() != b.size())
            return {-1, -1, 1, 1};
        QRegion region;
        for (int y = 0; y < a.height(); ++y) {
            const auto *left = reinterpret_cast<const QRgb *>(a.constScanLine(y));
            const auto *right = reinterpret_cast<const QRgb *>(b.constScanLine(y));
            const auto [from, unused] = std::mismatch(left, left + a.width(), right);
            if (from == left + a.width())
                continue;
            int last = a.width() - 1;
            while (left[last] == right[last])
                --last;
            const int first = static_cast<int>(from - left);
            region += QRect(first, y, last - first + 1, 1);
        }
        return region.boundingRect();
    }

    std::shared_ptr<XConnection> m_x;
    std::shared_ptr<CaptureExclusions> m_exclusions;
    std::unique_ptr<X11ScreenCapturer> m_capturer;
    std::unique_ptr<X11WindowController> m_controller;
    std::unique_ptr<XProbe> m_probe;
};

TAVREL_TEST_MAIN(QGuiApplication, X11ExclusionTest)
#include "test_x11_exclusion.moc"
