#include "link/Waits.h"

#include "link/Transport.h"
#include "link/WatchedFlag.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

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

// Runs a nested event loop until `ms` have passed, the flag changes, or the wake signal
// fires. Returns false when the loop was ended from outside (the application is quitting),
// so that callers stop waiting instead of spinning on loops that return at once.
bool sleepInEventLoop(qint32 ms, const WatchedFlag& flag, const Transport* line)
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
    timer.start(qMax(ms, 0));
    loop.exec();
    return woken;
}

qint32 remaining(quint32 start, qint32 ms)
{
    const quint32 elapsed = timeGetTime() - start;
    return elapsed > quint32(ms) ? -1 : qint32(quint32(ms) - elapsed + 1);
}

} // namespace

quint32 timeGetTime()
{
    return static_cast<quint32>(processClock().elapsed());
}

void WaitSince(quint32 start, qint32 ms, const WatchedFlag& keepWaiting)
{
    for (qint32 left = remaining(start, ms); left > 0 && keepWaiting.isTrue(); left = remaining(start, ms)) {
        if (!sleepInEventLoop(left, keepWaiting, nullptr))
            return;
    }
}

void Delay(qint32 ms, const WatchedFlag& keepWaiting)
{
    WaitSince(timeGetTime(), ms, keepWaiting);
}

bool WaitUntil(const std::function<bool()>& done, qint32 ms, const WatchedFlag& keepWaiting,
               const Transport& line)
{
    const quint32 start = timeGetTime();
    for (qint32 left = remaining(start, ms); !done() && left > 0 && keepWaiting.isTrue();
         left = remaining(start, ms)) {
        if (!sleepInEventLoop(left, keepWaiting, &line))
            break;
    }
    return done();
}
