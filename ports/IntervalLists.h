#pragma once

#include <QtGlobal>

// The download's start and stop lists, which always hold the same entries "1", "2", ...
// The window implements it over its two combo boxes, adding many entries in one batch; a
// front end without lists may ignore it.
class IntervalLists {
public:
    virtual ~IntervalLists() = default;
    virtual void SetEnabled(bool enabled) = 0;
    // Removes every entry of both lists; their texts stay as they are.
    virtual void Clear() = 0;
    // Adds the numbers first..last, in order, to the start list and then to the stop list.
    virtual void Append(qint32 first, qint32 last) = 0;
    // Sets the text of each list that holds any entry to "1".
    virtual void ShowFirstEntry() = 0;
};
