#include "base/host_clock.h"

#include <chrono>

namespace tavrel {

double hostClockMs() noexcept
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

} // namespace tavrel
