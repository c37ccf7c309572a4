#pragma once

#include "platform/update_feed.h"

namespace tavrel {

/// Where this build looks for new versions: what was built in, or what the environment names in its place.
[[nodiscard]] platform::UpdateConfig updateSource();
/// Rises with every release.
[[nodiscard]] qint64 buildNumber();

} // namespace tavrel
