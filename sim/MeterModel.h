#pragma once

#include "sim/EnergyCounters.h"
#include "sim/LoadProfileGroup.h"
#include "sim/MeterRegisters.h"
#include "sim/SimClock.h"
#include "sim/ThreePhaseLoad.h"

#include <QHash>
#include <QList>

#include <array>
#include <optional>

namespace sim {

// Modbus exception codes the meter answers with.
enum class ModbusError : quint8 {
    None = 0,
    IllegalFunction = 1,
    IllegalDataAddress = 2,
    IllegalDataValue = 3,
};

struct RegisterRead {
    ModbusError error = ModbusError::None;
    QList<quint16> values;
};

// The QX-5820's registers: its settings, what it measures, its energy counters, clock and
// load-profile memory. Not thread-safe; SharedMeterModel guards it.
//
// Measured values, counters and records are computed from the seed and the clock's uptime
// whenever they are read, so the same seed at the same simulated moment serves the same
// registers. Record areas serve zeros for interval numbers that hold no record.
class MeterModel {
public:
    static constexpr quint32 kSerialNumber = 4217; // a meter's own unless told another
    explicit MeterModel(quint64 seed = 1, const QDateTime& clock = {}, SimClock::Mode mode = SimClock::Mode::Running);

    // Makes group `group` (0 or 1) hold `recorded` intervals (at most 65535), the last one
    // ending on the interval boundary at or before the clock, its memory enlarged to fit
    // them if need be. For a meter with a long history; call it right after construction,
    // before anything reads the meter, since its energy counters are set back so that they
    // stay positive over the whole history.
    void startWithHistory(int group, int recorded);
    // Feeds a balanced load of that character instead of the seed's own, from power-on, through
    // the same wiring. Like startWithWiring, call it right after construction, before
    // startWithHistory.
    void startWithLoad(LoadCharacter character);
    // Gives the meter another serial number (at most 999999), in its info registers and its
    // identification text: meters sharing a line tell themselves apart by it.
    void startWithSerialNumber(quint32 serial);
    // Connects the meter to its load with that fault from power-on: the measurements, the
    // phase sequence, the energy counters and the records follow it.
    void startWithWiring(const WiringFault& fault);

    // What a read request of `count` registers gets: the values, or IllegalDataAddress when
    // any of them lies outside the served blocks.
    RegisterRead read(Table table, quint16 start, quint16 count) const;
    // A write of holding registers as functions 6 and 16 make it, with the meter's checks
    // (out-of-range values are refused whole) and actions (commands, clock, group changes).
    ModbusError write(quint16 start, const QList<quint16>& values);

    quint8 slaveAddress() const;
    // The line speed the meter listens at; 0 when its baud code is not one it knows.
    qint32 baudRate() const;
    // The stop bits the meter expects on the line, 1 or 2; 0 when its stop-bit code is neither.
    int stopBits() const;

    // Registers as served; 0 outside the map.
    quint16 holding(quint16 reg) const;
    quint16 input(quint16 reg) const;
    // Stores a holding register as it is, without the checks and actions of a write.
    void setHolding(quint16 reg, quint16 value);
    // Serves `value` at an input register from now on instead of the computed one.
    void setInput(quint16 reg, quint16 value);

    SimClock& clock() { return m_clock; }
    const SimClock& clock() const { return m_clock; }
    const ThreePhaseLoad& load() const { return m_load; }

private:
    QList<quint16> blockImage(const Block& block) const;
    QList<quint16> settingsImage() const;
    QList<quint16> infoImage() const;
    QList<quint16> measurementImage(double uptime) const;
    QList<quint16> profileCounterImage(double uptime) const;
    QList<quint16> recordImage(int group, double uptime) const;

    ProfileGroupSettings groupSettings(int group) const;
    void restartGroup(int group, int recorded);
    // The clock after a write of `values` from `start`: nothing when the write leaves the
    // clock alone, an invalid time when the fields make no date.
    std::optional<QDateTime> clockAfter(quint16 start, const QList<quint16>& values) const;
    void apply(quint16 reg, quint16 value);

    quint64 m_seed;
    SimClock m_clock;
    ThreePhaseLoad m_load;
    EnergyCounters m_energy;
    std::array<LoadProfileGroup, 2> m_groups;
    QHash<quint16, quint16> m_holding;
    QHash<quint16, quint16> m_inputOverrides;
    quint32 m_serial = kSerialNumber;
};

} // namespace sim
