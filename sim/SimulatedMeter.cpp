#include "sim/SimulatedMeter.h"

#include "sim/ModbusResponder.h"

#include <algorithm>
#include <tuple>
#include <unistd.h>

namespace sim {
namespace {

constexpr quint8 kBroadcastAddress = 0;

} // namespace

SimulatedMeter::SimulatedMeter(MeterSharedState& shared, QObject* parent)
    : QObject(parent), m_shared(shared), m_frameGap(this), m_writer(this)
{
    m_frameGap.setSingleShot(true);
    m_frameGap.setTimerType(Qt::PreciseTimer);
    connect(&m_frameGap, &QTimer::timeout, this, &SimulatedMeter::frameGapElapsed);
    connect(&m_writer, &PacedWriter::finished, this, &SimulatedMeter::replyFinished);
}

bool SimulatedMeter::open()
{
    m_notifier.reset();
    if (!m_pty.open())
        return false;
    m_writer.setDescriptor(m_pty.masterFd());
    m_notifier = std::make_unique<QSocketNotifier>(m_pty.masterFd(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SimulatedMeter::receive);
    return true;
}

void SimulatedMeter::receive()
{
    const SteadyTime now = SteadyClock::now();
    QByteArray bytes;
    char buffer[512];
    for (ssize_t n; (n = ::read(m_pty.masterFd(), buffer, sizeof buffer)) > 0;)
        bytes.append(buffer, n);
    if (bytes.isEmpty())
        return;
    m_line = m_shared.pacing ? SerialLineState::read(m_pty.masterFd()) : SerialLineState{};
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
    const auto [ownAddress, baud, stopBits] = m_shared.model.with([](MeterModel& model) {
        return std::tuple(model.slaveAddress(), model.baudRate(), model.stopBits());
    });
    // At another speed the meter's receiver sees only garbage, and with other stop bits its
    // UART reports framing errors: either way the request is dropped unread.
    if (m_shared.pacing && (m_line.baud != baud || m_line.stopBits != stopBits))
        return;
    const quint64 sequence = m_shared.log.append(frame.bytes, frame.firstByteAt);
    const auto address = static_cast<quint8>(frame.bytes.at(0));
    if (address == kBroadcastAddress) {
        // Everyone obeys a broadcast and nobody answers it.
        m_shared.model.with([&](MeterModel& model) { return ModbusResponder::answer(model, frame.bytes); });
        return;
    }
    // A half-duplex slave still answering one request does not take the next.
    if (address == ownAddress && !m_answering)
        answer(frame, sequence);
}

void SimulatedMeter::answer(const ReceivedFrame& frame, quint64 sequence)
{
    const std::optional<Fault> fault = m_shared.faults.takeNext();
    const QByteArray reply = fault && fault->kind == Fault::Kind::Exception
        ? ModbusResponder::exceptionReply(static_cast<quint8>(frame.bytes.at(0)), static_cast<quint8>(frame.bytes.at(1)), fault->exceptionCode)
        : m_shared.model.with([&](MeterModel& model) { return ModbusResponder::answer(model, frame.bytes); });
    const QList<WireSegment> segments = fault ? fault->shape(reply) : QList<WireSegment>{{reply}};
    if (segments.isEmpty())
        return;
    // The request reached the meter all at once, but on a real line it took a character
    // time per byte: the reply can start no sooner than that plus the meter's turnaround.
    const std::chrono::nanoseconds character = m_line.characterTime();
    const SteadyTime requestEnd = std::max<SteadyTime>(frame.lastByteAt, frame.firstByteAt + character * frame.bytes.size());
    m_answering = sequence;
    m_writer.send(requestEnd + std::chrono::milliseconds(m_shared.turnaroundMs.load()), segments, character);
}

void SimulatedMeter::replyFinished(SteadyTime at)
{
    if (m_answering)
        m_shared.log.noteReplyFinished(*m_answering, at);
    m_answering.reset();
}

} // namespace sim
