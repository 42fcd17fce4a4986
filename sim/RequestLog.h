#pragma once

#include "sim/SteadyTime.h"

#include <QByteArray>
#include <QList>
#include <QMutex>

#include <optional>

namespace sim {

// A request frame the meter understood (good CRC, at its line speed), whoever it was for.
struct LoggedRequest {
    quint64 sequence = 0;
    QByteArray frame;                          // address to CRC
    SteadyTime receivedAt;                     // when its first byte arrived
    std::optional<SteadyTime> replyFinishedAt; // when the meter's last reply byte left
};

// The requests the meter received, in order, for tests to check the exact wire traffic
// (and the gaps the master keeps). Written by the meter's thread, read by any.
class RequestLog {
public:
    // The most recent requests kept: a meter left running for days must not grow without end.
    static constexpr qsizetype kKept = 4096;

    quint64 append(const QByteArray& frame, SteadyTime receivedAt);
    void noteReplyFinished(quint64 sequence, SteadyTime at);

    QList<LoggedRequest> entries() const;
    // The entries, leaving the log empty; nothing arriving meanwhile is lost.
    QList<LoggedRequest> take();
    void clear();

private:
    mutable QMutex m_mutex;
    QList<LoggedRequest> m_entries;
    quint64 m_nextSequence = 1;
};

} // namespace sim
