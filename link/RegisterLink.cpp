#include "link/RegisterLink.h"

#include "link/RtuFrames.h"
#include "link/Transport.h"
#include "link/Waits.h"
#include "link/WatchedFlag.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::chrono::milliseconds kFrameGap{RegisterLink::kFrameGapMs};

TransactionResult Result(TransactionResult::Kind kind, quint8 exception = 0)
{
    return {kind, exception};
}

QString ExceptionStatus(quint8 code)
{
    return QStringLiteral("Exception %1 (%2) from the meter").arg(QString::number(code), Rtu::ExceptionName(code));
}

} // namespace

QString TransactionResult::Text() const
{
    switch (kind) {
    case Good: return QStringLiteral("good");
    case TimedOut: return QStringLiteral("no reply");
    case Garbled: return QStringLiteral("bytes but no valid frame");
    case CrcError: return QStringLiteral("CRC error");
    case AddressError: return QStringLiteral("reply from another address");
    case Exception: return QStringLiteral("exception %1 (%2)").arg(exception).arg(Rtu::ExceptionName(exception));
    case WrongReply: return QStringLiteral("a reply to another request");
    case BusyLine: return RegisterLink::BusyLineText();
    case Abandoned: return QStringLiteral("the line went away");
    }
    return QString();
}

RegisterLink::RegisterLink(Transport& line, const WatchedFlag& bOnLine, QObject* parent)
    : RegisterLink(line, bOnLine, EventLoopClock(), parent)
{
}

RegisterLink::RegisterLink(Transport& line, const WatchedFlag& bOnLine, LinkClock& clock, QObject* parent)
    : QObject(parent), m_line(line), m_onLine(bOnLine), m_clock(clock)
{
}

TransactionResult RegisterLink::ReadRegisters(const qint16& address, quint8 function, quint16 start, quint16 count)
{
    if (!m_onLine.isTrue())
        return Result(TransactionResult::Abandoned);
    TxFrame = Rtu::ReadRequest(quint8(address & 0xFF), function, start, count);
    ExpectedLen = qint16(Rtu::ReadReplyLength(count));
    return Transact(address, true);
}

TransactionResult RegisterLink::WriteSingleRegister(const qint16& address, quint16 reg, quint16 value)
{
    bCommOK = kTrue;
    if (!m_onLine.isTrue())
        return Result(TransactionResult::Abandoned);
    TxFrame = Rtu::WriteSingleRequest(quint8(address & 0xFF), reg, value);
    ExpectedLen = qint16(Rtu::kWriteReplyLength);
    return Transact(address, false);
}

TransactionResult RegisterLink::WriteRegisters(const qint16& address, quint16 start, quint16 count, const QByteArray& data)
{
    bCommOK = kTrue;
    if (!m_onLine.isTrue())
        return Result(TransactionResult::Abandoned);
    TxFrame = Rtu::WriteMultipleRequest(quint8(address & 0xFF), start, count, data);
    ExpectedLen = qint16(Rtu::kWriteReplyLength);
    return Transact(address, false);
}

TransactionResult RegisterLink::WriteRegisters2(const qint16& address, quint16 start, qint16& count, const QByteArray& data)
{
    count = qint16(std::nearbyint(count / 2.0)); // the default rounding mode: halves to even
    return WriteRegisters(address, start, quint16(count), data);
}

TransactionResult RegisterLink::Transact(const qint16& address, bool isRead)
{
    bWaiting = kTrue;
    Rtu::Seal(crc, TxFrame);
    if (bShowFrames != kFalse)
        emit requestEcho(Rtu::FrameEcho(TxFrame));

    TransactionResult result;
    std::optional<LinkClock::Time> firstUnansweredAt;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        // After a spoiled reply its own text ("CRC Error", an exception, the busy line) stays
        // on show; after silence the operator learns that the tool is still trying.
        if (attempt > 1 && result.unanswered())
            emit statusText(RetryText(attempt, attempts));
        // A good reply ends the transaction, and so does a closed port or going off line.
        result = Attempt(address, isRead, attempt);
        if (result.unanswered() && !firstUnansweredAt)
            firstUnansweredAt = m_sentAt;
        if (!result.gaveUp()) {
            if (result.good() && firstUnansweredAt)
                KeepLineForOwedReplies(*firstUnansweredAt);
            bWaiting = kFalse;
            return result;
        }
    }
    emit statusText(GiveUpText(attempts));
    bWaiting = kFalse;
    bCommOK = kFalse;
    emit gaveUp(result.kind == TransactionResult::BusyLine ? GiveUpText(attempts) + QStringLiteral(" (") + BusyLineText() + QLatin1Char(')')
                                                           : GiveUpText(attempts),
                result);
    return result;
}

