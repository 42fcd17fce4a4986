#pragma once

#include "sim/Fault.h"

#include <QMutex>

#include <deque>
#include <optional>

namespace sim {

// Faults waiting for the requests the meter answers, first injected first used. Filled by
// tests on their thread, drained by the meter on its own.
class FaultQueue {
public:
    // `fault` spoils each of the next `times` replies (after any already queued).
    void inject(const Fault& fault, int times = 1);
    std::optional<Fault> takeNext();

private:
    QMutex m_mutex;
    std::deque<Fault> m_faults;
};

} // namespace sim
