#pragma once

#include "FakeLine.h"
#include "link/RegisterLink.h"
#include "link/RtuFrames.h"
#include "link/WatchedFlag.h"

#include <QSignalSpy>

// A register link on line to meter address 15 over a scripted line, on virtual time.
struct LinkOnFakeLine {
    static constexpr quint8 kAddress = 15;

    explicit LinkOnFakeLine(qint32 baud = 19200) : line(clock, baud)
    {
        onLine.set(true);
        link.BuildCrcTables();
        link.ModbusAddress = kAddress;
    }

    // Reads `count` holding registers from `start` into an emptied RxData.
    TransactionOutcome read(quint16 start, quint16 count)
    {
        link.ResetRxData();
        link.bCommOK = kTrue;
        return link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, start, count);
    }

    // Data of `count` registers, register i holding first + i.
    static QByteArray Block(quint16 count, quint16 first)
    {
        QByteArray data;
        for (quint16 i = 0; i < count; ++i) {
            data.append(char((first + i) >> 8));
            data.append(char((first + i) & 0xFF));
        }
        return data;
    }
    // The meter's reply to a read of `count` registers, carrying Block(count, first).
    static QByteArray BlockReply(quint16 count, quint16 first)
    {
        return ReadReply(kAddress, Rtu::kReadHolding, Block(count, first));
    }

    VirtualClock clock;
    FakeLine line;
    WatchedFlag onLine;
    RegisterLink link{line, onLine, clock};
    QSignalSpy status{&link, &RegisterLink::statusText};
    QSignalSpy gaveUp{&link, &RegisterLink::gaveUp};
};
