#pragma once

#include "link/Bool16.h"
#include "link/Crc16.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

class Transport;
class WatchedFlag;

// How a transaction ended. `bCommOK` tells the same story in the tool's 16-bit flag; the
// outcome also separates a meter that stopped answering from a line that went away.
enum class TransactionOutcome {
    Good,      // a good reply was taken
    Failed,    // five attempts went unanswered or were spoiled: the tool goes off line
    Abandoned, // the port closed or the tool went off line before a good reply came
};

// The register transactions with the meter. Each one blocks its caller until a good reply is
// taken or five attempts have failed, yielding to the event loop while it waits. Each returns
// its outcome and keeps `bCommOK` as well; a read appends the reply's data bytes to `RxData`.
//
// The address argument is taken by reference on purpose: callers pass `ModbusAddress`, and an
// address the operator changes while a transaction is retrying is used from the next attempt.
class RegisterLink : public QObject {
    Q_OBJECT
public:
    static constexpr int kAttempts = 5;
    // Reply time-out of one attempt: 200 looks, 10 ms apart.
    static constexpr qint32 kReplyTimeoutMs = 200 * 10;
    // Minimum silence between the end of a reply and the next request.
    static constexpr qint32 kFrameGapMs = 12;

    RegisterLink(Transport& line, const WatchedFlag& bOnLine, QObject* parent = nullptr);

    TransactionOutcome ReadRegisters(const qint16& address, quint8 function, quint16 start, quint16 count);
    TransactionOutcome WriteSingleRegister(const qint16& address, quint16 reg, quint16 value);
    // `data` holds two bytes per register, high byte first.
    TransactionOutcome WriteRegisters(const qint16& address, quint16 start, quint16 count, const QByteArray& data);
    // Writes each value as an IEEE-754 single over two registers (see Rtu::SingleToBytes).
    TransactionOutcome WriteFloatRegisters(const qint16& address, quint16 start, const QList<double>& values);
    // Like WriteRegisters, given a byte count: it is halved (halves to even) into a register
    // count and handed back halved, as callers of this routine expect.
    TransactionOutcome WriteRegisters2(const qint16& address, quint16 start, qint16& count, const QByteArray& data);

    void BuildCrcTables() { crc.BuildCrcTables(); }
    // Empties RxData to its single-element start state before a series of reads.
    void ResetRxData() { RxData = QByteArray(1, '\0'); }
    qsizetype RxUpperBound() const { return RxData.size() - 1; }

    Crc16 crc;
    QByteArray TxFrame;
    QByteArray RxData = QByteArray(1, '\0');
    qint16 ExpectedLen = 0;
    quint32 LastRxTime = 0;
    Bool16 bWaiting = kFalse;
    Bool16 bCommOK = kFalse;
    qint16 ModbusAddress = 0;
    Bool16 bShowFrames = kFalse;

signals:
    // A link message for the status line ("CRC Error", "Address Error", the give-up text).
    void statusText(const QString& text);
    // The request echo, sent once per transaction while bShowFrames is set.
    void requestEcho(const QString& text);
    // Five attempts failed: the tool must go off line.
    void gaveUp();

private:
    TransactionOutcome Transact(const qint16& address, bool isRead);
    TransactionOutcome Attempt(const qint16& address, bool isRead);
    bool ReplyArrived() const;
    void StoreReadData(const QByteArray& reply);

    Transport& m_line;
    const WatchedFlag& m_onLine;
};
