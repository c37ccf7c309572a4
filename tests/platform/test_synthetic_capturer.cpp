#include "platform/screen_capturer_contract.h"
#include "platform/synthetic/synthetic_capturer.h"
#include "support/test_main.h"

using namespace tavrel;
using platform::SyntheticCapturer;

class SyntheticCapturerTest final : public test::ScreenCapturerContract
{
    Q_OBJECT

protected:
    std::unique_ptr<platform::IScreenCapturer> makeCapturer() override { return std::make_unique<SyntheticCapturer>(); }
    void changePicture(platform::IScreenCapturer &capturer) override
    {
        static_cast<SyntheticCapturer &>(capturer).setScrolling(true);
    }

private Q_SLOTS:
    void scrollsStepByStepToThePagesEnd()
    {
        SyntheticCapturer capturer;
        const auto still = test::captureWith(capturer).displays.value(0);
        QCOMPARE(capturer.scrollOffset(), 0);
        capturer.setScrolling(true);
        const auto moved = test::captureWith(capturer).displays.value(0);
        QCOMPARE(capturer.scrollOffset(), 137);
        // The same page, further down: this is what a stitcher will have to find out.
        const int shift = static_cast<int>(137 * still.devicePixelRatio);
        const QSize common(still.image.width(), still.image.height() - shift);
        QCOMPARE(moved.image.copy(QRect(QPoint(0, 0), common)), still.image.copy(QRect(QPoint(0, shift), common)));

        const int end = 2 * still.geometry.height();
        for (int i = 2; i * 137 < end; ++i) {
            test::captureWith(capturer);
            QCOMPARE(capturer.scrollOffset(), i * 137);
        }
        test::captureWith(capturer);
        QCOMPARE(capturer.scrollOffset(), end);
        QCOMPARE(test::captureWith(capturer).displays.value(0).image.size(), still.image.size());
        QCOMPARE(capturer.scrollOffset(), end);
    }

    void remembersWhatWasAskedFor()
    {
        SyntheticCapturer capturer;
        const platform::CaptureOptions options{true, false, {7, 9}};
        test::captureWith(capturer, options);
        QCOMPARE(capturer.lastOptions(), options);
    }

    void pageIsDrawnInLogicalPixels_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::newRow("1") << 1.0;
        QTest::newRow("1.25") << 1.25;
        QTest::newRow("2") << 2.0;
    }

    void pageIsDrawnInLogicalPixels()
    {
        QFETCH(double, ratio);
        const QImage page = platform::drawSyntheticPage(QSize(401, 300), ratio, 3, QStringLiteral("x"));
        QCOMPARE(page.size(), QSize(static_cast<int>(401 * ratio), static_cast<int>(900 * ratio)));
        QVERIFY(isOpaque(page));
        // The first block of the first row.
        const auto at = [&page, ratio](double x, double y) {
            return page.pixelColor(static_cast<int>(x * ratio), static_cast<int>(y * ratio));
        };
        const quint32 row = (0x9e3779b9U * 1664525U + 1013904223U) >> 16;
        const int width = static_cast<int>(row % 13U + 9U);
        const int grey = static_cast<int>(row % 96U + 32U);
        QCOMPARE(at(16 + width / 2.0, 12), QColor(grey, grey, grey));
        QVERIFY(at(16 + width + 1.5, 12) != QColor(grey, grey, grey));
    }

    void rowsDiffer()
    {
        const QImage page = platform::drawSyntheticPage(QSize(600, 400), 1.0, 3, QStringLiteral("x"));
        QList<QImage> rows;
        for (int y = 0; y + 24 < page.height(); y += 24) {
            const QImage row = page.copy(0, y + 6, page.width(), 12).convertToFormat(QImage::Format_Grayscale8);
            QVERIFY(!rows.contains(row));
            rows.append(row);
        }
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SyntheticCapturerTest)
#include "test_synthetic_capturer.moc"
