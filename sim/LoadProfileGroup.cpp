#include "sim/LoadProfileGroup.h"

#include "sim/FloatRegisters.h"
#include "sim/MeterRegisters.h"

#include <algorithm>
#include <cmath>

namespace sim {
namespace {

constexpr int kMemoryBytes = 65536; // per group
constexpr int kTimestampRegisters = 3;

double phaseSum(const EnergyTable& energy, int kind)
{
    return energy[kind][0] + energy[kind][1] + energy[kind][2];
}

// The value a channel code records for the interval that ends at `end` (uptime seconds).
double channelValue(quint16 code, double end, int intervalSeconds, const ThreePhaseLoad& load,
                    const EnergyCounters& energy)
{
    const EnergyTable atEnd = energy.at(load, end);
    const EnergyTable atStart = energy.at(load, end - intervalSeconds);
    const auto drawn = [&](int kind) { return phaseSum(atEnd, kind) - phaseSum(atStart, kind); };
    const double hours = intervalSeconds / 3600.0;
    switch (code) {
    case 1: return load.measure(end).phaseVoltage[3];
    case 2: return load.measure(end).current[3];
    case 3: return drawn(0) / hours;
    case 4: return drawn(2) / hours;
    case 5: return drawn(4) / hours;
    case 6: return drawn(0) / drawn(4);
    case 7: case 8: case 9: case 10: case 11: return phaseSum(atEnd, code - 7);
    case 12: return drawn(0);
    case 13: return drawn(2);
    case 14: return drawn(4);
    default: return 0.0;
    }
}

int recordLength(const ProfileGroupSettings& settings)
{
    return kTimestampRegisters + 2 * int(settings.codes.size());
}

} // namespace

void LoadProfileGroup::restart(const SimClock& clock, int intervalMinutes, int recorded)
{
    const double uptime = clock.uptime();
    const QDateTime now = clock.at(uptime);
    const int minuteOfDay = now.time().hour() * 60 + now.time().minute();
    const int boundary = minuteOfDay - minuteOfDay % std::max(intervalMinutes, 1);
    m_anchorClock = QDateTime(now.date(), QTime(boundary / 60, boundary % 60), Qt::UTC);
    m_anchorUptime = uptime - m_anchorClock.msecsTo(now) / 1000.0;
    m_anchorCount = recorded;
}

int LoadProfileGroup::maxCount(int channels)
{
    return std::min(0xFFFF, kMemoryBytes / (6 + 4 * channels));
}

int LoadProfileGroup::validCount(double uptime, const ProfileGroupSettings& settings) const
{
    const double intervalSeconds = 60.0 * std::max(settings.intervalMinutes, 1);
    const auto recordedSince = static_cast<int>(std::floor((uptime - m_anchorUptime) / intervalSeconds));
    return std::min(maxCount(int(settings.codes.size())), m_anchorCount + std::max(recordedSince, 0));
}

QList<quint16> LoadProfileGroup::record(int number, const ProfileGroupSettings& settings,
                                        const ThreePhaseLoad& load, const EnergyCounters& energy) const
{
    const int intervalSeconds = 60 * std::max(settings.intervalMinutes, 1);
    const int stepsFromAnchor = number - m_anchorCount;
    const double end = m_anchorUptime + double(stepsFromAnchor) * intervalSeconds;
    const QDateTime stamp = m_anchorClock.addSecs(qint64(stepsFromAnchor) * intervalSeconds);

    QList<quint16> registers(recordLength(settings), 0);
    const auto pair = [](int high, int low) { return static_cast<quint16>((high << 8) | low); };
    registers[0] = pair(stamp.date().year() - 2000, stamp.date().month());
    registers[1] = pair(stamp.date().day(), stamp.time().hour());
    registers[2] = pair(stamp.time().minute(), stamp.time().second());
    for (qsizetype k = 0; k < settings.codes.size(); ++k)
        putFloat(registers, kTimestampRegisters + 2 * k, channelValue(settings.codes[k], end, intervalSeconds, load, energy));
    return registers;
}

QList<quint16> LoadProfileGroup::recordArea(int first, const ProfileGroupSettings& settings,
                                            const ThreePhaseLoad& load, const EnergyCounters& energy,
                                            double uptime) const
{
    QList<quint16> area(kRecordAreaLength, 0);
    const int length = recordLength(settings);
    const int valid = validCount(uptime, settings);
    for (int offset = 0; offset < area.size(); offset += length) {
        const int number = first + offset / length;
        if (number < 1 || number > valid)
            continue;
        const QList<quint16> one = record(number, settings, load, energy);
        std::copy_n(one.cbegin(), std::min<qsizetype>(length, area.size() - offset), area.begin() + offset);
    }
    return area;
}

} // namespace sim
