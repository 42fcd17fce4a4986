#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// How fast a download goes: the intervals a second this run has read so far, and the time the
// rest of the range takes at that rate. The window's bar and the shell's progress line show it.
struct LpPace {
    double perSecond = 0;
    qint64 secondsLeft = 0;

    // Nothing until this run has read an interval: no rate to tell yet.
    static std::optional<LpPace> Of(qint64 doneHere, qint64 left, double seconds);
    // "m:ss", or "h:mm:ss" from an hour on.
    QString TimeLeft() const;
};
