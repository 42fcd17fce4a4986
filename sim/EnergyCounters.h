#pragma once

#include "sim/ThreePhaseLoad.h"

#include <QList>

namespace sim {

// The meter's energy registers: the readings it had at power-on plus what the load has drawn
// since, each clear command restarting them from zero. Nothing is accumulated step by step,
// so the counters at any moment, past ones included, follow from the load alone.
class EnergyCounters {
public:
    explicit EnergyCounters(quint64 seed);

    EnergyTable at(const ThreePhaseLoad& load, double uptime) const;
    void clear(double uptime);
    // Puts the meter in service at `uptime` (before power-on) instead of at power-on: the
    // readings it had when it started out are then those of `uptime`, and the power-on
    // readings add what the load drew from then on. Keeps the counters positive over a
    // load-profile history that reaches back before power-on.
    void inServiceSince(const ThreePhaseLoad& load, double uptime);

private:
    EnergyTable m_inService{}; // the readings when the meter was put in service
    EnergyTable m_atPowerOn{};
    QList<double> m_clearedAt; // uptimes, ascending
};

} // namespace sim
