#pragma once

#include "sim/ClientListener.h"
#include "sim/LineNoise.h"
#include "sim/MeterSharedState.h"
#include "sim/PacedWriter.h"
#include "sim/PseudoTerminal.h"
#include "sim/RequestAssembler.h"
#include "sim/SerialLineState.h"

#include <QList>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <deque>
#include <memory>
#include <optional>

namespace sim {

// The QX-5820 as a Modbus RTU slave on a pseudo-terminal, or behind a device server on a TCP
// port; or several of them sharing that line, each at its own address. Lives on the thread
// whose event loop serves it (see SimulatedMeterHost): it reads requests as they arrive,
// answers from the shared register model of the meter addressed and, on the pseudo-terminal,
// paces its replies like a real line.
class SimulatedMeter : public QObject {
    Q_OBJECT
public:
    explicit SimulatedMeter(MeterSharedState& shared, QObject* parent = nullptr);
    ~SimulatedMeter() override;

    // Opens a new pseudo-terminal and starts listening on it; false with errorString().
    bool open();
    // Listens on TCP port `port` of 127.0.0.1 (0: any free port) and serves one client at a
    // time, the next once the current one has left; false with errorString().
    bool listen(quint16 port);
    // What a client opens: the pseudo-terminal's device path or "tcp://127.0.0.1:<port>".
    QString address() const;
    QString errorString() const { return m_error; }
    // Starts the line noise the shared state asks for, or stops it.
    void startNoise();

private:
    // A reply waiting for the line: a slow meter queues them.
    struct QueuedReply {
        quint64 sequence; // of its request in the log
        SteadyTime earliest;
        QList<WireSegment> segments;
        std::chrono::nanoseconds character; // of the line the request came at
    };

    void serve(int fd, bool socket);
    void takeClient(int fd);
    void serveNextClient();
    void dropClient();
    bool paced() const;
    void receive();
    void frameGapElapsed();
    void handle(const ReceivedFrame& frame);
    void answer(BusMeter& meter, const ReceivedFrame& frame, quint64 sequence);
    std::chrono::milliseconds lateness();
    void sendNextReply(SteadyTime lineFreeAt);
    void replyFinished(SteadyTime at);

    MeterSharedState& m_shared;
    PseudoTerminal m_pty;
    std::unique_ptr<ClientListener> m_listener;
    int m_client = -1; // the network client's descriptor while one is served
    QList<int> m_waiting; // clients connected meanwhile, to be served next
    int m_fd = -1;     // the descriptor served: the pseudo-terminal's master side or the client
    std::unique_ptr<QSocketNotifier> m_notifier; // after m_pty: released before the descriptor closes
    RequestAssembler m_assembler;
    SerialLineState m_line;
    QTimer m_frameGap;
    PacedWriter m_writer;
    std::optional<quint64> m_answering; // log sequence of the request whose reply is under way
    std::deque<QueuedReply> m_replies;  // replies to send after it, in order
    quint64 m_requestsAnswered = 0;
    LineNoise m_noise;
    QString m_error;
};

} // namespace sim
