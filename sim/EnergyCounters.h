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

private:
    EnergyTable m_atPowerOn{};
    QList<double> m_clearedAt; // uptimes, ascending
};

} // namespace sim
