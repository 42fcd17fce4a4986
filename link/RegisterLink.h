#pragma once

#include "link/Bool16.h"
#include "link/Crc16.h"
#include "link/FrameEvent.h"
#include "link/LinkClock.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include <optional>

class Transport;
class WatchedFlag;

// How a transaction ended: a good reply, or why there was none. A transaction that gave up
// after its attempts carries the failure of its last attempt. `bCommOK` and the status line
// tell the same story in the tool's own flag and words.
struct TransactionResult {
    enum Kind {
        Good,         // a good reply was taken
        TimedOut,     // nothing but our own echo within the attempt's wait
        Garbled,      // bytes within the attempt's wait, but never a valid frame: baud rate, A/B, noise
        CrcError,     // a reply whose CRC did not match
        AddressError, // a reply from another address
        Exception,    // the meter answered with an exception, code in `exception`
        WrongReply,   // a whole, sound frame that does not answer the request (function, byte count)
        BusyLine,     // the line never fell silent long enough for the request to go out
        Abandoned,    // the port closed or the tool went off line before a good reply came
    };
    Kind kind = Good;
    quint8 exception = 0;

    bool good() const { return kind == Good; }
    // The attempt ran out its wait without a frame to judge.
    bool unanswered() const { return kind == TimedOut || kind == Garbled; }
    // Every attempt failed on the line: the tool goes off line.
    bool gaveUp() const { return kind != Good && kind != Abandoned; }
    // In the operator's words: "no reply", "CRC error", "exception 2 (Illegal Data Address)".
    QString Text() const;
    friend bool operator==(const TransactionResult&, const TransactionResult&) = default;
};

// The register transactions with the meter. Each one blocks its caller until a good reply is
// taken or five attempts have failed, yielding to the event loop while it waits. Each returns
// its outcome and keeps `bCommOK` as well; a read appends the reply's data bytes to `RxData`.
//
// The address argument is taken by reference on purpose: callers pass `ModbusAddress`, and an
// address the operator changes while a transaction is retrying is used from the next attempt.
//
// A request goes out only after kFrameGapMs of silence since the last byte received, and a
// reply is taken only if it could have come in answer to it: see RegisterLink.cpp.
//
// An exception reply (5 bytes) never makes the awaited length, so its attempt runs out its
// two seconds and fails like an unanswered one, and the transaction retries and gives up as
// for silence. The link only names it: the result keeps its code and the status line shows
// "Exception 2 (Illegal Data Address) from the meter". One padded to the awaited length fails
// its attempt at once, named the same way.
class RegisterLink : public QObject {
    Q_OBJECT
public:
    static constexpr int kAttempts = 5;
    // The status text of a transaction that gave up; also the reason the tool went off line.
    static QString GiveUpText(int attempts = kAttempts) { return QStringLiteral("Communication Error! Retry %1 times!").arg(attempts); }
    // The status text of an attempt that found no silence to send its request in.
    static QString BusyLineText()
    {
        return QStringLiteral("the line is busy: bytes arrive without pause; another master or noise on the line?");
    }
    // The status text while attempt `attempt` runs after an unanswered one: the tool is not frozen.
    static QString RetryText(int attempt, int attempts = kAttempts)
    {
        return QStringLiteral("no reply, attempt %1 of %2").arg(attempt).arg(attempts);
    }
    // Reply wait of one attempt, from the request's send: 200 looks × 10 ms = 2 s.
    static constexpr qint32 kReplyTimeoutMs = 200 * 10;
    // Silence kept between the last byte received and the next request. The meter ends a
    // request after 3.5 characters of silence, at most 3.5 × 11 bits / 9600 baud = 4.0 ms on
    // the slowest line the tool sets up; 12 ms is three times that.
    static constexpr qint32 kFrameGapMs = 12;

    RegisterLink(Transport& line, const WatchedFlag& bOnLine, QObject* parent = nullptr);
    // The same on another clock: tests run the link on virtual time.
    RegisterLink(Transport& line, const WatchedFlag& bOnLine, LinkClock& clock, QObject* parent = nullptr);

    TransactionResult ReadRegisters(const qint16& address, quint8 function, quint16 start, quint16 count);
    // Function 6. The tool itself writes with function 16 only; this one is kept for the
    // meter's single-register write, which the interoperability tests exercise.
    TransactionResult WriteSingleRegister(const qint16& address, quint16 reg, quint16 value);
    // `data` holds two bytes per register, high byte first.
    TransactionResult WriteRegisters(const qint16& address, quint16 start, quint16 count, const QByteArray& data);
    // Like WriteRegisters, given the number of data bytes instead of registers. The count is
    // turned into registers (halved, halves to even) in the caller's own variable, which is
    // taken by reference: after the call the caller holds the register count that was sent.
    TransactionResult WriteRegisters2(const qint16& address, quint16 start, qint16& count, const QByteArray& data);

    void BuildCrcTables() { crc.BuildCrcTables(); }
    // Empties RxData to its single-element start state before a series of reads.
    void ResetRxData() { RxData = QByteArray(1, '\0'); }
    qsizetype RxUpperBound() const { return RxData.size() - 1; }

    Crc16 crc;
    QByteArray TxFrame;
    QByteArray RxData = QByteArray(1, '\0');
    qint16 ExpectedLen = 0;
    Bool16 bWaiting = kFalse;
    Bool16 bCommOK = kFalse;
    qint16 ModbusAddress = 0;
    Bool16 bShowFrames = kFalse;
    // How long one attempt waits for its reply, and how many attempts a transaction makes. The
    // window keeps the meter's 2 s and 5; a scan for meters tries each address once, briefly,
    // and a script may wait longer for a slow gateway.
    qint32 replyTimeoutMs = kReplyTimeoutMs;
    int attempts = kAttempts;

signals:
    // A link message for the status line ("CRC Error", "Address Error", an exception the
    // meter sent, the give-up text).
    void statusText(const QString& text);
    // The request echo, sent once per transaction while bShowFrames is set.
    void requestEcho(const QString& text);
    // Five attempts failed: the tool must go off line, for `reason` (the give-up text, with
    // the busy line named when that was why); `last` is how the last attempt failed.
    void gaveUp(const QString& reason, const TransactionResult& last);
    // Each request sent and each attempt's reply or time-out, for the traffic monitor.
    void frame(const FrameEvent& event);

private:
    enum class Reception { Complete, TimedOut, Cut };
    enum class Silence { Kept, Busy, Cut };

    TransactionResult Transact(const qint16& address, bool isRead);
    TransactionResult Attempt(const qint16& address, bool isRead, int attempt);
    void ReportReply(FrameEvent::Outcome outcome, int attempt, quint8 exception = 0);
    bool StillConnected() const;
    bool Wait(LinkClock::Time deadline);
    bool TakeArrivals();
    Silence AwaitSilence();
    Reception AwaitReply(LinkClock::Time deadline);
    bool ReplyComplete();
    TransactionResult JudgeReply(bool isRead, int attempt);
    std::optional<quint8> NoteException();
    void KeepLineForOwedReplies(LinkClock::Time firstUnansweredAt);
    void StoreReadData(const QByteArray& reply);

    Transport& m_line;
    const WatchedFlag& m_onLine;
    LinkClock& m_clock;
    QByteArray m_rx;                      // bytes received since the request went out
    LinkClock::Time m_lastByteAt{};       // when the last byte was received, to the nanosecond
    LinkClock::Time m_earliestReplyEnd{}; // the soonest a reply to the request can be whole
    LinkClock::Time m_sentAt{};           // when the latest request went out
    LinkClock::Time m_owedUntil{};        // replies to earlier attempts may come until then
};
