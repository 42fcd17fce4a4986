#pragma once

#include <QDateTime>

// The PC's clock, as the core reads it: the time a reading was taken, the time written to the
// meter's clock, the date in a download's file name. Tests hand in a fixed time.
class Clock {
public:
    virtual ~Clock() = default;
    virtual QDateTime Now() const = 0;
};

class SystemClock : public Clock {
public:
    QDateTime Now() const override { return QDateTime::currentDateTime(); }
};
