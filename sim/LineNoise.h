#pragma once

#include "sim/SteadyTime.h"

#include <QObject>
#include <QTimer>

namespace sim {

// Noise the master hears on the meter's line, as from another master on the bus or an
// unbiased RS-485 pair: a byte every millisecond for `burstMs`, then `quietMs` of quiet, over
// and over. With no quiet the line never falls silent. Lives on the meter's thread.
class LineNoise : public QObject {
    Q_OBJECT
public:
    explicit LineNoise(QObject* parent = nullptr);

    void setLine(int fd, bool socket)
    {
        m_fd = fd;
        m_socket = socket;
    }
    // Starts the noise afresh; a burst of 0 ms stops it.
    void start(int burstMs, int quietMs);

private:
    void tick();

    int m_fd = -1;
    bool m_socket = false;
    std::chrono::milliseconds m_burst{0};
    std::chrono::milliseconds m_quiet{0};
    SteadyTime m_start;
    QTimer m_timer;
};

} // namespace sim
