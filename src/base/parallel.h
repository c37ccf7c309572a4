#pragma once

#include <functional>
#include <limits>

namespace tavrel {

/// Calls work(0) to work(count - 1), each once, here and on helper threads that are idle, and returns when all have
/// returned. The helpers, one less than there are cores and at most seven, are shared by the process and stay; with
/// none idle it all happens here, so that calls within calls and from several threads are safe. Waking a helper costs
/// some 10 us. `work` must not throw. Any thread.
///
/// most  threads, this one included, for work that more of them do not make faster
void inParallel(int count, const std::function<void(int index)> &work, int most = std::numeric_limits<int>::max());

} // namespace tavrel
