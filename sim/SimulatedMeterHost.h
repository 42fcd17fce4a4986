#pragma once

#include "sim/MeterSharedState.h"

#include <QString>
#include <QThread>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace sim {

class SimulatedMeter;

// Runs a simulated QX-5820 on a thread of its own, as a separate device would be: the tool
// blocks in nested event loops while it waits for replies, and the meter must go on
// answering meanwhile. Faults, the request log, pacing and the register model may be used
// from any thread but the meter's own; start() and stop() belong to the host's owner.
//
// A host may instead run several meters on one line, as on an RS-485 bus: each answers at the
// address it holds, and the calls on "the" model below reach the first of them.
class SimulatedMeterHost {
public:
    explicit SimulatedMeterHost(MeterModel meter = MeterModel());
    // At least one meter; no two at one address.
    explicit SimulatedMeterHost(std::vector<MeterModel> bus);
    ~SimulatedMeterHost();
    SimulatedMeterHost(const SimulatedMeterHost&) = delete;
    SimulatedMeterHost& operator=(const SimulatedMeterHost&) = delete;

    struct Started {
        // What a client opens: a serial device (/dev/pts/5) or "tcp://127.0.0.1:<port>";
        // empty on failure.
        QString path;
        QString error;
    };
    // Starts answering on a new pseudo-terminal (a second call while running changes
    // nothing and gives the same path). The register model keeps its state across restarts.
    Started start();
    // Starts answering on TCP port `port` of 127.0.0.1 (0: any free port), as a device
    // server would, to one client at a time and without line pacing. A second call while
    // running changes nothing and gives the same address.
    Started listen(quint16 port = 0);
    // The meter started as it last ran, on a new pseudo-terminal or on the TCP port it
    // listened on, in the form a connection asks for its device in: the path or address, or
    // an empty string with the reason in `error`. The host must outlive the connection that
    // calls it.
    std::function<QString(QString* error)> deviceSource();
    void stop();
    bool isRunning() const { return m_meter != nullptr; }
    QString slavePath() const { return m_path; }

    void injectFault(const Fault& fault, int times = 1) { m_shared.faults.inject(fault, times); }

    QList<LoggedRequest> requestLog() const { return m_shared.log.entries(); }
    void clearRequestLog() { m_shared.log.clear(); }
    QList<LoggedRequest> takeRequestLog() { return m_shared.log.take(); }

    void setPacing(bool on) { m_shared.pacing = on; }
    void setTurnaround(int ms) { m_shared.turnaroundMs = ms; }
    // One request in `every` (0: none) answered `lateMs` late, every request answered in order.
    void setSlowReplies(int every, int lateMs = 2050)
    {
        m_shared.slowMs = lateMs;
        m_shared.slowEvery = every;
    }
    // Noise on the line: bursts of a byte a millisecond, `burstMs` long (0: none), `quietMs` apart
    // (0: the line never falls silent). Takes effect at once, also while running.
    void setNoise(int burstMs, int quietMs);

    // Anything else on the register model (clock, a whole new meter), under its lock.
    template <class Function>
    auto withModel(Function&& function)
    {
        return m_shared.meters.first().model.with(std::forward<Function>(function));
    }

    // The meter of the line that holds `address` now, or nullptr.
    SharedMeterModel* meter(quint8 address)
    {
        BusMeter* found = m_shared.meters.find(address);
        return found ? &found->model : nullptr;
    }
    // The meter at `address` stops answering or obeying anything (or starts again), as one
    // switched off would; false when no meter holds that address.
    bool setSilent(quint8 address, bool silent = true);

    quint16 holding(quint16 reg) { return withModel([&](MeterModel& m) { return m.holding(reg); }); }
    quint16 input(quint16 reg) { return withModel([&](MeterModel& m) { return m.input(reg); }); }
    void setHolding(quint16 reg, quint16 value) { withModel([&](MeterModel& m) { m.setHolding(reg, value); }); }
    void setInput(quint16 reg, quint16 value) { withModel([&](MeterModel& m) { m.setInput(reg, value); }); }

private:
    // Starts the meter on its thread, opened by `open` there.
    Started run(const std::function<bool(SimulatedMeter&)>& open);

    MeterSharedState m_shared;
    QThread m_thread;
    SimulatedMeter* m_meter = nullptr;
    QString m_path;
    std::optional<quint16> m_tcpPort; // the port listened on, once listen() has been used
};

} // namespace sim