// The third rule against late replies (the first two are below Attempt). A meter or gateway
// that answers late answers every attempt, in order: the reply just taken may be the one to an
// earlier attempt, and the replies still owed come after it. So after a transaction in which
// an attempt went unanswered, the next request waits until they are in, and drops them.
// How long: the reply taken came (good − first unanswered send) after that send at the most;
// a meter as slow on every attempt answers the last one by (last send + the same), and an
// in-order queue does not push it later, since attempts are a reply time-out (2 s) apart and a
// reply with its turnaround takes far less. A quarter of the reply time-out (500 ms) is added
// for a meter whose delay varies. The field case: late by 2.05 s, attempts 2.0 s apart: the
// reply to the first is taken at 2.08 s, that to the retry comes by 2.0 + 2.08 = 4.08 s, and
// the next request waits to 4.58 s. A reply lost for good costs the same wait once.
void RegisterLink::KeepLineForOwedReplies(LinkClock::Time firstUnansweredAt)
{
    m_owedUntil = m_sentAt + (m_lastByteAt - firstUnansweredAt) + std::chrono::milliseconds(replyTimeoutMs) / 4;
}

// Why a reply to an earlier request is not taken for this one's. A meter may answer late,
// after our two seconds, while we retry, and then answer the retry as well: two replies of
// the same length back to back. Two rules keep them from the next request:
//   - The request goes out only after kFrameGapMs of silence since the last byte received;
//     whatever arrives meanwhile is dropped and the silence starts again.
//   - A reply cannot be whole before the request and then the reply have crossed the wire:
//     (request + reply length) × the character time after the send. Bytes that make up the
//     awaited length sooner began before the request had left; they are the end of an
//     earlier reply, or one the driver held back, and are dropped.
// Together they never take a late reply that starts within kFrameGapMs + the request's wire
// time of the one before (8-byte request: 12 + 8 × 0.52 = 16.2 ms at 19200 baud, 20.3 ms at
// 9600). The meter that showed the fault started its second reply 8 ms + the retry's wire time
// after the first. A reply that starts after our request has left the wire looks like an
// answer to it. Whatever is left misaligned (part of an earlier reply ahead of ours) fails the
// address or CRC check. A pseudo-terminal has no character time: there only the first rule holds.
TransactionResult RegisterLink::Attempt(const qint16& address, bool isRead, int attempt)
{
    if (quint8(TxFrame.at(0)) != quint8(address & 0xFF)) {
        TxFrame[0] = char(address & 0xFF);
        Rtu::Seal(crc, TxFrame);
    }
    const TransactionResult abandoned = Result(TransactionResult::Abandoned);
    const Silence silence = AwaitSilence();
    if (silence == Silence::Cut || !StillConnected())
        return abandoned;
    if (silence == Silence::Busy) {
        emit statusText(BusyLineText());
        return Result(TransactionResult::BusyLine);
    }
    // Emptying the input of a port that has just vanished closes it and takes the tool off
    // line there and then: nothing is sent on it.
    m_line.discardInput();
    if (!StillConnected())
        return abandoned;
    m_sentAt = m_clock.now();
    m_line.send(TxFrame);
    m_earliestReplyEnd = m_sentAt + (TxFrame.size() + ExpectedLen) * m_line.characterTime();
    emit frame({m_sentAt, FrameEvent::Direction::Request,
                attempt == 1 ? FrameEvent::Outcome::Sent : FrameEvent::Outcome::Retry, TxFrame, attempt, 0, {}});

    const Reception reception = AwaitReply(m_sentAt + std::chrono::milliseconds(replyTimeoutMs));
    if (reception == Reception::Cut || !StillConnected())
        return abandoned;
    if (reception == Reception::TimedOut) {
        if (const std::optional<quint8> code = NoteException()) {
            ReportReply(FrameEvent::Outcome::Exception, attempt, *code);
            return Result(TransactionResult::Exception, *code);
        }
        // Our own echo, or part of it, is no sign of the meter; anything else is a reply
        // spoiled on its way: a wrong baud rate, swapped A and B, noise.
        if (m_rx.isEmpty() || TxFrame.startsWith(m_rx)) {
            ReportReply(FrameEvent::Outcome::NoReply, attempt);
            return Result(TransactionResult::TimedOut);
        }
        ReportReply(FrameEvent::Outcome::Garbled, attempt);
        return Result(TransactionResult::Garbled);
    }
    return JudgeReply(isRead, attempt);
}

// A whole reply of the awaited length: from the meter addressed, sound, and an answer to this
// request (its function, and a read's byte count). An exception padded out to the length with
// a matching CRC is the meter's refusal all the same, never data.
TransactionResult RegisterLink::JudgeReply(bool isRead, int attempt)
{
    if (quint8(m_rx.at(0)) != quint8(ModbusAddress & 0xFF)) {
        ReportReply(FrameEvent::Outcome::AddressError, attempt);
        emit statusText(QStringLiteral("Address Error"));
        return Result(TransactionResult::AddressError);
    }
    if (!Rtu::CrcMatches(crc, m_rx, ExpectedLen)) {
        ReportReply(FrameEvent::Outcome::CrcError, attempt);
        emit statusText(QStringLiteral("CRC Error"));
        return Result(TransactionResult::CrcError);
    }
    const quint8 function = quint8(TxFrame.at(1));
    if (quint8(m_rx.at(1)) == (function | 0x80)) {
        const quint8 code = quint8(m_rx.at(2));
        ReportReply(FrameEvent::Outcome::Exception, attempt, code);
        emit statusText(ExceptionStatus(code));
        return Result(TransactionResult::Exception, code);
    }
    if (quint8(m_rx.at(1)) != function || (isRead && quint8(m_rx.at(2)) != ExpectedLen - 5)) {
        ReportReply(FrameEvent::Outcome::WrongReply, attempt);
        emit statusText(QStringLiteral("Reply Error"));
        return Result(TransactionResult::WrongReply);
    }
    ReportReply(FrameEvent::Outcome::Good, attempt);
    if (isRead)
        StoreReadData(m_rx);
    return Result(TransactionResult::Good);
}

