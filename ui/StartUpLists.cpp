#include "ui/StartUpLists.h"

#include "ports/MeterChoices.h"

namespace {

const QStringList kGroups{QStringLiteral("1"), QStringLiteral("2")};
constexpr int kLpIntervalIndex15 = 3;
constexpr int kDefaultAddressIndex = 14; // address 15

// A group's lists: channel count, interval, then one code list per channel; a code list's
// index is its code - 1.
void AddLpGroup(QList<StartUpList>& lists, const char* array, int maxChannels, int channels, const QList<int>& codes)
{
    const auto element = [array](int k) { return QStringLiteral("%1(%2)").arg(QLatin1String(array)).arg(k); };
    lists.append({element(0), NumberTexts(1, maxChannels), channels - 1});
    lists.append({element(1), LpIntervalTexts(), kLpIntervalIndex15});
    for (int k = 0; k < codes.size(); ++k)
        lists.append({element(2 + k), LpChannelCodeTexts(), codes[k] - 1});
}

QList<StartUpList> Build()
{
    QList<StartUpList> lists;
    lists.append({QStringLiteral("Combo_Modbus_BaudRate"), BaudRateTexts(), 1});
    lists.append({QStringLiteral("Combo_Modbus_add"), AddressTexts(), kDefaultAddressIndex});
    lists.append({QStringLiteral("Combo_Modbus_add_sel"), AddressTexts(), kDefaultAddressIndex});
    lists.append({QStringLiteral("Combo_BaudRate_Sel"), BaudRateTexts(), 1});
    // The irregular order of group 1's later channels is the meter's factory default.
    AddLpGroup(lists, "Combo_G1_Setting", 12, 8, {1, 2, 3, 4, 5, 7, 9, 11, 6, 8, 10, 12});
    AddLpGroup(lists, "Combo_G2_Setting", 8, 4, {6, 12, 13, 14, 1, 2, 3, 4});
    lists.append({QStringLiteral("Combo_LP_Read_Group_Sel"), kGroups, 0});
    lists.append({QStringLiteral("Combo_Display_Ser_sel"), DisplayPositionTexts(), 0});
    lists.append({QStringLiteral("Combo_Display_Item_sel"), DisplayItemTexts(), 1});
    lists.append({QStringLiteral("Combo1"), ScrollTimeTexts(), 0});
    lists.append({QStringLiteral("Combo_PT_Ratio"), {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("5"), QStringLiteral("10")}, 0});
    lists.append({QStringLiteral("Combo_CT_Ratio"), {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("100"), QStringLiteral("200")}, 0});
    lists.append({QStringLiteral("Combo4"), NumberTexts(1, 4), 0});
    lists.append({QStringLiteral("Combo_LP_Read_Group_Sel1"), kGroups, 0});
    lists.append({QStringLiteral("Combo_LP_Start_No"), {QStringLiteral("1")}, 0});
    lists.append({QStringLiteral("Combo_LP_Stop_No"), {QStringLiteral("1")}, 0});
    lists.append({QStringLiteral("Combo_SetStopBit"), StopBitTexts(), 0});
    lists.append({QStringLiteral("Combo_StopBit"), StopBitTexts(), 0});
    lists.append({QStringLiteral("Combo_SetWiring"), WiringTexts(), 0});
    return lists;
}

} // namespace

const QList<StartUpList>& StartUpLists()
{
    static const QList<StartUpList> lists = Build();
    return lists;
}
