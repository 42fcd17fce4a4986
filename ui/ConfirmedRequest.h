#pragma once

#include "settings/Setting.h"
#include "settings/SettingValue.h"

#include <functional>

class MeterSession;

// Requests `setting` once `confirm` (the operator's answer to a modal question) says so. The
// request belongs to the connection of the moment the question was put: an OK given after the
// port failed, or after going off line and on line again, sends nothing to whatever meter is
// connected now, and the history says why.
void RequestConfirmed(MeterSession& session, Setting setting, ValueSource source, const std::function<bool()>& confirm);