// The reply of an attempt as judged, with the bytes it was judged on: the whole reply, or
// what arrived before the time-out.
void RegisterLink::ReportReply(FrameEvent::Outcome outcome, int attempt, quint8 code)
{
    const LinkClock::Time now = m_clock.now();
    // A copy of just the bytes: the receive buffer keeps the port's large capacity, which the
    // traffic log would otherwise hold for every reply it keeps.
    const QByteArray bytes(m_rx.constData(), m_rx.size());
    emit frame({now, FrameEvent::Direction::Reply, outcome, bytes, attempt, code, now - m_sentAt});
}

bool RegisterLink::StillConnected() const
{
    return m_line.isOpen() && m_onLine.isTrue();
}

// False when the wait was cut short: off line, the port closed, or the application quitting.
bool RegisterLink::Wait(LinkClock::Time deadline)
{
    return StillConnected() && m_clock.waitUntil(deadline, m_onLine, &m_line) && StillConnected();
}

// Moves what the line received into m_rx and notes when it came.
bool RegisterLink::TakeArrivals()
{
    const QByteArray bytes = m_line.takeAll();
    if (bytes.isEmpty())
        return false;
    m_rx += bytes;
    m_lastByteAt = m_clock.now();
    return true;
}

// The silence before a request, to the nanosecond: the request may go as soon as kFrameGapMs
// have passed since the last byte (and any replies still owed are in), not at the next whole
// millisecond of a counter. Another master or an unbiased, noisy pair may never leave the line
// quiet that long: after a reply time-out of waiting the attempt fails as a busy line.
RegisterLink::Silence RegisterLink::AwaitSilence()
{
    const LinkClock::Time busyAt = std::max(m_clock.now(), m_owedUntil) + std::chrono::milliseconds(replyTimeoutMs);
    for (;;) {
        TakeArrivals();
        m_rx.clear();
        const LinkClock::Time quiet = std::max(m_lastByteAt + kFrameGap, m_owedUntil);
        const LinkClock::Time now = m_clock.now();
        if (now >= quiet)
            return Silence::Kept;
        if (now >= busyAt)
            return Silence::Busy;
        if (!Wait(std::min(quiet, busyAt)))
            return Silence::Cut;
    }
}

RegisterLink::Reception RegisterLink::AwaitReply(LinkClock::Time deadline)
{
    for (;;) {
        if (TakeArrivals() && ReplyComplete())
            return Reception::Complete;
        if (m_clock.now() >= deadline)
            return Reception::TimedOut;
        if (!Wait(deadline))
            return Reception::Cut;
    }
}

// Whether m_rx now holds a reply to judge (address and CRC), with the echo and stale rules.
bool RegisterLink::ReplyComplete()
{
    // A 2-wire adapter hands our own request back ahead of the reply: once more follows, the
    // reply is behind it.
    if (m_rx.size() > TxFrame.size() && m_rx.startsWith(TxFrame))
        m_rx.remove(0, TxFrame.size());
    if (m_rx.size() < ExpectedLen)
        return false;
    const bool onlyOurEcho = TxFrame.startsWith(m_rx);
    if (m_lastByteAt < m_earliestReplyEnd) {
        // Too soon for a reply to this request: our echo stays, its reply follows; anything
        // else is the end of an earlier reply (see Attempt).
        if (!onlyOurEcho)
            m_rx.clear();
        return false;
    }
    // What is still only our echo, or its start, is judged only as a whole valid frame: a
    // function-6 reply is identical to its request, while the first 8 bytes of a function-16
    // echo would pass for a reply with a bad CRC.
    return !onlyOurEcho || Rtu::CrcMatches(crc, m_rx, ExpectedLen);
}

// An attempt that timed out may hold an exception reply, which is too short to be judged as
// a reply: it fails all the same, but the meter's reason is noted and shown.
std::optional<quint8> RegisterLink::NoteException()
{
    const std::optional<quint8> code =
        Rtu::ExceptionCode(crc, m_rx, quint8(ModbusAddress & 0xFF), quint8(TxFrame.at(1)));
    if (code)
        emit statusText(ExceptionStatus(*code));
    return code;
}

void RegisterLink::StoreReadData(const QByteArray& reply)
{
    const QByteArray data = reply.mid(3, ExpectedLen - 5);
    if (RxUpperBound() == 0)
        RxData = data;
    else
        RxData += data;
}
