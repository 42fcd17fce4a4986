#pragma once

#include "settings/Setting.h"
#include "settings/SettingValue.h"

class MainForm;
class MeterSession;

// After a write of the meter's address, baud rate or stop bits (acknowledged or not), moves
// the connection frame's lists to the meter's new setting and has the session talk there, the
// way the operator of the meter's own tool expects the lists to move.
void FollowMeter(MainForm& form, MeterSession& session, Setting setting, const SettingValue& written);
