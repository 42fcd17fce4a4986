#pragma once

#include "link/RegisterLink.h"
#include "link/RtuFrames.h"
#include "link/Transport.h"
#include "link/WatchedFlag.h"

#include <QSignalSpy>
#include <QStringList>

#include <functional>
#include <map>
#include <utility>

using namespace std::chrono_literals;

// Time for the link that passes only when the link waits: a wait jumps to the next scheduled
// event or to its deadline, whichever comes first, runs that event and returns. Two-second
// time-outs cost nothing and every run is the same.
class VirtualClock : public LinkClock {
public:
    Time now() const override { return m_now; }
    bool waitUntil(Time deadline, const WatchedFlag&, const Transport*) override
    {
        ++waits;
        if (m_events.empty() || m_events.begin()->first > deadline) {
            m_now = std::max(m_now, deadline);
            return true;
        }
        auto event = m_events.extract(m_events.begin());
        m_now = std::max(m_now, event.key());
        event.mapped()();
        return true;
    }
    // Runs `action` once the clock reaches `when`: bytes arriving, the operator going off line.
    void at(Time when, std::function<void()> action) { m_events.emplace(when, std::move(action)); }

    // How often the link has waited. A link that looked at the line every few milliseconds
    // instead of waiting for it would wait hundreds of times a second.
    int waits = 0;

private:
    Time m_now = 1s;
    std::multimap<Time, std::function<void()>> m_events;
};

// A meter's serial line played from a script on a VirtualClock: every request sent is kept
// with the time it went out, and each is answered by the next entry of the script (none left:
// silence). Bytes arrive one at a time, each once it has crossed the wire at 10 bits per
// character, and each wakes the link. Like a real meter, this one sends one reply at a time:
// a request that comes in while it is still sending is answered after that.
class FakeLine : public Transport {
public:
    using Time = LinkClock::Time;
    // Bytes that cross the wire back to back after `pauseBefore` of quiet line.
    struct Piece {
        QByteArray bytes;
        Time pauseBefore{};
    };
    // What comes back for one request: the pieces in turn, the first `pauseBefore` after the
    // request has left the wire or the meter's previous reply has, whichever is later.
    using Answer = QList<Piece>;
    struct Sent {
        QByteArray frame;
        Time at;
    };

    FakeLine(VirtualClock& clock, qint32 baud) : m_clock(clock), m_baud(baud) {}

    Time wireTime(qsizetype characters) const { return characters * characterTime(); }
    bool isOpen() const override { return open; }
    QByteArray takeAll() override { return std::exchange(m_received, QByteArray()); }
    void discardInput() override { m_received.clear(); }
    std::chrono::nanoseconds characterTime() const override { return 10'000'000'000ns / m_baud; }
    void send(const QByteArray& frame) override
    {
        sent.append({frame, m_clock.now()});
        Time at = echoes ? transmit(m_clock.now(), frame) : m_clock.now() + wireTime(frame.size());
        at = std::max(at, m_replyingUntil);
        for (const Piece& piece : script.isEmpty() ? Answer() : script.takeFirst())
            at = m_replyingUntil = transmit(at + piece.pauseBefore, piece.bytes);
    }

    // Another master or an unbiased pair picking up noise: a byte every `every` from `from`
    // until `until`, whatever else is on the line.
    void chatter(Time from, Time until, Time every)
    {
        for (Time at = from; at < until; at += every)
            transmit(at, QByteArray(1, '\xFF'));
    }

    QList<Answer> script;
    bool open = true;
    // A 2-wire adapter: each request comes back whole as it leaves the wire, ahead of any reply.
    bool echoes = false;
    QList<Sent> sent;

private:
    // Puts `bytes` on the wire from `at`; returns when the last of them is in.
    Time transmit(Time at, const QByteArray& bytes)
    {
        for (char byte : bytes) {
            at += characterTime();
            m_clock.at(at, [this, byte] {
                if (open) {
                    m_received += byte;
                    emit dataArrived();
                }
            });
        }
        return at;
    }

    VirtualClock& m_clock;
    qint32 m_baud;
    Time m_replyingUntil{};
    QByteArray m_received;
};

inline QByteArray Hex(const char* text) { return QByteArray::fromHex(text); }
// `body` closed with its CRC.
inline QByteArray Sealed(const QByteArray& body) { return body + ModbusCrcBytes(body, body.size()); }
// A reply as a meter sends it, `turnaround` after the request.
inline FakeLine::Answer Reply(const QByteArray& bytes, FakeLine::Time turnaround = 3ms) { return {{bytes, turnaround}}; }

// A register link on line to meter address 15 over a scripted line, on virtual time.
struct LinkOnFakeLine {
    explicit LinkOnFakeLine(qint32 baud = 19200) : line(clock, baud)
    {
        onLine.set(true);
        link.BuildCrcTables();
        link.ModbusAddress = 15;
        QObject::connect(&link, &RegisterLink::statusText, [this](const QString& text) { texts << text; });
        QObject::connect(&link, &RegisterLink::requestEcho, [this](const QString& text) { echoes << text; });
    }

    // Reads `count` holding registers from `start` into an emptied RxData.
    TransactionResult read(quint16 start, quint16 count)
    {
        link.ResetRxData();
        link.bCommOK = kTrue;
        return link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, start, count);
    }

    // Data of `count` registers, register i holding first + i.
    static QByteArray Block(quint16 count, quint16 first)
    {
        QByteArray data;
        for (int word = first; word < first + count; ++word)
            data.append(char(word >> 8)).append(char(word & 0xFF));
        return data;
    }
    // The reply of meter `address` to a read of `count` holding registers, carrying Block(count, first).
    static QByteArray BlockReply(quint16 count, quint16 first, char address = 15)
    {
        return Sealed(QByteArray(1, address) + char(Rtu::kReadHolding) + char(2 * count) + Block(count, first));
    }

    VirtualClock clock;
    FakeLine line;
    WatchedFlag onLine;
    RegisterLink link{line, onLine, clock};
    QStringList texts;  // the status texts shown
    QStringList echoes; // the requests shown in the frames view
    QSignalSpy gaveUp{&link, &RegisterLink::gaveUp}; // each with the reason for going off line
};
