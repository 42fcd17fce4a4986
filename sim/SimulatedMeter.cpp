#include "sim/SimulatedMeter.h"

#include "sim/ModbusResponder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sim {
namespace {

constexpr quint8 kBroadcastAddress = 0;

} // namespace

SimulatedMeter::SimulatedMeter(MeterSharedState& shared, QObject* parent)
    : QObject(parent), m_shared(shared), m_frameGap(this), m_writer(this), m_noise(this)
{
    m_frameGap.setSingleShot(true);
    m_frameGap.setTimerType(Qt::PreciseTimer);
    connect(&m_frameGap, &QTimer::timeout, this, &SimulatedMeter::frameGapElapsed);
    connect(&m_writer, &PacedWriter::finished, this, &SimulatedMeter::replyFinished);
}

SimulatedMeter::~SimulatedMeter()
{
    m_notifier.reset();
    if (m_client >= 0)
        ::close(m_client);
    for (int fd : std::as_const(m_waiting))
        ::close(fd);
}

bool SimulatedMeter::open()
{
    if (!m_pty.open()) {
        m_error = m_pty.errorString();
        return false;
    }
    serve(m_pty.masterFd(), false);
    return true;
}

bool SimulatedMeter::listen(quint16 port)
{
    m_listener = std::make_unique<ClientListener>();
    connect(m_listener.get(), &ClientListener::clientArrived, this, &SimulatedMeter::takeClient);
    if (m_listener->listen(QHostAddress::LocalHost, port))
        return true;
    m_error = m_listener->errorString();
    m_listener.reset();
    return false;
}

QString SimulatedMeter::address() const
{
    if (m_listener)
        return QStringLiteral("tcp://127.0.0.1:%1").arg(m_listener->serverPort());
    return m_pty.slavePath();
}

void SimulatedMeter::serve(int fd, bool socket)
{
    m_fd = fd;
    m_writer.setLine(fd, socket);
    m_noise.setLine(fd, socket);
    startNoise();
    m_notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SimulatedMeter::receive);
}

void SimulatedMeter::takeClient(int fd)
{
    // Like a device server with one serial line, the meter serves one client at a time; the
    // others wait their turn, connected, in the order they came.
    m_listener->pauseAccepting();
    m_waiting.append(fd);
    if (m_client < 0)
        serveNextClient();
}

void SimulatedMeter::serveNextClient()
{
    if (m_waiting.isEmpty()) {
        m_listener->resumeAccepting();
        return;
    }
    m_client = m_waiting.takeFirst();
    // Read like the pseudo-terminal: until nothing more is there, never blocking.
    ::fcntl(m_client, F_SETFL, ::fcntl(m_client, F_GETFL) | O_NONBLOCK);
    serve(m_client, true);
}

void SimulatedMeter::dropClient()
{
    // Called from the notifier's own signal: it is deleted once that has returned.
    m_notifier->setEnabled(false);
    QSocketNotifier* notifier = m_notifier.release();
    notifier->setParent(this);
    notifier->deleteLater();
    ::close(m_client);
    m_client = m_fd = -1;
    m_frameGap.stop();
    m_writer.cancel();
    m_noise.setLine(-1, false);
    m_assembler = RequestAssembler();
    m_answering.reset();
    m_replies.clear();
    serveNextClient();
}

bool SimulatedMeter::paced() const
{
    // A network client's bytes cross a device server whose serial side is not modelled:
    // there is neither a line speed to check nor a wire time to keep.
    return m_shared.pacing && !m_listener;
}

void SimulatedMeter::receive()
{
    const SteadyTime now = SteadyClock::now();
    QByteArray bytes;
    char buffer[512];
    ssize_t n;
    while ((n = ::read(m_fd, buffer, sizeof buffer)) > 0)
        bytes.append(buffer, n);
    // A client that left reads as the end of its stream, or as a reset. The pseudo-terminal
    // never ends: the meter keeps its slave side open.
    if (m_client >= 0 && (n == 0 || (errno != EAGAIN && errno != EWOULDBLOCK))) {
        dropClient();
        return;
    }
    if (bytes.isEmpty())
        return;
    m_line = paced() ? SerialLineState::read(m_fd) : SerialLineState{};
    for (const ReceivedFrame& frame : m_assembler.append(bytes, now))
        handle(frame);
    m_frameGap.start(std::chrono::ceil<std::chrono::milliseconds>(m_line.frameGap()));
}

