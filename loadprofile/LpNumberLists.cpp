#include "loadprofile/LpNumberLists.h"

#include "connection/TextNumbers.h"
#include "measure/MeterReading.h"
#include "ports/IntervalLists.h"
#include "ports/Screen.h"

namespace {

qint32 ValidIntervals(const MeterReading& reading, const Screen& screen)
{
    return reading.loadProfile[std::size_t(DownloadGroupIndex(screen))].validIntervals;
}

} // namespace

int DownloadGroupIndex(const Screen& screen)
{
    return LeadingValue(screen.Text(QStringLiteral("Combo_LP_Read_Group_Sel"))) == 1 ? 0 : 1;
}

void LpNumberLists::RefreshLpNumberLists(const MeterReading& reading)
{
    if (!reading.Has(MeterReading::RealTimeImage))
        return;
    const qint32 valid = ValidIntervals(reading, m_screen);
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
    if (ValidIntervals(reading, m_screen) != LpListCount)
        m_screen.SetText(QStringLiteral("Text6"), QStringLiteral("Wait!! Setting 'Start no' & 'Stop no'"));
}
