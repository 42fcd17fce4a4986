#include "sim/ThreePhaseLoad.h"

#include <cmath>
#include <numbers>

namespace sim {
namespace {

constexpr double kNominalVoltage = 230.0;
constexpr double kDailySwing = 0.25; // the current varies by ±25 % over a day
constexpr double kDayAngularRate = 2 * std::numbers::pi / 86400.0;
constexpr double kSecondsPerHour = 3600.0;

double radians(double degrees) { return degrees * std::numbers::pi / 180.0; }

// Channels of SeededNoise: one per quantity and phase, so that no two draws coincide.
enum Channel { kVoltageNoise = 0, kCurrentNoise = 3, kLagNoise = 6, kFrequencyNoise = 9,
               kCurrentSetting = 10, kLagSetting = 13, kCycleSetting = 16 };

} // namespace

ThreePhaseLoad::ThreePhaseLoad(quint64 seed) : m_noise(seed)
{
    for (int p = 0; p < 3; ++p) {
        m_nominalCurrent[p] = 2.0 + 6.0 * m_noise.constant(kCurrentSetting + p);
        m_lagDegrees[p] = 15.0 + 20.0 * m_noise.constant(kLagSetting + p);
        m_cycleOffset[p] = 2 * std::numbers::pi * m_noise.constant(kCycleSetting + p);
    }
}

double ThreePhaseLoad::loadFactor(int phase, double uptime) const
{
    return 1.0 + kDailySwing * std::sin(kDayAngularRate * uptime + m_cycleOffset[phase]);
}

double ThreePhaseLoad::loadIntegral(int phase, double uptime) const
{
    const double offset = m_cycleOffset[phase];
    return uptime
        + kDailySwing / kDayAngularRate * (std::cos(offset) - std::cos(kDayAngularRate * uptime + offset));
}

Measurements ThreePhaseLoad::measure(double uptime) const
{
    const auto slot = static_cast<qint64>(std::floor(uptime));
    Measurements m;
    m.frequency = 50.0 + 0.03 * m_noise.at(slot, kFrequencyNoise);
    for (int p = 0; p < 3; ++p) {
        const double volts = kNominalVoltage + 2.0 * m_noise.at(slot, kVoltageNoise + p);
        const double amps = m_nominalCurrent[p] * loadFactor(p, uptime) * (1.0 + 0.01 * m_noise.at(slot, kCurrentNoise + p));
        const double lag = m_lagDegrees[p] + m_noise.at(slot, kLagNoise + p);
        const double kva = volts * amps / 1000.0;
        m.phaseVoltage[p] = volts;
        m.current[p] = amps;
        m.apparentPower[p] = kva;
        m.activePower[p] = kva * std::cos(radians(lag));
        m.reactivePower[p] = kva * std::sin(radians(lag));
        m.powerFactor[p] = std::cos(radians(lag));
        m.voltageAngle[p] = 120.0 * p;
        m.currentAngle[p] = 120.0 * p + lag;
    }
    for (int p = 0; p < 3; ++p) {
        // Two phasors 120° apart: |Va − Vb|² = Va² + Vb² + Va·Vb.
        const double a = m.phaseVoltage[p];
        const double b = m.phaseVoltage[(p + 1) % 3];
        m.lineVoltage[p] = std::sqrt(a * a + b * b + a * b);
    }
    const auto mean = [](std::array<double, 4>& v) { v[3] = (v[0] + v[1] + v[2]) / 3.0; };
    const auto sum = [](std::array<double, 4>& v) { v[3] = v[0] + v[1] + v[2]; };
    mean(m.phaseVoltage);
    mean(m.lineVoltage);
    mean(m.current);
    sum(m.activePower);
    sum(m.reactivePower);
    sum(m.apparentPower);
    m.powerFactor[3] = m.activePower[3] / m.apparentPower[3];
    return m;
}

EnergyTable ThreePhaseLoad::energySincePowerOn(double uptime) const
{
    EnergyTable energy{};
    for (int p = 0; p < 3; ++p) {
        const double kvah = kNominalVoltage * m_nominalCurrent[p] / 1000.0 * loadIntegral(p, uptime) / kSecondsPerHour;
        const double lag = radians(m_lagDegrees[p]);
        // An inductive load draws; it never feeds back nor leads.
        energy[0][p] = kvah * std::cos(lag);
        energy[1][p] = 0.0;
        energy[2][p] = kvah * std::sin(lag);
        energy[3][p] = 0.0;
        energy[4][p] = kvah;
    }
    return energy;
}

} // namespace sim
