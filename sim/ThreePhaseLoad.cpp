#include "sim/ThreePhaseLoad.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sim {
namespace {

constexpr double kNominalVoltage = 230.0;
constexpr double kDailySwing = 0.25; // the current varies by ±25 % over a day
constexpr double kDayAngularRate = 2 * std::numbers::pi / 86400.0;
constexpr double kSecondsPerHour = 3600.0;
constexpr double kBalancedCurrent = 5.0; // each phase of a load of a chosen character

double radians(double degrees) { return degrees * std::numbers::pi / 180.0; }
double degrees(double radians) { return radians * 180.0 / std::numbers::pi; }
// The angle in [0, 360), as the meter reports it.
double normalised(double degrees)
{
    const double turned = std::fmod(degrees, 360.0);
    return turned < 0 ? turned + 360.0 : turned;
}

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

ThreePhaseLoad::ThreePhaseLoad(quint64 seed, LoadCharacter character) : ThreePhaseLoad(seed)
{
    const double lag = degrees(std::acos(std::clamp(character.powerFactor, 0.0, 1.0)));
    for (int p = 0; p < 3; ++p) {
        m_nominalCurrent[p] = kBalancedCurrent;
        m_lagDegrees[p] = character.leading ? -lag : lag;
        m_cycleOffset[p] = m_cycleOffset[0];
    }
}

void ThreePhaseLoad::setWiring(const WiringFault& fault)
{
    m_wiring = fault;
    m_inputs = {Input{0}, Input{1}, Input{2}};
    m_reverseSequence = false;
    switch (fault.kind) {
    case WiringFault::Kind::None:
        break;
    case WiringFault::Kind::ReversedCt:
        m_inputs[fault.phase].currentTurn = 180.0;
        break;
    case WiringFault::Kind::SwappedCurrents:
        std::swap(m_inputs[fault.phase].currentPhase, m_inputs[fault.otherPhase].currentPhase);
        break;
    case WiringFault::Kind::MissingVoltage:
        m_inputs[fault.phase].voltagePresent = false;
        break;
    case WiringFault::Kind::ReverseSequence:
        m_reverseSequence = true;
        break;
    }
}

double ThreePhaseLoad::voltagePosition(int phase) const
{
    return m_reverseSequence ? normalised(-120.0 * phase) : 120.0 * phase;
}

double ThreePhaseLoad::inputLag(int k) const
{
    const Input& input = m_inputs[k];
    const int source = input.currentPhase;
    return voltagePosition(source) - voltagePosition(k) + m_lagDegrees[source] + input.currentTurn;
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
    m.phaseSequence = m_reverseSequence ? 2 : 1;
    for (int k = 0; k < 3; ++k) {
        const Input& input = m_inputs[k];
        const int source = input.currentPhase;
        const double volts = input.voltagePresent ? kNominalVoltage + 2.0 * m_noise.at(slot, kVoltageNoise + k) : 0.0;
        const double amps = m_nominalCurrent[source] * loadFactor(source, uptime) * (1.0 + 0.01 * m_noise.at(slot, kCurrentNoise + source));
        const double lag = inputLag(k) + m_noise.at(slot, kLagNoise + source);
        const double kva = volts * amps / 1000.0;
        m.phaseVoltage[k] = volts;
        m.current[k] = amps;
        m.apparentPower[k] = kva;
        m.activePower[k] = kva * std::cos(radians(lag));
        m.reactivePower[k] = kva * std::sin(radians(lag));
        m.powerFactor[k] = kva > 0 ? std::cos(radians(lag)) : 0.0;
        // An open voltage input leaves the meter no angle to measure there.
        m.voltageAngle[k] = input.voltagePresent ? voltagePosition(k) : 0.0;
        m.currentAngle[k] = normalised(voltagePosition(k) + lag);
    }
    for (int p = 0; p < 3; ++p) {
        // |Va − Vb|² = Va² + Vb² − 2·Va·Vb·cos(angle between them); 120° apart: Va² + Vb² + Va·Vb.
        const int next = (p + 1) % 3;
        const double a = m.phaseVoltage[p];
        const double b = m.phaseVoltage[next];
        const double between = radians(voltagePosition(p) - voltagePosition(next));
        m.lineVoltage[p] = std::sqrt(std::max(a * a + b * b - 2 * a * b * std::cos(between), 0.0));
    }
    const auto mean = [](std::array<double, 4>& v) { v[3] = (v[0] + v[1] + v[2]) / 3.0; };
    const auto sum = [](std::array<double, 4>& v) { v[3] = v[0] + v[1] + v[2]; };
    mean(m.phaseVoltage);
    mean(m.lineVoltage);
    mean(m.current);
    sum(m.activePower);
    sum(m.reactivePower);
    sum(m.apparentPower);
    m.powerFactor[3] = m.apparentPower[3] > 0 ? m.activePower[3] / m.apparentPower[3] : 0.0;
    return m;
}

EnergyTable ThreePhaseLoad::energySincePowerOn(double uptime) const
{
    EnergyTable energy{};
    for (int k = 0; k < 3; ++k) {
        const Input& input = m_inputs[k];
        const int source = input.currentPhase;
        const double volts = input.voltagePresent ? kNominalVoltage : 0.0;
        const double kvah = volts * m_nominalCurrent[source] / 1000.0 * loadIntegral(source, uptime) / kSecondsPerHour;
        const double lag = radians(inputLag(k));
        // Power the meter sees flowing out (a reversed CT) counts as received, a leading
        // current as leading; the signs come from the phasor, kvah being negative before
        // power-on.
        energy[0][k] = kvah * std::max(std::cos(lag), 0.0);
        energy[1][k] = kvah * std::max(-std::cos(lag), 0.0);
        energy[2][k] = kvah * std::max(std::sin(lag), 0.0);
        energy[3][k] = kvah * std::max(-std::sin(lag), 0.0);
        energy[4][k] = kvah;
    }
    return energy;
}

} // namespace sim