void SimulatedMeter::frameGapElapsed()
{
    if (const std::optional<ReceivedFrame> frame = m_assembler.silence())
        handle(*frame);
}

void SimulatedMeter::handle(const ReceivedFrame& frame)
{
    // At another speed a meter's receiver sees only garbage, and with other stop bits its
    // UART reports framing errors: either way that meter drops the request unread.
    QList<BusMeter*> hearing;
    for (BusMeter& meter : m_shared.meters) {
        const bool understood = !paced() || meter.model.with([&](MeterModel& model) {
            return model.baudRate() == m_line.baud && model.stopBits() == m_line.stopBits;
        });
        if (understood)
            hearing.append(&meter);
    }
    if (hearing.isEmpty())
        return;
    const quint64 sequence = m_shared.log.append(frame.bytes, frame.firstByteAt);
    const auto address = static_cast<quint8>(frame.bytes.at(0));
    for (BusMeter* meter : std::as_const(hearing)) {
        if (meter->silent)
            continue;
        if (address == kBroadcastAddress) {
            // Everyone obeys a broadcast and nobody answers it.
            m_shared.meters.answer(*meter, frame.bytes);
        } else if (meter->address() == address) {
            // A half-duplex line still carrying one reply takes no next request; a slow meter
            // queues it.
            if (!m_answering || m_shared.slowEvery > 0)
                answer(*meter, frame, sequence);
            return;
        }
    }
}

void SimulatedMeter::answer(BusMeter& meter, const ReceivedFrame& frame, quint64 sequence)
{
    const std::optional<Fault> fault = m_shared.faults.takeNext();
    const QByteArray reply = fault && fault->kind == Fault::Kind::Exception
        ? ModbusResponder::exceptionReply(static_cast<quint8>(frame.bytes.at(0)), static_cast<quint8>(frame.bytes.at(1)), fault->exceptionCode)
        : m_shared.meters.answer(meter, frame.bytes);
    const QList<WireSegment> segments = fault ? fault->shape(reply) : QList<WireSegment>{{reply}};
    if (segments.isEmpty())
        return;
    // The request reached the meter all at once, but on a real line it took a character
    // time per byte: the reply can start no sooner than that plus the meter's turnaround.
    const std::chrono::nanoseconds character = m_line.characterTime();
    const SteadyTime requestEnd = std::max<SteadyTime>(frame.lastByteAt, frame.firstByteAt + character * frame.bytes.size());
    m_replies.push_back({sequence, requestEnd + std::chrono::milliseconds(m_shared.turnaroundMs.load()) + lateness(), segments, character});
    if (!m_answering)
        sendNextReply(SteadyTime{});
}

std::chrono::milliseconds SimulatedMeter::lateness()
{
    const int every = m_shared.slowEvery;
    return std::chrono::milliseconds(every > 0 && ++m_requestsAnswered % quint64(every) == 0 ? m_shared.slowMs.load() : 0);
}

// The next queued reply, once due and a turnaround after the line became free.
void SimulatedMeter::sendNextReply(SteadyTime lineFreeAt)
{
    if (m_replies.empty())
        return;
    const QueuedReply next = m_replies.front();
    m_replies.pop_front();
    m_answering = next.sequence;
    const SteadyTime start = std::max(next.earliest, lineFreeAt + std::chrono::milliseconds(m_shared.turnaroundMs.load()));
    m_writer.send(start, next.segments, next.character);
}

void SimulatedMeter::replyFinished(SteadyTime at)
{
    if (m_answering)
        m_shared.log.noteReplyFinished(*m_answering, at);
    m_answering.reset();
    sendNextReply(at);
}

void SimulatedMeter::startNoise()
{
    m_noise.start(m_shared.noiseBurstMs, m_shared.noiseQuietMs);
}

} // namespace sim
