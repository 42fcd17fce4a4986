#pragma once

#include "sim/EnergyCounters.h"
#include "sim/SimClock.h"
#include "sim/ThreePhaseLoad.h"

#include <QDateTime>
#include <QList>

namespace sim {

// A group's configuration as its holding registers hold it.
struct ProfileGroupSettings {
    int intervalMinutes = 15;
    QList<quint16> codes; // one per recorded channel
};

// One load-profile group's memory. Records are not stored: an interval's record is computed
// from the load and the energy counters at its end, so the group only remembers when its
// recording started and how many intervals it held then. It fills at one record per
// interval and stops when full.
class LoadProfileGroup {
public:
    // Recording starts over at the interval boundary at or before the clock's time, the
    // memory already holding `recorded` intervals that ended on the boundaries before it.
    void restart(const SimClock& clock, int intervalMinutes, int recorded);
    // Grows the memory, in whole 64 KiB banks, until it holds `records` records of
    // `channels` channels. It never shrinks: a clear or another channel count keeps it.
    void enlargeToHold(int records, int channels);

    int validCount(double uptime, const ProfileGroupSettings& settings) const;
    // How many records of `channels` channels the memory holds, at most 65535 (the counters
    // are 16-bit registers).
    int maxCount(int channels) const;
    // The uptime at which the oldest interval held began.
    double oldestStart(const ProfileGroupSettings& settings) const;

    // The record area from interval number `first` (from 1) on: records of 3 + 2·channels
    // registers back to back (time stamp, then one float per channel), zeros where the
    // number has no record.
    QList<quint16> recordArea(int first, const ProfileGroupSettings& settings, const ThreePhaseLoad& load,
                              const EnergyCounters& energy, double uptime) const;

private:
    QList<quint16> record(int number, const ProfileGroupSettings& settings, const ThreePhaseLoad& load,
                          const EnergyCounters& energy) const;

    QDateTime m_anchorClock;   // end of interval number m_anchorCount
    double m_anchorUptime = 0; // the same moment in uptime
    int m_anchorCount = 0;
    qint64 m_memoryBytes = 65536;
};

} // namespace sim
