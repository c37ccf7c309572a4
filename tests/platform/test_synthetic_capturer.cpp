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
};

TAVREL_TEST_MAIN(QGuiApplication, SyntheticCapturerTest)
#include "test_synthetic_capturer.moc"
