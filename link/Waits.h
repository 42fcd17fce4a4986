#pragma once

#include <QtGlobal>

#include <functional>

class Transport;
class WatchedFlag;

// The two waits of the tool, and the reply wait built on the same mechanism. Each yields to
// the event loop through a nested QEventLoop, so the window repaints and takes clicks while
// the line is busy, and wakes only on a timer, the flag turning False, or data arriving on
// the line: no polling, no sleeping.

// A 32-bit millisecond tick counter; differences of two readings wrap correctly.
quint32 timeGetTime();

// Waits until more than `ms` milliseconds have passed since the call, or `keepWaiting` is False.
void Delay(qint32 ms, const WatchedFlag& keepWaiting);

// Waits until more than `ms` milliseconds have passed since `start` (a timeGetTime value), or
// `keepWaiting` is False.
void WaitSince(quint32 start, qint32 ms, const WatchedFlag& keepWaiting);

// Waits until `done()` holds, `ms` milliseconds have passed since the call, or `keepWaiting`
// is False; `done()` is looked at once at the start and again each time `line` reports data.
// Returns `done()`.
bool WaitUntil(const std::function<bool()>& done, qint32 ms, const WatchedFlag& keepWaiting,
               const Transport& line);
