#pragma once

#include <QString>

// The meter settings the tool writes, as the history and the read-back name them.
enum class Setting {
    Address,
    BaudRate,
    StopBit,
    Wiring,
    PtRatio1,
    PtRatio2,
    CtRatio,
    Clock,
    ScrollTime,
    DisplayItem,
    ClearKwh,
    SerialDisplay,
};

QString SettingName(Setting setting);
