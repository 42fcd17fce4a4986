#pragma once

#include "link/LinkClock.h"

#include <QtGlobal>

class WatchedFlag;

// The waits of the tool. Each yields to the event loop through a nested QEventLoop, so the
// window repaints and takes clicks while the line is busy, and wakes only on a timer, the flag
// changing, or data arriving on the line: no polling, no sleeping.

// The clock the tool's transactions run on: the steady (monotonic) clock, to the nanosecond,
// and waits in a nested QEventLoop that an alarm wakes at the deadline.
LinkClock& EventLoopClock();

// A 32-bit millisecond tick counter on that clock; differences of two readings wrap correctly.
quint32 timeGetTime();

// Waits until more than `ms` milliseconds have passed since the call, or `keepWaiting` is False.
void Delay(qint32 ms, const WatchedFlag& keepWaiting);

// Waits until more than `ms` milliseconds have passed since `start` (a timeGetTime value), or
// `keepWaiting` is False.
void WaitSince(quint32 start, qint32 ms, const WatchedFlag& keepWaiting);
