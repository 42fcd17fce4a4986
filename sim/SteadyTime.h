#pragma once

#include <chrono>

namespace sim {

// Line timing is measured on the monotonic clock: wall-clock steps must not stretch a reply.
using SteadyClock = std::chrono::steady_clock;
using SteadyTime = SteadyClock::time_point;

} // namespace sim
