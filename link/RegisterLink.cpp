#include "link/RegisterLink.h"

#include "link/RtuFrames.h"
#include "link/Transport.h"
#include "link/Waits.h"
#include "link/WatchedFlag.h"

#include <cmath>

RegisterLink::RegisterLink(Transport& line, const WatchedFlag& bOnLine, QObject* parent)
    : QObject(parent), m_line(line), m_onLine(bOnLine)
{
}

TransactionOutcome RegisterLink::ReadRegisters(const qint16& address, quint8 function, quint16 start, quint16 count)
{
    if (!m_onLine.isTrue())
        return TransactionOutcome::Abandoned;
    TxFrame = Rtu::ReadRequest(quint8(address & 0xFF), function, start, count);
    ExpectedLen = qint16(Rtu::ReadReplyLength(count));
    return Transact(address, true);
}

TransactionOutcome RegisterLink::WriteSingleRegister(const qint16& address, quint16 reg, quint16 value)
{
    bCommOK = kTrue;
    if (!m_onLine.isTrue())
        return TransactionOutcome::Abandoned;
    TxFrame = Rtu::WriteSingleRequest(quint8(address & 0xFF), reg, value);
    ExpectedLen = qint16(Rtu::kWriteReplyLength);
    return Transact(address, false);
}

TransactionOutcome RegisterLink::WriteRegisters(const qint16& address, quint16 start, quint16 count, const QByteArray& data)
{
    bCommOK = kTrue;
    if (!m_onLine.isTrue())
        return TransactionOutcome::Abandoned;
    TxFrame = Rtu::WriteMultipleRequest(quint8(address & 0xFF), start, count, data);
    ExpectedLen = qint16(Rtu::kWriteReplyLength);
    return Transact(address, false);
}

TransactionOutcome RegisterLink::WriteFloatRegisters(const qint16& address, quint16 start, const QList<double>& values)
{
    QByteArray data;
    for (double value : values)
        data += Rtu::SingleToBytes(value);
    return WriteRegisters(address, start, quint16(2 * values.size()), data);
}

TransactionOutcome RegisterLink::WriteRegisters2(const qint16& address, quint16 start, qint16& count, const QByteArray& data)
{
    count = qint16(std::nearbyint(count / 2.0)); // the default rounding mode: halves to even
    return WriteRegisters(address, start, quint16(count), data);
}

TransactionOutcome RegisterLink::Transact(const qint16& address, bool isRead)
{
    bWaiting = kTrue;
    Rtu::Seal(crc, TxFrame);
    if (bShowFrames != kFalse)
        emit requestEcho(Rtu::FrameEcho(TxFrame));

    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        // A good reply ends the transaction, and so does a closed port or going off line.
        const TransactionOutcome outcome = Attempt(address, isRead);
        if (outcome != TransactionOutcome::Failed) {
            bWaiting = kFalse;
            return outcome;
        }
        m_line.discardInput();
    }
    emit statusText(QStringLiteral("Communication Error! Retry %1 times!").arg(kAttempts));
    bWaiting = kFalse;
    bCommOK = kFalse;
    emit gaveUp();
    return TransactionOutcome::Failed;
}

TransactionOutcome RegisterLink::Attempt(const qint16& address, bool isRead)
{
    if (quint8(TxFrame.at(0)) != quint8(address & 0xFF)) {
        TxFrame[0] = char(address & 0xFF);
        Rtu::Seal(crc, TxFrame);
    }
    WaitSince(LastRxTime, kFrameGapMs, m_onLine);
    if (!m_line.isOpen() || !m_onLine.isTrue())
        return TransactionOutcome::Abandoned;
    m_line.discardInput();
    m_line.send(TxFrame);

    const bool arrived = WaitUntil([this] { return ReplyArrived(); }, kReplyTimeoutMs, m_onLine, m_line);
    if (!m_line.isOpen() || !m_onLine.isTrue())
        return TransactionOutcome::Abandoned;
    if (!arrived)
        return TransactionOutcome::Failed;

    const QByteArray reply = m_line.takeAll();
    LastRxTime = timeGetTime();
    if (quint8(reply.at(0)) != quint8(ModbusAddress & 0xFF)) {
        emit statusText(QStringLiteral("Address Error"));
        return TransactionOutcome::Failed;
    }
    if (!Rtu::CrcMatches(crc, reply, ExpectedLen)) {
        emit statusText(QStringLiteral("CRC Error"));
        return TransactionOutcome::Failed;
    }
    if (isRead)
        StoreReadData(reply);
    return TransactionOutcome::Good;
}

bool RegisterLink::ReplyArrived() const
{
    return m_line.bytesWaiting() >= ExpectedLen;
}

void RegisterLink::StoreReadData(const QByteArray& reply)
{
    const QByteArray data = reply.mid(3, ExpectedLen - 5);
    if (RxUpperBound() == 0)
        RxData = data;
    else
        RxData += data;
}
