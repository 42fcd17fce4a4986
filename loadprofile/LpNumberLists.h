#pragma once

#include <QtGlobal>

class IntervalLists;
class Screen;
struct MeterReading;

// The load-profile group chosen for download, as an index of the per-group values: 0 when the
// operator's group list reads 1, else 1.
int DownloadGroupIndex(const Screen& screen);

// Keeps the download's start and stop lists equal to "1" up to the number of valid
// intervals of the chosen group. The lists are rebuilt only when that number falls (a group
// was cleared); when it grows, only the new numbers are appended, so the operator's choice
// stays in place. Nothing is touched while the number is unchanged.
class LpNumberLists {
public:
    // Counts that grow by more than this disable the lists while they are filled.
    static constexpr qint32 kLongAppend = 10;

    LpNumberLists(Screen& screen, IntervalLists& lists) : m_screen(screen), m_lists(lists) {}

    // Before the meter's first real-time image there is no count to build for: nothing happens.
    void RefreshLpNumberLists(const MeterReading& reading);
    // "Wait!! Setting 'Start no' & 'Stop no'" in the status line while the chosen group's count
    // differs from the one the lists were built for, that is, just before the lists change.
    void WarnIfListsWillChange(const MeterReading& reading);

    // The number of valid intervals the lists were last built for.
    qint32 LpListCount = 0;

private:
    Screen& m_screen;
    IntervalLists& m_lists;
};
