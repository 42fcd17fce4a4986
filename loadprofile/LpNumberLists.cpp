#include "loadprofile/LpNumberLists.h"

#include "loadprofile/IntervalLists.h"
#include "measure/Screen.h"
#include "measure/TextNumbers.h"

void LpNumberLists::RefreshLpNumberLists()
{
    const int group = DownloadGroupElement(m_screen);
    // Before the meter's first complete image the field is empty: nothing to build for yet.
    const auto count = WholeNumber(m_screen.Text(Element("Text_Valid_int_num", group)));
    if (!count)
        return;
    const qint32 valid = *count;
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
