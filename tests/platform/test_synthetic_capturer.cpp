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
};

TAVREL_TEST_MAIN(QGuiApplication, SyntheticCapturerTest)
#include "test_synthetic_capturer.moc"
