#include "sim/SimClock.h"

#include <chrono>
#include <cmath>

namespace sim {

SimClock::SimClock(const QDateTime& start, Mode mode)
    : m_poweredOn(SteadyClock::now())
    , m_origin(wallClock(start.isValid() ? start : QDateTime::currentDateTime()))
{
    if (mode == Mode::Frozen)
        m_frozenAt = 0.0;
}

QDateTime SimClock::wallClock(const QDateTime& fields)
{
    return QDateTime(fields.date(), fields.time(), Qt::UTC);
}

double SimClock::elapsed() const
{
    return std::chrono::duration<double>(SteadyClock::now() - m_poweredOn).count();
}

double SimClock::uptime() const
{
    return m_frozenAt ? *m_frozenAt : elapsed() + m_offset;
}

QDateTime SimClock::at(double uptime) const
{
    return m_origin.addMSecs(std::llround(uptime * 1000.0));
}

void SimClock::set(const QDateTime& time)
{
    m_origin = wallClock(time).addMSecs(-std::llround(uptime() * 1000.0));
}

void SimClock::freeze()
{
    m_frozenAt = uptime();
}

void SimClock::run()
{
    if (!m_frozenAt)
        return;
    m_offset = *m_frozenAt - elapsed();
    m_frozenAt.reset();
}

void SimClock::advance(double seconds)
{
    if (m_frozenAt)
        *m_frozenAt += seconds;
    else
        m_offset += seconds;
}

} // namespace sim
