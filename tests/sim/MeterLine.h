#pragma once

#include "sim/SimulatedMeterHost.h"

#include <QSerialPort>
#include <QtTest>

#include <memory>
#include <utility>

// A bitwise CRC-16 of the tests' own, so that a mistake in the meter's CRC is not matched by
// the same mistake on this side.
inline QByteArray WithCrc(const QByteArray& body)
{
    quint16 crc = 0xFFFF;
    for (char byte : body) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = quint16((crc & 1) ? (crc >> 1) ^ 0xA001 : crc >> 1);
    }
    return body + char(crc & 0xFF) + char(crc >> 8);
}

// Address, function, then 16-bit fields high byte first: a read's start and count, a
// write's register and value.
inline QByteArray Body(quint8 address, quint8 function, const QList<quint16>& fields)
{
    QByteArray body;
    QDataStream out(&body, QIODevice::WriteOnly);
    out << address << function;
    for (quint16 field : fields)
        out << field;
    return body;
}

// A meter whose time is frozen, so that every read is repeatable.
inline sim::MeterModel FrozenMeter(quint64 seed = 42)
{
    return sim::MeterModel(seed, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC), sim::SimClock::Mode::Frozen);
}

// A fresh meter (or several on one line) for each test, and the master's end of its line: a
// QSerialPort as the tool opens it, at the meter's 19200 8N1.
struct MeterLine {
    // Also ends the previous test's meter, if any.
    bool begin(QSerialPort::StopBits stopBits = QSerialPort::OneStop)
    {
        return begin(std::make_unique<sim::SimulatedMeterHost>(FrozenMeter()), stopBits);
    }
    bool begin(std::unique_ptr<sim::SimulatedMeterHost> host, QSerialPort::StopBits stopBits = QSerialPort::OneStop)
    {
        port.close();
        meter = std::move(host);
        port.setPortName(meter->start().path);
        port.setBaudRate(19200);
        port.setStopBits(stopBits);
        return port.open(QIODevice::ReadWrite);
    }

    // Sends `bytes` as they are; what arrives until `expected` bytes are in or `waitMs` passed.
    QByteArray send(const QByteArray& bytes, qsizetype expected, int waitMs = 1000)
    {
        port.clear();
        QByteArray got;
        QElapsedTimer clock;
        clock.start();
        port.write(bytes);
        firstMs = lastMs = -1;
        for (QDeadlineTimer deadline(waitMs); got.size() < expected && port.waitForReadyRead(int(deadline.remainingTime()));) {
            got += port.readAll();
            lastMs = clock.elapsed();
            firstMs = firstMs < 0 ? lastMs : firstMs;
        }
        return got;
    }
    QByteArray request(const QByteArray& body, qsizetype expected) { return send(WithCrc(body), expected); }
    bool silentAfter(const QByteArray& bytes) { return send(bytes, 1, 300).isEmpty(); }

    std::unique_ptr<sim::SimulatedMeterHost> meter;
    QSerialPort port;
    qint64 firstMs = -1; // when the first and the last bytes of the latest reply came, ms
    qint64 lastMs = -1;  // after its request was sent
};
