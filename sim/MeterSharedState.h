#pragma once

#include "sim/FaultQueue.h"
#include "sim/MeterBus.h"
#include "sim/RequestLog.h"

#include <atomic>
#include <utility>
#include <vector>

namespace sim {

// Everything the line's thread shares with the threads that drive it; each part guards
// itself. Faults, the log, pacing and noise belong to the line, whichever meter answers.
struct MeterSharedState {
    explicit MeterSharedState(std::vector<MeterModel> initial) : meters(std::move(initial)) {}

    MeterBus meters;
    FaultQueue faults;
    RequestLog log;
    // Line pacing: replies take the wire time of the line the master set, after the meter's
    // turnaround, and a line at another speed or with other stop bits than the meter's is not
    // understood. Without it the meter ignores the line's settings and answers after the
    // turnaround alone.
    std::atomic<bool> pacing{true};
    std::atomic<int> turnaroundMs{3};
    // A slow meter, or a gateway queueing requests: one request in `slowEvery` (0: none) is
    // answered `slowMs` late, and the requests that come meanwhile are all answered, in order,
    // each a turnaround after the reply before.
    std::atomic<int> slowEvery{0};
    std::atomic<int> slowMs{2050};
    // Line noise, see LineNoise; a burst of 0 ms: none.
    std::atomic<int> noiseBurstMs{0};
    std::atomic<int> noiseQuietMs{0};
};

} // namespace sim
