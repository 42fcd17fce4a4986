#pragma once

#include "settings/Setting.h"
#include "settings/SettingWrites.h"

struct MeterReading;

// What the meter reports for its settings, read from the poll's reading alone: the read-back
// adds no request to the line.
namespace SettingReadback {

// How far the meter's clock may be from the PC's and still count as set.
inline constexpr int kClockToleranceSeconds = 2;

// The meter's value of what `write` sets (the display position comes from its register),
// as the operator reads it ("19200", "3P4W", "120.5"); empty while no reading holds it.
QString ReportedText(const MeterReading& reading, Setting setting, const RegisterWrite& write);
// The value `write` carries, in the same words.
QString WrittenText(Setting setting, const RegisterWrite& write);
// Whether `reading` shows the meter holding what `write` carries. The clock counts when the
// meter's is within the tolerance of the PC's at the reading; cleared energy counters when
// each total is zero or below its value in `before`. False while no reading holds it.
bool Reports(const MeterReading& reading, Setting setting, const RegisterWrite& write, const MeterReading& before);

} // namespace SettingReadback
