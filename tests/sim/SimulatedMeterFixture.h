#pragma once

#include "MeterLineClient.h"

#include "sim/SimulatedMeterHost.h"

#include <QtTest>

#include <memory>

// A fresh simulated meter for each test, its time frozen so that every read is repeatable,
// and a client on its line at the meter's 19200 8N1.
class SimulatedMeterFixture {
public:
    static constexpr int kSilenceMs = 300;

    bool begin(QSerialPort::StopBits stopBits = QSerialPort::OneStop)
    {
        meter = std::make_unique<sim::SimulatedMeterHost>(
            sim::MeterModel(42, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC), sim::SimClock::Mode::Frozen));
        path = meter->start().path;
        line = std::make_unique<MeterLineClient>(path, 19200, stopBits);
        return !path.isEmpty() && line->isOpen();
    }
    void end()
    {
        line.reset();
        meter.reset();
    }
    bool silentAfter(const QByteArray& body) { return line->request(body, 1, kSilenceMs).bytes.isEmpty(); }

    std::unique_ptr<sim::SimulatedMeterHost> meter;
    std::unique_ptr<MeterLineClient> line;
    QString path;
};
