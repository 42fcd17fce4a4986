#include "link/Waits.h"

#include "link/Transport.h"
#include "link/WatchedFlag.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace {

const QElapsedTimer& processClock()
{
    static const QElapsedTimer clock = [] {
        QElapsedTimer c;
        c.start();
        return c;
    }();
    return clock;
}

class NestedLoopClock final : public LinkClock {
public:
    Time now() const override { return Time(processClock().nsecsElapsed()); }

    // Runs a nested event loop until the deadline, a change of the flag or data on the line.
    // Returns false when the loop was ended from outside (the application is quitting), so
    // that callers stop waiting instead of spinning on loops that return at once.
    bool waitUntil(Time deadline, const WatchedFlag& flag, const Transport* line) override
    {
        QEventLoop loop;
        bool woken = false;
        const auto wake = [&loop, &woken] {
            woken = true;
            loop.quit();
        };
        QTimer timer;
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &loop, wake);
        QObject::connect(&flag, &WatchedFlag::changed, &loop, wake);
        if (line != nullptr)
            QObject::connect(line, &Transport::dataArrived, &loop, wake);
        // The timer counts whole milliseconds: rounded up, it never fires before the deadline.
        timer.start(std::chrono::ceil<std::chrono::milliseconds>(std::max(deadline - now(), Time::zero())));
        loop.exec();
        return woken;
    }
};

qint32 remaining(quint32 start, qint32 ms)
{
    const quint32 elapsed = timeGetTime() - start;
    return elapsed > quint32(ms) ? -1 : qint32(quint32(ms) - elapsed + 1);
}

} // namespace

LinkClock& EventLoopClock()
{
    static NestedLoopClock clock;
    return clock;
}

quint32 timeGetTime()
{
    return static_cast<quint32>(processClock().elapsed());
}

void WaitSince(quint32 start, qint32 ms, const WatchedFlag& keepWaiting)
{
    LinkClock& clock = EventLoopClock();
    for (qint32 left = remaining(start, ms); left > 0 && keepWaiting.isTrue(); left = remaining(start, ms)) {
        if (!clock.waitUntil(clock.now() + std::chrono::milliseconds(left), keepWaiting, nullptr))
            return;
    }
}

void Delay(qint32 ms, const WatchedFlag& keepWaiting)
{
    WaitSince(timeGetTime(), ms, keepWaiting);
}
