#include "ui/MainForm.h"

#include "connection/PortCatalog.h"
#include "ports/StartUpLists.h"
#include "ui/ChoiceLists.h"
#include "connection/MeterSession.h"
#include "ui/Legends.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

constexpr int kDefaultPortIndex = 2;      // port 3

QStringList LabelsOf(const QList<PortEntry>& entries)
{
    QStringList labels;
    for (const PortEntry& entry : entries)
        labels.append(entry.label);
    return labels;
}

} // namespace

// The order matters: each selection runs its list's handler at once, so the PC baud rate is
// chosen while the stop-bit list is still empty, and the stop-bit list completes the port
// settings afterwards.
void MainForm::Form_Load()
{
    session().StopTimers();
    PortEntries = PortCatalog::Scan();
    FillAndSelect(Combo_CommPort, LabelsOf(PortEntries), kDefaultPortIndex);
    for (const StartUpList& list : StartUpLists())
        FillAndSelect(findChild<QComboBox*>(list.control), list.entries, list.index);

    Text_Max_int_num(0)->setText(QStringLiteral("100"));
    Text_Max_int_num(1)->setText(QStringLiteral("100"));

    ShowCrLfText(txtLPindex, LpChannelLegend());
    ShowCrLfText(txtDisplayIndex, DisplayItemLegend());
}

void MainForm::ChooseSimulatedMeter()
{
    Combo_CommPort->setCurrentIndex(Combo_CommPort->count() - 1);
}
