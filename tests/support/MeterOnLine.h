#pragma once

#include "RecordingPrompts.h"
#include "connection/Connection.h"
#include "sim/SimulatedMeterHost.h"

#include <QDateTime>

#include <memory>

// A simulated meter with frozen time and a connection on line to it through its
// pseudo-terminal, the way the tool reaches it. Ticks and transactions are driven by hand.
struct MeterOnLine {
    bool begin(bool pacing = true)
    {
        meter = std::make_unique<sim::SimulatedMeterHost>(sim::MeterModel(
            7, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC), sim::SimClock::Mode::Frozen));
        meter->setPacing(pacing);
        connection = std::make_unique<Connection>(prompts);
        connection->SetPortEntries(PortCatalog::Build({}));
        connection->simulatedMeterDevice = [this](QString* error) {
            const auto started = meter->start();
            *error = started.error;
            return started.path;
        };
        connection->Combo_CommPort_Click(PortCatalog::kNumberedPorts); // the simulated meter
        connection->SetSettings(QStringLiteral("19200,n,8,1"));
        connection->link.ModbusAddress = 15;
        connection->On_Line_Click(QStringLiteral("15"));
        connection->Timer1Sec.stop(); // tests run the ticks themselves
        return connection->bOnLine.isTrue();
    }

    RegisterLink& link() { return connection->link; }

    RecordingPrompts prompts;
    std::unique_ptr<sim::SimulatedMeterHost> meter;
    std::unique_ptr<Connection> connection;
};
