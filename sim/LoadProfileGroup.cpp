#include "sim/LoadProfileGroup.h"

#include "sim/FloatRegisters.h"
#include "sim/MeterRegisters.h"

#include <algorithm>
#include <cmath>

namespace sim {
namespace {

constexpr qint64 kMemoryBank = 65536;
constexpr int kTimestampRegisters = 3;
constexpr int kMaxRecords = 0xFFFF;

double phaseSum(const EnergyTable& energy, int kind)
{
    return energy[kind][0] + energy[kind][1] + energy[kind][2];
}

// The value a channel code records for the interval that ends at `end` (uptime seconds).
double channelValue(quint16 code, double end, int intervalSeconds, const ThreePhaseLoad& load,
                    const EnergyCounters& energy)
{
    // What the load drew in the interval: a clear of the counters inside it changes nothing.
    const EnergyTable toEnd = load.energySincePowerOn(end);
    const EnergyTable toStart = load.energySincePowerOn(end - intervalSeconds);
    const auto drawn = [&](int kind) { return phaseSum(toEnd, kind) - phaseSum(toStart, kind); };
    const double hours = intervalSeconds / 3600.0;
    switch (code) {
    case 1: return load.measure(end).phaseVoltage[3];
    case 2: return load.measure(end).current[3];
    case 3: return drawn(0) / hours;
    case 4: return drawn(2) / hours;
    case 5: return drawn(4) / hours;
    case 6: return drawn(0) / drawn(4);
    case 7: case 8: case 9: case 10: case 11: return phaseSum(energy.at(load, end), code - 7);
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

qint64 recordBytes(int channels)
{
    return 2 * kTimestampRegisters + 4 * qint64(channels);
}

int intervalSeconds(const ProfileGroupSettings& settings)
{
    return 60 * std::max(settings.intervalMinutes, 1);
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

void LoadProfileGroup::enlargeToHold(int records, int channels)
{
    const qint64 banks = (std::clamp(records, 0, kMaxRecords) * recordBytes(channels) + kMemoryBank - 1) / kMemoryBank;
    m_memoryBytes = std::max(m_memoryBytes, banks * kMemoryBank);
}

int LoadProfileGroup::maxCount(int channels) const
{
    return int(std::min<qint64>(kMaxRecords, m_memoryBytes / recordBytes(channels)));
}

int LoadProfileGroup::validCount(double uptime, const ProfileGroupSettings& settings) const
{
    const auto recordedSince = static_cast<int>(std::floor((uptime - m_anchorUptime) / intervalSeconds(settings)));
    return std::min(maxCount(int(settings.codes.size())), m_anchorCount + std::max(recordedSince, 0));
}

double LoadProfileGroup::oldestStart(const ProfileGroupSettings& settings) const
{
    return m_anchorUptime - double(m_anchorCount) * intervalSeconds(settings);
}

QList<quint16> LoadProfileGroup::record(int number, const ProfileGroupSettings& settings,
                                        const ThreePhaseLoad& load, const EnergyCounters& energy) const
{
    const int seconds = intervalSeconds(settings);
    const int stepsFromAnchor = number - m_anchorCount;
    const double end = m_anchorUptime + double(stepsFromAnchor) * seconds;
    const QDateTime stamp = m_anchorClock.addSecs(qint64(stepsFromAnchor) * seconds);

    QList<quint16> registers(recordLength(settings), 0);
    const auto pair = [](int high, int low) { return static_cast<quint16>((high << 8) | low); };
    registers[0] = pair(stamp.date().year() - 2000, stamp.date().month());
    registers[1] = pair(stamp.date().day(), stamp.time().hour());
    registers[2] = pair(stamp.time().minute(), stamp.time().second());
    for (qsizetype k = 0; k < settings.codes.size(); ++k)
        putFloat(registers, kTimestampRegisters + 2 * k, channelValue(settings.codes[k], end, seconds, load, energy));
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
