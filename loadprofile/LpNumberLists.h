#pragma once

#include <QObject>

class IntervalLists;
class StatusLine;
struct MeterReading;

// Keeps the download's start and stop lists equal to "1" up to the number of valid
// intervals of the chosen group, as the poll's readings report it. The lists are rebuilt only
// when that number falls (a group was cleared); when it grows, only the new numbers are
// appended, so the operator's choice stays in place. Nothing is touched while the number is
// unchanged.
class LpNumberLists : public QObject {
    Q_OBJECT
public:
    // Counts that grow by more than this disable the lists while they are filled.
    static constexpr qint32 kLongAppend = 10;

    LpNumberLists(IntervalLists& lists, StatusLine& status, QObject* parent = nullptr);

    // The group chosen for download: 0 or 1. Choosing another keeps the lists as they are
    // until the next refresh compares its count.
    void ChooseGroup(int group) { m_group = group; }
    int Group() const { return m_group; }

    // Before the meter's first real-time image there is no count to build for: nothing happens.
    void RefreshLpNumberLists(const MeterReading& reading);
    // "Wait!! Setting 'Start no' & 'Stop no'" in the status line while the chosen group's count
    // differs from the one the lists were built for, that is, just before the lists change.
    void WarnIfListsWillChange(const MeterReading& reading);

    // The number of valid intervals the lists were last built for.
    qint32 LpListCount = 0;

private:
    qint32 ValidIntervals(const MeterReading& reading) const;

    IntervalLists& m_lists;
    StatusLine& m_status;
    int m_group = 0;
};
