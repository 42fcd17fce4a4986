#include "sim/EnergyCounters.h"

#include <algorithm>
#include <cmath>

namespace sim {

EnergyCounters::EnergyCounters(quint64 seed)
{
    // A meter that has been in service for a while: thousands of kWh and kvarh drawn, a
    // little received and leading from switching.
    const SeededNoise noise(seed ^ 0xE4E46ULL);
    for (int p = 0; p < 3; ++p) {
        const double delivered = 8000.0 + 4000.0 * noise.constant(p);
        const double lagging = 2500.0 + 1500.0 * noise.constant(3 + p);
        m_inService[0][p] = delivered;
        m_inService[1][p] = 5.0 * noise.constant(6 + p);
        m_inService[2][p] = lagging;
        m_inService[3][p] = 3.0 * noise.constant(9 + p);
        m_inService[4][p] = std::hypot(delivered, lagging);
    }
    m_atPowerOn = m_inService;
}

void EnergyCounters::inServiceSince(const ThreePhaseLoad& load, double uptime)
{
    const EnergyTable drawnBefore = load.energySincePowerOn(std::min(uptime, 0.0)); // zero or negative
    for (int k = 0; k < kEnergyKinds; ++k)
        for (int p = 0; p < 3; ++p)
            m_atPowerOn[k][p] = m_inService[k][p] - drawnBefore[k][p];
}

EnergyTable EnergyCounters::at(const ThreePhaseLoad& load, double uptime) const
{
    auto lastClear = m_clearedAt.crbegin();
    while (lastClear != m_clearedAt.crend() && *lastClear > uptime)
        ++lastClear;
    const bool cleared = lastClear != m_clearedAt.crend();
    // Since the last clear the counters hold what was drawn after it; before any clear, the
    // power-on readings plus what was drawn since.
    const EnergyTable start = cleared ? load.energySincePowerOn(*lastClear) : EnergyTable{};
    EnergyTable reading = load.energySincePowerOn(uptime);
    for (int k = 0; k < kEnergyKinds; ++k)
        for (int p = 0; p < 3; ++p)
            reading[k][p] += (cleared ? 0.0 : m_atPowerOn[k][p]) - start[k][p];
    return reading;
}

void EnergyCounters::clear(double uptime)
{
    m_clearedAt.append(uptime);
}

} // namespace sim
