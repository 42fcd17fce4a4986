#include "loadprofile/LpNumberLists.h"

#include "connection/StatusLine.h"
#include "measure/MeterReading.h"
#include "ports/IntervalLists.h"

LpNumberLists::LpNumberLists(IntervalLists& lists, StatusLine& status, QObject* parent)
    : QObject(parent), m_lists(lists), m_status(status)
{
}

qint32 LpNumberLists::ValidIntervals(const MeterReading& reading) const
{
    return reading.loadProfile[std::size_t(m_group)].validIntervals;
}

void LpNumberLists::RefreshLpNumberLists(const MeterReading& reading)
{
    if (!reading.Has(MeterReading::RealTimeImage))
        return;
    const qint32 valid = ValidIntervals(reading);
    if (valid < LpListCount) {
        m_lists.SetEnabled(false);
        m_lists.Clear();
        if (valid >= 1)
            m_lists.Append(1, valid);
        m_lists.ShowFirstEntry();
    } else {
        if (valid - LpListCount > kLongAppend)
            m_lists.SetEnabled(false);
        if (valid > LpListCount)
            m_lists.Append(LpListCount + 1, valid);
    }
    LpListCount = valid;
    m_lists.SetEnabled(true);
}

void LpNumberLists::WarnIfListsWillChange(const MeterReading& reading)
{
    if (ValidIntervals(reading) != LpListCount)
        m_status.Set(QStringLiteral("Wait!! Setting 'Start no' & 'Stop no'"));
}
