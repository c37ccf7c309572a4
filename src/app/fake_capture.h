#pragma once

namespace tavrel {

namespace platform {
class SyntheticCapturer;
}

/// The one synthetic capturer of this process, null unless the program was started with it. Diagnostics use it to
/// switch scrolling and to read what was asked of the last grab.
[[nodiscard]] platform::SyntheticCapturer *fakeCapturer();
void setFakeCapturer(platform::SyntheticCapturer *capturer);

} // namespace tavrel
