#pragma once

#include "ports/Clock.h"
#include "ports/IntervalLists.h"

#include <QStringList>

// The start and stop lists as two string lists, with a record of every enable change.
class RecordingLists : public IntervalLists {
public:
    RecordingLists() : start{QStringLiteral("1")}, stop{QStringLiteral("1")} {}

    void SetEnabled(bool enabled) override { enabledHistory.append(enabled); }
    void Clear() override
    {
        start.clear();
        stop.clear();
    }
    void Append(qint32 first, qint32 last) override
    {
        for (qint32 i = first; i <= last; ++i) {
            start.append(QString::number(i));
            stop.append(QString::number(i));
        }
        ++appendCalls;
    }
    void ShowFirstEntry() override
    {
        if (!start.isEmpty())
            startText = QStringLiteral("1");
        if (!stop.isEmpty())
            stopText = QStringLiteral("1");
    }

    QStringList start;
    QStringList stop;
    QString startText;
    QString stopText;
    QList<bool> enabledHistory;
    int appendCalls = 0;
};

// A clock that stands still at `now`.
class FixedClock : public Clock {
public:
    QDateTime Now() const override { return now; }
    QDateTime now = QDateTime(QDate(2026, 11, 16), QTime(8, 30, 0));
};
