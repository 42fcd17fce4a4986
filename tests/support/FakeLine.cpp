#include "FakeLine.h"

#include "link/Crc16.h"

#include <utility>

QByteArray FakeLine::takeAll()
{
    return std::exchange(m_received, QByteArray());
}

void FakeLine::send(const QByteArray& frame)
{
    sent.append({frame, m_clock.now()});
    const Time requestEnd = echoes ? transmit(m_clock.now(), frame) : m_clock.now() + wireTime(frame.size());
    const Answer answer = m_script.isEmpty() ? Answer() : m_script.takeFirst();
    Time at = std::max(requestEnd, m_replyingUntil);
    for (const Piece& piece : answer)
        at = m_replyingUntil = transmit(at + piece.pauseBefore, piece.bytes);
}

FakeLine::Time FakeLine::transmit(Time start, const QByteArray& bytes)
{
    Time at = start;
    for (char byte : bytes) {
        at += characterTime();
        m_clock.at(at, [this, byte] {
            if (!open)
                return;
            m_received += byte;
            emit dataArrived();
        });
    }
    return at;
}

std::chrono::nanoseconds FakeLine::characterTime() const
{
    return std::chrono::nanoseconds(10 * qint64(1'000'000'000) / m_baud);
}

QByteArray Sealed(const QByteArray& body)
{
    return body + ModbusCrcBytes(body, body.size());
}

QByteArray ReadReply(quint8 address, quint8 function, const QByteArray& data)
{
    QByteArray body;
    body.append(char(address));
    body.append(char(function));
    body.append(char(data.size()));
    return Sealed(body + data);
}

FakeLine::Answer Reply(const QByteArray& bytes, FakeLine::Time turnaround)
{
    return {{bytes, turnaround}};
}
