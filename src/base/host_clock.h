#pragma once

namespace tavrel {

/// The host clock: one monotonic clock in milliseconds with fractions, shared by input monitor, recorders and
/// frame source, so that their times can be subtracted from each other. Its zero has no meaning.
/// Safe to call from any thread.
[[nodiscard]] double hostClockMs() noexcept;

} // namespace tavrel
