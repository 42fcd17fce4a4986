#pragma once

#include "sim/SteadyTime.h"

#include <QDateTime>

#include <optional>

namespace sim {

// The meter's sense of time: seconds since power-on, and the calendar clock that runs with
// them. Tests can freeze time and step it, so that they know exactly what the meter serves.
// The calendar clock has no time zone: it holds the wall-clock fields the meter was set to
// (kept in a UTC QDateTime so that no daylight-saving step can move it).
class SimClock {
public:
    enum class Mode { Running, Frozen };

    // `start` is the calendar time at power-on; invalid means the PC's local time now.
    explicit SimClock(const QDateTime& start = {}, Mode mode = Mode::Running);

    double uptime() const;
    QDateTime now() const { return at(uptime()); }
    QDateTime at(double uptime) const;

    // Sets the calendar clock; it runs on from there.
    void set(const QDateTime& time);

    void freeze();
    void run();
    // Moves time on by `seconds`, frozen or running.
    void advance(double seconds);

    // `fields` with the time zone dropped, as the meter keeps them.
    static QDateTime wallClock(const QDateTime& fields);

private:
    double elapsed() const;

    SteadyTime m_poweredOn;
    double m_offset = 0;
    std::optional<double> m_frozenAt;
    QDateTime m_origin; // calendar time at uptime 0
};

} // namespace sim
