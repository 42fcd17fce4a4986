#include "sim/LineNoise.h"

#include "sim/PacedWriter.h"

#include <algorithm>

namespace sim {

LineNoise::LineNoise(QObject* parent) : QObject(parent), m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &LineNoise::tick);
}

void LineNoise::start(int burstMs, int quietMs)
{
    m_timer.stop();
    m_burst = std::chrono::milliseconds(std::max(burstMs, 0));
    m_quiet = std::chrono::milliseconds(std::max(quietMs, 0));
    m_start = SteadyClock::now();
    if (m_burst.count() > 0)
        tick();
}

void LineNoise::tick()
{
    constexpr std::chrono::milliseconds kByteEvery{1};
    const auto phase = std::chrono::ceil<std::chrono::milliseconds>(SteadyClock::now() - m_start) % (m_burst + m_quiet);
    if (phase >= m_burst) {
        // Asleep through the quiet, not woken every millisecond of it.
        m_timer.start(m_burst + m_quiet - phase);
        return;
    }
    if (m_fd >= 0)
        PutOnLine(m_fd, m_socket, QByteArray(1, '\xFF'));
    m_timer.start(kByteEvery);
}

} // namespace sim
