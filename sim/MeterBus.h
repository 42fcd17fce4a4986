#pragma once

#include "sim/SharedMeterModel.h"

#include <QByteArray>

#include <atomic>
#include <deque>
#include <utility>
#include <vector>

namespace sim {

// One meter of a bus: its registers, and whether it is cut off the line.
struct BusMeter {
    explicit BusMeter(MeterModel initial) : model(std::move(initial)) {}
    quint8 address() { return model.with([](MeterModel& m) { return m.slaveAddress(); }); }

    SharedMeterModel model;
    // A meter switched off or cut from the line: it neither obeys nor answers, but keeps its
    // address, so no other meter may take it.
    std::atomic<bool> silent{false};
};

// The meters on one RS-485 line, each with registers of its own, answering at the address
// it holds now. The meters are fixed once built; each guards its own registers.
class MeterBus {
public:
    // At least one meter.
    explicit MeterBus(std::vector<MeterModel> meters);

    BusMeter& first() { return m_meters.front(); }
    // The meter that holds `address` now, or nullptr.
    BusMeter* find(quint8 address);
    // `meter`'s reply to `request` (whole, its CRC checked). A write that would give it an
    // address another meter of the line holds is refused whole with exception 3: two meters
    // answering at one address would garble every reply.
    QByteArray answer(BusMeter& meter, const QByteArray& request);

    auto begin() { return m_meters.begin(); }
    auto end() { return m_meters.end(); }

private:
    std::deque<BusMeter> m_meters; // a deque: its elements never move
};

} // namespace sim
