#pragma once

#include "TestLists.h"
#include "RecordingPrompts.h"
#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"

#include <QDateTime>

#include <memory>

// How the tool reaches the simulated meter: on its pseudo-terminal, or over TCP as through a
// device server.
enum class Via { PseudoTerminal, Network };

// A simulated meter whose clock stands still, so that what it answers can be predicted. On the
// network it already listens, on a free port; nothing when it cannot.
inline std::unique_ptr<sim::SimulatedMeterHost> FrozenMeter(bool pacing, Via via = Via::PseudoTerminal)
{
    auto meter = std::make_unique<sim::SimulatedMeterHost>(sim::MeterModel(
        7, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC), sim::SimClock::Mode::Frozen));
    meter->setPacing(pacing);
    if (via == Via::Network && meter->listen().path.isEmpty())
        return nullptr;
    return meter;
}

// Takes `connection` on line to `meter` through the port list's simulated meter, the way the
// tool reaches it: address 15, 19200 8N1. The poll timer is stopped: tests run the ticks
// themselves.
inline bool GoOnLineTo(sim::SimulatedMeterHost& meter, Connection& connection)
{
    connection.SetPortEntries(PortCatalog::Build({}));
    connection.simulatedMeterDevice = meter.deviceSource();
    connection.ChoosePortIndex(PortCatalog::kNumberedPorts); // the simulated meter
    connection.SetSettings(QStringLiteral("19200,n,8,1"));
    connection.link.ModbusAddress = 15;
    connection.ToggleOnLine(QStringLiteral("15"));
    connection.Timer1Sec.stop();
    return connection.bOnLine.isTrue();
}

// A whole meter session on line to a simulated meter, with no widget: what a command-line
// front end runs, and the connection and register link within it.
struct SessionOnLine {
    bool begin(bool pacing = false, Via via = Via::PseudoTerminal)
    {
        meter = FrozenMeter(pacing, via);
        session = std::make_unique<MeterSession>(SessionPorts{prompts, lists, clock});
        return meter && GoOnLineTo(*meter, session->connection);
    }
    void tick() { session->poll.Timer1Sec_Timer(); }
    RegisterLink& link() { return session->connection.link; }
    // The write requests the meter received, without their CRC, in hex.
    QList<QByteArray> writes() const
    {
        QList<QByteArray> frames;
        for (const sim::LoggedRequest& request : meter->requestLog()) {
            if (quint8(request.frame[1]) == 0x10)
                frames.append(request.frame.chopped(2).toHex());
        }
        return frames;
    }
    // The outcome of the newest setting command, in the history's words.
    QString lastOutcome() const
    {
        const auto& entries = session->settings.history.Entries();
        return entries.isEmpty() ? QString() : entries.last().Text();
    }

    RecordingPrompts prompts;
    RecordingLists lists;
    FixedClock clock;
    std::unique_ptr<sim::SimulatedMeterHost> meter;
    std::unique_ptr<MeterSession> session;
};
