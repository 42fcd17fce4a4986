#include "connection/TrafficLog.h"

#include "link/RegisterLink.h"
#include "link/RtuFrames.h"
#include "measure/MeterReading.h"
#include "ports/Clock.h"

Q_LOGGING_CATEGORY(lcFrames, "qx5820.frames", QtWarningMsg)

namespace {

// Wide enough for "exception 2 (Illegal Data Address)".
constexpr int kOutcomeColumn = 36;

double Milliseconds(LinkClock::Time time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

} // namespace

TrafficLog::TrafficLog(const Clock& clock, QObject* parent) : QObject(parent), m_clock(clock)
{
    m_ring.reserve(kCapacity);
}

void TrafficLog::Add(const FrameEvent& frame)
{
    Entry entry{m_nextSerial++, m_clock.Now(), frame};
    qCDebug(lcFrames).noquote() << Line(entry);
    if (m_ring.size() < std::size_t(kCapacity)) {
        m_ring.push_back(std::move(entry));
    } else {
        m_ring[m_oldest] = std::move(entry);
        m_oldest = (m_oldest + 1) % m_ring.size();
    }
    Count(frame);
    emit added();
}

void TrafficLog::Count(const FrameEvent& frame)
{
    TrafficCounters& c = m_counters;
    switch (frame.outcome) {
    case FrameEvent::Outcome::Retry:
        ++c.retries;
        [[fallthrough]];
    case FrameEvent::Outcome::Sent:
        ++c.requests;
        break;
    case FrameEvent::Outcome::Good:
        ++c.goodReplies;
        c.lastResponseMs = Milliseconds(frame.sinceRequest);
        m_responseSumMs += c.lastResponseMs;
        c.meanResponseMs = m_responseSumMs / double(c.goodReplies);
        break;
    case FrameEvent::Outcome::CrcError:
        ++c.crcErrors;
        break;
    case FrameEvent::Outcome::AddressError:
        ++c.addressErrors;
        break;
    case FrameEvent::Outcome::Exception:
        ++c.exceptions;
        break;
    case FrameEvent::Outcome::WrongReply:
        break;
    case FrameEvent::Outcome::NoReply:
        ++c.timeOuts;
        break;
    case FrameEvent::Outcome::Garbled:
        ++c.garbled;
        break;
    }
}

void TrafficLog::NoteTick(const MeterReading& reading)
{
    const QDateTime start = reading.takenAt;
    m_tickStarts.push_back(start);
    while (m_tickStarts.front().msecsTo(start) >= 60'000)
        m_tickStarts.pop_front();
    m_counters.ticksPerMinute = int(m_tickStarts.size());
}

void TrafficLog::Clear()
{
    m_ring.clear();
    m_oldest = 0;
    m_counters = {};
    m_responseSumMs = 0;
    m_tickStarts.clear();
    emit added();
}

QList<TrafficLog::Entry> TrafficLog::EntriesFrom(quint64 serial) const
{
    QList<Entry> entries;
    for (std::size_t i = 0; i < m_ring.size(); ++i) {
        const Entry& entry = m_ring[(m_oldest + i) % m_ring.size()];
        if (entry.serial >= serial)
            entries.append(entry);
    }
    return entries;
}

QString TrafficLog::OutcomeText(const FrameEvent& frame)
{
    switch (frame.outcome) {
    case FrameEvent::Outcome::Sent:
        return QStringLiteral("request");
    case FrameEvent::Outcome::Retry:
        return QStringLiteral("retry, attempt %1 of %2").arg(frame.attempt).arg(RegisterLink::kAttempts);
    case FrameEvent::Outcome::Good:
        return QStringLiteral("good, %1 ms").arg(Milliseconds(frame.sinceRequest), 0, 'f', 1);
    case FrameEvent::Outcome::CrcError:
        return QStringLiteral("CRC error");
    case FrameEvent::Outcome::AddressError:
        return QStringLiteral("address error");
    case FrameEvent::Outcome::Exception:
        return QStringLiteral("exception %1 (%2)").arg(frame.exceptionCode).arg(Rtu::ExceptionName(frame.exceptionCode));
    case FrameEvent::Outcome::NoReply:
        return QStringLiteral("no reply");
    case FrameEvent::Outcome::Garbled:
        return QStringLiteral("garbled: bytes, no valid frame");
    case FrameEvent::Outcome::WrongReply:
        return QStringLiteral("reply to another request");
    }
    return QString();
}

QString TrafficLog::Line(const Entry& entry)
{
    const FrameEvent& f = entry.frame;
    const bool request = f.direction == FrameEvent::Direction::Request;
    // The outcome ahead of the bytes, in a column of its own: a long reply runs off the right.
    return QStringLiteral("%1  %2  %3  %4")
        .arg(entry.wallTime.toString(QStringLiteral("HH:mm:ss.zzz")), request ? QStringLiteral("TX") : QStringLiteral("RX"),
             OutcomeText(f).leftJustified(kOutcomeColumn),
             f.bytes.isEmpty() ? QStringLiteral("-") : QString::fromLatin1(f.bytes.toHex(' ').toUpper()));
}
