#pragma once

#include "ports/IntervalLists.h"

class QComboBox;

// The download's start and stop lists. Thousands of numbers go in as one batch per list, and
// the lists never size themselves to their contents, so a long append costs one model
// insertion and no layout pass over every entry.
class ComboIntervalLists : public IntervalLists {
public:
    ComboIntervalLists(QComboBox* start, QComboBox* stop);

    void SetEnabled(bool enabled) override;
    void Clear() override;
    void Append(qint32 first, qint32 last) override;
    void ShowFirstEntry() override;

private:
    QComboBox* m_lists[2];
};
