#include "platform/user_identity.h"

#include <unistd.h>

namespace tavrel::platform {

uint currentUserId()
{
    return ::geteuid(); // files that are made belong to the effective user
}

} // namespace tavrel::platform
