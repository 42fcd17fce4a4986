#pragma once

#include <chrono>

class Transport;
class WatchedFlag;

// Where the register transactions read the time and wait. The tool runs them on the
// event-loop clock (Waits.h); tests hand in a virtual clock, on which the two-second reply
// time-outs of five attempts pass in no real time at all.
class LinkClock {
public:
    // Nanoseconds on a monotonic clock from an arbitrary start.
    using Time = std::chrono::nanoseconds;

    virtual ~LinkClock() = default;

    virtual Time now() const = 0;

    // Returns once `deadline` has come, `line` (when given) has reported data, or `flag` has
    // changed; an early return is no error, callers look at the time and the line again.
    // Returns false when no wait is possible any more (the application is quitting).
    virtual bool waitUntil(Time deadline, const WatchedFlag& flag, const Transport* line) = 0;
};
