#pragma once

#include "sim/FaultQueue.h"
#include "sim/MeterModel.h"
#include "sim/RequestLog.h"

#include <QMutex>

#include <atomic>
#include <utility>

namespace sim {

// The register model behind a lock: the meter's thread answers from it while tests and the
// tool's window read and change it from theirs.
class SharedMeterModel {
public:
    explicit SharedMeterModel(MeterModel model) : m_model(std::move(model)) {}

    template <class Function>
    auto with(Function&& function)
    {
        QMutexLocker lock(&m_mutex);
        return std::forward<Function>(function)(m_model);
    }

private:
    QMutex m_mutex;
    MeterModel m_model;
};

// Everything the meter's thread shares with the threads that drive it; each part guards
// itself.
struct MeterSharedState {
    explicit MeterSharedState(MeterModel initial) : model(std::move(initial)) {}

    SharedMeterModel model;
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
