// Runs on a server cut into two monitors, LEFT 1000 x 1080 and RIGHT 919 x 901 at (1000, 100), at several scale
// factors.
#include "platform/linux/capture_exclusions.h"
#include "platform/linux/x11_screen_capturer.h"
#include "platform/linux/x_connection.h"
#include "platform/screen_capturer_contract.h"
#include "platform/x_probe.h"
#include "support/test_main.h"

#include <sys/resource.h>
#include <sys/socket.h>

using namespace tavrel;
using namespace tavrel::platform;
using test::kLeft;
using test::kRight;

namespace {} // namespace

class X11CaptureTest final : public test::ScreenCapturerContract
{
    Q_OBJECT

protected:
    std::unique_ptr<IScreenCapturer> makeCapturer() override
    {
        std::shared_ptr<XConnection> x = XConnection::create();
        auto capturer = std::make_unique<X11ScreenCapturer>(x, std::make_shared<CaptureExclusions>(x));
        m_connection = x;
        return capturer;
    }
    void changePicture(IScreenCapturer &) override
    {
        m_probe.open(QRect(10, 10, 50, 50), {.color = Qt::green});
        (void)settled();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_probe.warpPointer({1919, 1079});
        m_probe.setRootNoise();
        QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    }

    void pictureIsTheScreenPixelForPixel()
    {
        m_probe.open(QRect(900, 200, 333, 222), {.color = Qt::blue, .patterned = true}); // across both monitors
        const QImage screen = settled();
        const auto capturer = makeCapturer();
        const auto result = test::captureWith(*capturer);
        QCOMPARE(result.displays.size(), 2);
        const bool leftFirst = result.displays[0].name == u"LEFT"_qs;
        QCOMPARE(plain(result.displays[leftFirst ? 0 : 1].image), screen.copy(kLeft));
        QCOMPARE(plain(result.displays[leftFirst ? 1 : 0].image), screen.copy(kRight));
    }

    void withoutSharedMemoryThePictureIsTheSame()
    {
        const auto expected = test::captureWith(*makeCapturer());
        const auto capturer = makeCapturer();
        // No descriptor can be had, so no memory to share.
        rlimit before = {};
        getrlimit(RLIMIT_NOFILE, &before);
        rlimit none = before;
        none.rlim_cur = 3;
        std::optional<CaptureResult> result;
        setrlimit(RLIMIT_NOFILE, &none);
        capturer->capture({}, this, [&result](const CaptureResult &taken) { result = taken; });
        setrlimit(RLIMIT_NOFILE, &before);
        QTRY_VERIFY(result);
        QVERIFY(result->isGood());
        QCOMPARE(result->displays[0].image, expected.displays[0].image);
        QCOMPARE(result->displays[1].image, expected.displays[1].image);
    }

    void pointerIsDrawnNearAPicture_data()
    {
        QTest::addColumn<QPoint>("pointer");
        QTest::addColumn<QRect>("drawn"); // in pixels of LEFT
        QTest::newRow("inside") << QPoint(500, 500) << QRect(380, 436, 128, 128);
        QTest::newRow("30 pixels outside") << QPoint(1030, 500) << QRect(910, 436, 90, 128);
        QTest::newRow("70 pixels outside") << QPoint(1070, 500) << QRect();
    }

    void pointerIsDrawnNearAPicture()
    {
        QFETCH(QPoint, pointer);
        QFETCH(QRect, drawn);
        const xcb_window_t glass = m_probe.showBigCursor();
        m_probe.warpPointer(pointer);
        const auto capturer = makeCapturer();
        const QImage without = left(test::captureWith(*capturer));
        QImage with = left(test::captureWith(*capturer, {true, true, {}}));
        if (!drawn.isEmpty()) {
            QCOMPARE(with.pixelColor(drawn.topLeft()), QColor(255, 0, 255));
            QCOMPARE(with.pixelColor(drawn.bottomRight()), QColor(255, 0, 255));
        }
        // Apart from the pointer the pictures are the same.
        for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
            for (int x = drawn.left(); x <= drawn.right(); ++x)
                with.setPixel(x, y, without.pixel(x, y));
        }
        QCOMPARE(with, without);
        m_probe.close(glass);
        m_probe.warpPointer({1919, 1079});
    }

    void displayThatWasJustRemovedIsAnError()
    {
        const auto capturer = makeCapturer();
        QVERIFY(test::captureWith(*capturer).isGood());
        std::optional<CaptureResult> result;
        const QByteArray last = QGuiApplication::screens().last()->name().toUtf8();
        m_probe.setMonitor(last, {}); // no event has told Qt yet
        QTest::ignoreMessage(QtWarningMsg, qPrintable(u"抓取屏幕失败："_qs + QString::fromUtf8(last)));
        capturer->capture({}, this, [&result](const CaptureResult &taken) { result = taken; });
        m_probe.setMonitor(last, last == "LEFT" ? kLeft : kRight);
        QTRY_VERIFY(result);
        QCOMPARE(result->error, u"抓取屏幕失败："_qs + QString::fromUtf8(last));
        QVERIFY(!result->isGood());
        QCOMPARE(result->displays.size(), 1);
        QTRY_COMPARE(QGuiApplication::screens().size(), 2);
    }

    void serverThatGoesAwayIsAnError()
    {
        const auto capturer = makeCapturer();
        shutdown(xcb_get_file_descriptor(m_connection->xcb()), SHUT_RDWR);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"抓取屏幕失败：.*，与 X 服务器的连接已断开"_qs));
        const auto result = test::captureWith(*capturer);
        QVERIFY(result.error.startsWith(u"抓取屏幕失败："_qs));
        QVERIFY(result.displays.isEmpty());
        QVERIFY(m_connection->isBroken());
        QVERIFY(!m_connection->brokenText().isEmpty());
    }

private:
    [[nodiscard]] QImage settled() const { return m_probe.settled(); }
    static QImage plain(QImage image)
    {
        image.setDevicePixelRatio(1.0);
        return image;
    }
    static QImage left(const CaptureResult &result)
    {
        for (const auto &display : result.displays) {
            if (display.name == u"LEFT"_qs)
                return plain(display.image);
        }
        return {};
    }

    test::XProbe m_probe;
    std::shared_ptr<XConnection> m_connection;
};

TAVREL_TWO_MONITORS_MAIN(QGuiApplication, X11CaptureTest)
#include "test_x11_capture.moc"
