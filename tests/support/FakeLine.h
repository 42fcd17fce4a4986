#pragma once

#include "VirtualClock.h"
#include "link/Transport.h"

#include <QByteArray>
#include <QList>

// A meter's serial line played from a script on a VirtualClock: every request sent is kept
// with the time it went out, and each is answered by the next entry of the script. Bytes
// arrive one at a time, each once it has crossed the wire at the line's character time (10
// bits at the baud rate), and each wakes the link. Like a real meter, this one sends one reply
// at a time: a request that comes in while it is still sending is answered after that.
class FakeLine : public Transport {
public:
    using Time = LinkClock::Time;

    // Bytes that cross the wire back to back after `pauseBefore` of quiet line.
    struct Piece {
        QByteArray bytes;
        Time pauseBefore{};
    };
    // What comes back for one request: the pieces in turn, the first `pauseBefore` after the
    // request has left the wire or the meter's previous reply has, whichever is later. No
    // pieces: silence.
    using Answer = QList<Piece>;

    struct Sent {
        QByteArray frame;
        Time at;
    };

    explicit FakeLine(VirtualClock& clock, qint32 baud = 19200) : m_clock(clock), m_baud(baud) {}

    // Answers the next request; requests beyond the script meet silence.
    void script(const Answer& answer) { m_script.append(answer); }
    Time wireTime(qsizetype characters) const { return characters * characterTime(); }

    bool isOpen() const override { return open; }
    QByteArray takeAll() override;
    void discardInput() override { m_received.clear(); }
    void send(const QByteArray& frame) override;
    std::chrono::nanoseconds characterTime() const override;

    bool open = true;
    // A 2-wire adapter: each request comes back whole as it leaves the wire, ahead of any reply.
    bool echoes = false;
    QList<Sent> sent;

private:
    // Puts `bytes` on the wire from `start`; returns when the last of them is in.
    Time transmit(Time start, const QByteArray& bytes);

    VirtualClock& m_clock;
    qint32 m_baud;
    QList<Answer> m_script;
    Time m_replyingUntil{};
    QByteArray m_received;
};

inline QByteArray Hex(const char* text) { return QByteArray::fromHex(text); }
// `body` closed with its CRC.
QByteArray Sealed(const QByteArray& body);
// The meter's reply to a read: address, function, byte count, `data`, CRC.
QByteArray ReadReply(quint8 address, quint8 function, const QByteArray& data);
// A reply as a meter sends it, `turnaround` after the request.
FakeLine::Answer Reply(const QByteArray& bytes, FakeLine::Time turnaround = std::chrono::milliseconds(3));
