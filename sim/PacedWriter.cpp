#include "sim/PacedWriter.h"

#include <sys/socket.h>
#include <unistd.h>

namespace sim {

// A line that nobody reads fills up; like bytes sent down a cable with no far end, what
// does not fit is lost. A network client that has left takes the rest with it, and must not
// end the process with SIGPIPE.
void PutOnLine(int fd, bool socket, const QByteArray& bytes)
{
    [[maybe_unused]] const ssize_t taken = socket
        ? ::send(fd, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL)
        : ::write(fd, bytes.constData(), size_t(bytes.size()));
}

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

void PacedWriter::cancel()
{
    m_timer.stop();
    m_queue.clear();
}

void PacedWriter::writeDue()
{
    const SteadyTime now = SteadyClock::now();
    QByteArray chunk;
    while (!m_queue.empty() && m_queue.front().due <= now) {
        chunk.append(m_queue.front().byte);
        m_queue.pop_front();
    }
    // Reported before the last bytes leave, so that whoever receives them finds the reply
    // already counted.
    if (m_queue.empty() && !chunk.isEmpty())
        emit finished(now);
    if (!chunk.isEmpty())
        PutOnLine(m_fd, m_socket, chunk);
    if (!m_queue.empty())
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(m_queue.front().due - now));
}

} // namespace sim
