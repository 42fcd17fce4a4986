#include "sim/PacedWriter.h"

#include <unistd.h>

namespace sim {

PacedWriter::PacedWriter(QObject* parent) : QObject(parent), m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &PacedWriter::writeDue);
}

void PacedWriter::send(SteadyTime start, const QList<WireSegment>& segments, std::chrono::nanoseconds characterTime)
{
    SteadyTime lineFreeAt = start;
    for (const WireSegment& segment : segments) {
        lineFreeAt += segment.pauseBefore;
        for (char byte : segment.bytes) {
            lineFreeAt += characterTime;
            m_queue.push_back({byte, lineFreeAt});
        }
    }
    writeDue();
}

void PacedWriter::writeDue()
{
    const SteadyTime now = SteadyClock::now();
    QByteArray chunk;
    while (!m_queue.empty() && m_queue.front().due <= now) {
        chunk.append(m_queue.front().byte);
        m_queue.pop_front();
    }
    // A line with nobody listening fills up; like a cable with no far end, the bytes that
    // do not fit are lost.
    if (!chunk.isEmpty() && ::write(m_fd, chunk.constData(), size_t(chunk.size())) < 0) {
        // Nothing to recover: the reply is gone, as on a broken line.
    }
    if (m_queue.empty()) {
        if (!chunk.isEmpty())
            emit finished(now);
        return;
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(m_queue.front().due - now);
    m_timer.start(wait);
}

} // namespace sim
