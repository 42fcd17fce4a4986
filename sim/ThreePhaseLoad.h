#pragma once

#include "sim/SeededNoise.h"

#include <QtGlobal>

#include <array>

namespace sim {

// One instant's readings, grouped as the meter serves them: phases a, b, c, then the average
// (voltages, currents, power factor) or the total (powers).
struct Measurements {
    double frequency = 0;
    std::array<double, 4> phaseVoltage{};
    std::array<double, 4> lineVoltage{}; // ab, bc, ca, average
    std::array<double, 4> current{};
    std::array<double, 4> activePower{};   // kW
    std::array<double, 4> reactivePower{}; // kvar
    std::array<double, 4> apparentPower{}; // kVA
    std::array<double, 4> powerFactor{};
    std::array<double, 3> voltageAngle{};  // degrees
    std::array<double, 3> currentAngle{};
};

// Energy by kind (kWh delivered, kWh received, kvarh lagging, kvarh leading, kVAh) and phase.
inline constexpr int kEnergyKinds = 5;
using EnergyTable = std::array<std::array<double, 3>, kEnergyKinds>;

// A balanced-ish 230/400 V three-phase system feeding an inductive load whose current follows
// a daily cycle. Everything is a function of the seed and of seconds since power-on, so the
// same seed at the same moment always reads the same.
class ThreePhaseLoad {
public:
    explicit ThreePhaseLoad(quint64 seed);

    // Readings `uptime` seconds after power-on; noise changes once a second.
    Measurements measure(double uptime) const;
    // Energy the load drew per phase from power-on up to `uptime` (negative before it),
    // from the noise-free power so that it is exactly the integral of the load's cycle.
    EnergyTable energySincePowerOn(double uptime) const;

private:
    double loadFactor(int phase, double uptime) const;
    double loadIntegral(int phase, double uptime) const;

    SeededNoise m_noise;
    std::array<double, 3> m_nominalCurrent{};
    std::array<double, 3> m_lagDegrees{};
    std::array<double, 3> m_cycleOffset{};
};

} // namespace sim
