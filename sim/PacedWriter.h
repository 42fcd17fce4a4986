#pragma once

#include "sim/SteadyTime.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>

namespace sim {

// A run of reply bytes that leave back to back, after a pause on the line.
struct WireSegment {
    QByteArray bytes;
    std::chrono::milliseconds pauseBefore{0};
};

// Writes `bytes` to the meter's end of the line, a pseudo-terminal or a network client
// (`socket`). What does not fit is lost, as down a cable with no far end.
void PutOnLine(int fd, bool socket, const QByteArray& bytes);

// Writes bytes to a descriptor no sooner than a real line would have delivered them. Each
// byte is due once it has had a character time on the wire; a precise single-shot timer
// wakes when the next byte is due and writes everything due by then in one go.
class PacedWriter : public QObject {
    Q_OBJECT
public:
    explicit PacedWriter(QObject* parent = nullptr);

    // The descriptor to write to; `socket` when it is a network client's.
    void setLine(int fd, bool socket)
    {
        m_fd = fd;
        m_socket = socket;
    }
    // Drops what is still to be sent: the line it was meant for has gone.
    void cancel();

    // Sends the segments in turn: the first begins `pauseBefore` after `start`, each later
    // one `pauseBefore` after the previous one's last byte.
    void send(SteadyTime start, const QList<WireSegment>& segments, std::chrono::nanoseconds characterTime);

signals:
    void finished(SteadyTime lastByteAt);

private:
    struct DueByte {
        char byte;
        SteadyTime due;
    };

    void writeDue();

    int m_fd = -1;
    bool m_socket = false;
    std::deque<DueByte> m_queue;
    QTimer m_timer;
};

} // namespace sim
