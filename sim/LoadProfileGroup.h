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

    int validCount(double uptime, const ProfileGroupSettings& settings) const;
    static int maxCount(int channels);

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
};

} // namespace sim
