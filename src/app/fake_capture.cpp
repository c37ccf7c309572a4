#include "app/fake_capture.h"

namespace tavrel {
namespace {
platform::SyntheticCapturer *g_capturer = nullptr;
}

platform::SyntheticCapturer *fakeCapturer()
{
    return g_capturer;
}

void setFakeCapturer(platform::SyntheticCapturer *capturer)
{
    g_capturer = capturer;
}

} // namespace tavrel
