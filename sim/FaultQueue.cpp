#include "sim/FaultQueue.h"

namespace sim {

void FaultQueue::inject(const Fault& fault, int times)
{
    QMutexLocker lock(&m_mutex);
    for (int i = 0; i < times; ++i)
        m_faults.push_back(fault);
}

std::optional<Fault> FaultQueue::takeNext()
{
    QMutexLocker lock(&m_mutex);
    if (m_faults.empty())
        return std::nullopt;
    const Fault next = m_faults.front();
    m_faults.pop_front();
    return next;
}

} // namespace sim
