#include "ui/MainForm.h"

#include "connection/PortCatalog.h"
#include "ui/StartUpLists.h"
#include "ui/ChoiceLists.h"
#include "ui/PortListBinding.h"
#include "session/MeterSession.h"
#include "ui/Legends.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

constexpr int kDefaultPortIndex = 2;      // port 3

} // namespace

// The order matters: each selection runs its list's handler at once, so the PC baud rate is
// chosen while the stop-bit list is still empty, and the stop-bit list completes the port
// settings afterwards.
void MainForm::Form_Load()
{
    session().StopTimers();
    portList().Show(PortCatalog::Scan(), kDefaultPortIndex);
    for (const StartUpList& list : StartUpLists())
        FillAndSelect(findChild<QComboBox*>(list.control), list.entries, list.index);

    Text_Max_int_num(0)->setText(QStringLiteral("100"));
    Text_Max_int_num(1)->setText(QStringLiteral("100"));

    ShowCrLfText(txtLPindex, LpChannelLegend());
    ShowCrLfText(txtDisplayIndex, DisplayItemLegend());
}

bool MainForm::ChoosePort(const QString& option, QString* error)
{
    return portList().Choose(option, error);
}

void MainForm::ChooseSimulatedMeter()
{
    QString error;
    ChoosePort(QStringLiteral("sim"), &error);
}
