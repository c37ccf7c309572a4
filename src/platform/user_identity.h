#pragma once

#include <QtGlobal>

namespace tavrel::platform {

/// The number of the user that this process runs as, as QFileInfo::ownerId() gives it for the user's files.
[[nodiscard]] uint currentUserId();

} // namespace tavrel::platform
