#include "ui/MainForm.h"

#include "connection/PortCatalog.h"
#include "ui/ChoiceLists.h"
#include "ui/PortListBinding.h"
#include "connection/MeterSession.h"
#include "ui/Legends.h"

#include <QComboBox>
#include <QLineEdit>

namespace {

const QStringList kGroups{QStringLiteral("1"), QStringLiteral("2")};
const QStringList kLpIntervals{QStringLiteral("1"), QStringLiteral("5"), QStringLiteral("10"),
                               QStringLiteral("15"), QStringLiteral("30"), QStringLiteral("60")};
constexpr int kLpIntervalIndex15 = 3;
constexpr int kLpChannelCodes = 14;
constexpr int kDefaultAddressIndex = 14;  // address 15
constexpr int kDefaultPortIndex = 2;      // port 3

// A group's lists: channel count, interval, then one code list per channel; a code list's
// index is its code - 1.
void FillLpGroup(ControlArray<QComboBox>& settings, int maxChannels, int channels, const QList<int>& codes)
{
    FillAndSelect(settings(0), NumberTexts(1, maxChannels), channels - 1);
    FillAndSelect(settings(1), kLpIntervals, kLpIntervalIndex15);
    for (int k = 0; k < codes.size(); ++k)
        FillAndSelect(settings(2 + k), NumberTexts(1, kLpChannelCodes), codes[k] - 1);
}

QStringList DisplayItemCodes()
{
    return NumberTexts(0, 10) + QStringList{QStringLiteral("12")} + NumberTexts(101, 140);
}

} // namespace

// The order matters: each selection runs its list's handler at once, so the PC
// baud rate is chosen while the stop-bit list is still empty, and the stop-bit list completes
// the port settings afterwards.
void MainForm::Form_Load()
{
    session().StopTimers();
    FillAndSelect(Combo_Modbus_BaudRate, BaudRateTexts(), 1);
    portList().Show(PortCatalog::Scan(), kDefaultPortIndex);

    const QStringList addresses = AddressTexts();
    AddEntries(Combo_Modbus_add, addresses);
    AddEntries(Combo_Modbus_add_sel, addresses);
    Combo_Modbus_add->setCurrentIndex(kDefaultAddressIndex);
    Combo_Modbus_add_sel->setCurrentIndex(kDefaultAddressIndex);

    FillAndSelect(Combo_BaudRate_Sel, BaudRateTexts(), 1);

    // The irregular order of group 1's later channels is the meter's factory default.
    FillLpGroup(Combo_G1_Setting, 12, 8, {1, 2, 3, 4, 5, 7, 9, 11, 6, 8, 10, 12});
    FillLpGroup(Combo_G2_Setting, 8, 4, {6, 12, 13, 14, 1, 2, 3, 4});

    FillAndSelect(Combo_LP_Read_Group_Sel, kGroups, 0);

    FillAndSelect(Combo_Display_Ser_sel, NumberTexts(1, 50), 0);
    FillAndSelect(Combo_Display_Item_sel, DisplayItemCodes(), 1);
    FillAndSelect(Combo1, NumberTexts(3, 15), 0);

    FillAndSelect(Combo_PT_Ratio, {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("5"), QStringLiteral("10")}, 0);
    FillAndSelect(Combo_CT_Ratio, {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("100"), QStringLiteral("200")}, 0);

    FillAndSelect(Combo4, NumberTexts(1, 4), 0);
    FillAndSelect(Combo_LP_Read_Group_Sel1, kGroups, 0);

    FillAndSelect(Combo_LP_Start_No, {QStringLiteral("1")}, 0);
    FillAndSelect(Combo_LP_Stop_No, {QStringLiteral("1")}, 0);

    Text_Max_int_num(0)->setText(QStringLiteral("100"));
    Text_Max_int_num(1)->setText(QStringLiteral("100"));

    FillAndSelect(Combo_SetStopBit, StopBitTexts(), 0);
    FillAndSelect(Combo_StopBit, StopBitTexts(), 0);

    FillAndSelect(Combo_SetWiring, {QStringLiteral("Auto"), QStringLiteral("1P2W"), QStringLiteral("1P3W"),
                                    QStringLiteral("3P3W 2CT"), QStringLiteral("3P3W 3CT"), QStringLiteral("3P4W")}, 0);

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
