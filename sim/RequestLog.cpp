#include "sim/RequestLog.h"

#include <utility>

namespace sim {

quint64 RequestLog::append(const QByteArray& frame, SteadyTime receivedAt)
{
    QMutexLocker lock(&m_mutex);
    m_entries.append({m_nextSequence, frame, receivedAt, std::nullopt});
    if (m_entries.size() > kKept)
        m_entries.removeFirst();
    return m_nextSequence++;
}

void RequestLog::noteReplyFinished(quint64 sequence, SteadyTime at)
{
    QMutexLocker lock(&m_mutex);
    for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
        if (it->sequence == sequence) {
            it->replyFinishedAt = at;
            return;
        }
    }
}

QList<LoggedRequest> RequestLog::entries() const
{
    QMutexLocker lock(&m_mutex);
    return m_entries;
}

QList<LoggedRequest> RequestLog::take()
{
    QMutexLocker lock(&m_mutex);
    return std::exchange(m_entries, {});
}

void RequestLog::clear()
{
    QMutexLocker lock(&m_mutex);
    m_entries.clear();
}

} // namespace sim
