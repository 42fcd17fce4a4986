#pragma once

#include <QString>

// The commands that write the meter's settings, in the order the poll cycle serves them: the
// clock and the communication parameters first, PT ratio 2 last. The order is the meter's and
// not that of the buttons on the screen.
enum class Setting {
    Clock,
    Address,
    BaudRate,
    StopBit,
    CtRatio,
    PtRatio1,
    SerialDisplay,
    ScrollTime,
    DisplayItem,
    LpGroup1,
    LpGroup2,
    LpClear1,
    LpClear2,
    ClearKwh,
    Wiring,
    PtRatio2,
};

inline constexpr int kSettingCount = int(Setting::PtRatio2) + 1;

// How the history and the messages name a setting: "CT ratio", "LP group 1".
QString SettingName(Setting setting);

// The meter's address, baud rate and stop bits: the tool follows a write of them to reach the
// meter again, and a template for several meters applies them apart.
bool IsCommunication(Setting setting);
