#include "link/Waits.h"

#include "link/Transport.h"
#include "link/WatchedFlag.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>

#ifdef Q_OS_LINUX
#include <sys/timerfd.h>
#include <unistd.h>
#endif

namespace {

using Time = LinkClock::Time;

// Calls `ring` once `deadline` has come on the steady clock. A QTimer counts whole
// milliseconds from its start, and the event dispatcher rounds each of its waits up to a whole
// millisecond: on a busy event loop the 12 ms silence before a request came out 0.35 ms longer
// than asked. On Linux a timerfd armed with the deadline itself rings to the microsecond; it
// costs more to set up, so long waits (a reply's two seconds, entered again at every arrival of
// bytes), where a millisecond does not matter, keep the QTimer.
class Alarm {
public:
    Alarm(Time deadline, QObject* context, const std::function<void()>& ring)
    {
#ifdef Q_OS_LINUX
        constexpr std::chrono::milliseconds kShortWait{100};
        if (deadline - EventLoopClock().now() < kShortWait)
            m_fd = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
        if (m_fd >= 0) {
            // The steady clock is CLOCK_MONOTONIC; an all-zero time would disarm the timer.
            const Time at = std::max(deadline, Time(1));
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(at);
            itimerspec when{};
            when.it_value.tv_sec = seconds.count();
            when.it_value.tv_nsec = (at - seconds).count();
            ::timerfd_settime(m_fd, TFD_TIMER_ABSTIME, &when, nullptr);
            m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
            QObject::connect(m_notifier.get(), &QSocketNotifier::activated, context, ring);
            return;
        }
#endif
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, context, ring);
        // Rounded up, the timer never fires before the deadline.
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(std::max(deadline - EventLoopClock().now(), Time::zero())));
    }
    ~Alarm()
    {
        m_notifier.reset();
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_timer;
};

class NestedLoopClock final : public LinkClock {
public:
    Time now() const override { return std::chrono::steady_clock::now().time_since_epoch(); }

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
        const Alarm alarm(deadline, &loop, wake);
        QObject::connect(&flag, &WatchedFlag::changed, &loop, wake);
        if (line != nullptr)
            QObject::connect(line, &Transport::dataArrived, &loop, wake);
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
    return quint32(std::chrono::duration_cast<std::chrono::milliseconds>(EventLoopClock().now()).count());
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
