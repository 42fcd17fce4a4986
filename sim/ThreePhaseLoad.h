#pragma once

#include "sim/SeededNoise.h"
#include "sim/WiringFault.h"

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
    // Degrees from 0 to 360, growing in the lagging direction from L1's voltage: with the
    // sequence ABC, L2's voltage stands at 120 and L3's at 240, and the current of a load that
    // lags its voltage by φ stands at the voltage's angle + φ (a leading load: φ < 0).
    std::array<double, 3> voltageAngle{};
    std::array<double, 3> currentAngle{};
    int phaseSequence = 1; // 1 ABC, 2 CBA
};

// A load whose three phases draw the same current at one power factor, lagging (inductive)
// or leading (capacitive).
struct LoadCharacter {
    double powerFactor = 1.0; // 0 to 1
    bool leading = false;
};

// Energy by kind (kWh delivered, kWh received, kvarh lagging, kvarh leading, kVAh) and phase.
inline constexpr int kEnergyKinds = 5;
using EnergyTable = std::array<std::array<double, 3>, kEnergyKinds>;

// A balanced-ish 230/400 V three-phase system feeding an inductive load whose current follows
// a daily cycle. Everything is a function of the seed and of seconds since power-on, so the
// same seed at the same moment always reads the same.
//
// The meter measures it through its wiring: a wiring fault changes what the meter's inputs
// see (and so every measurement and energy counter) as it would on site, never the load.
// The power factor carries the sign of the active power (P / S); the phase angle tells
// lagging from leading.
class ThreePhaseLoad {
public:
    explicit ThreePhaseLoad(quint64 seed);
    // A balanced load of that character instead of the seed's own phases.
    ThreePhaseLoad(quint64 seed, LoadCharacter character);

    void setWiring(const WiringFault& fault);
    const WiringFault& wiring() const { return m_wiring; }

    // Readings `uptime` seconds after power-on; noise changes once a second.
    Measurements measure(double uptime) const;
    // Energy the meter counted per phase from power-on up to `uptime` (negative before it),
    // through its wiring, from the noise-free power so that it is exactly the integral of the
    // load's cycle.
    EnergyTable energySincePowerOn(double uptime) const;

private:
    // What meter input k is connected to: the current of `currentPhase`, turned by
    // `currentTurn` degrees, and its own phase's voltage unless that is missing.
    struct Input {
        int currentPhase = 0;
        double currentTurn = 0;
        bool voltagePresent = true;
    };

    double loadFactor(int phase, double uptime) const;
    double loadIntegral(int phase, double uptime) const;
    // Where phase p's voltage stands, in degrees, for the sequence the meter sees.
    double voltagePosition(int phase) const;
    // Where the current of meter input k stands from its voltage, without noise.
    double inputLag(int k) const;

    SeededNoise m_noise;
    std::array<double, 3> m_nominalCurrent{};
    std::array<double, 3> m_lagDegrees{};
    std::array<double, 3> m_cycleOffset{};
    WiringFault m_wiring;
    std::array<Input, 3> m_inputs{Input{0}, Input{1}, Input{2}};
    bool m_reverseSequence = false;
};

} // namespace sim
