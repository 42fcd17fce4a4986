#pragma once

#include "link/Bool16.h"
#include "settings/Setting.h"
#include "settings/SettingValue.h"

#include <array>
#include <functional>
#include <optional>
#include <vector>

// A command the operator asked for, tied to the connection it was asked on: it is sent on that
// connection or not at all.
struct PendingRequest {
    quint64 id = 0;
    Setting setting = Setting::Clock;
    ValueSource source;
    quint64 connection = 0;
};

// The commands the operator asked for and the poll cycle has not sent yet. A request only sets
// its flag; the next tick serves the flags in the fixed order of the settings, clearing each
// just before its routine runs.
struct PendingCommands {
    Bool16 bPendingSetTime = kFalse;
    Bool16 bPendingModbusAddr = kFalse;
    Bool16 bPendingBaudRate = kFalse;
    Bool16 bPendingStopBit = kFalse;
    Bool16 bPendingCtRatio = kFalse;
    Bool16 bPendingPtRatio = kFalse;
    Bool16 bPendingMfgSerial = kFalse;
    Bool16 bPendingScrollTime = kFalse;
    Bool16 bPendingDisplayItem = kFalse;
    Bool16 bPendingLpG1Set = kFalse;
    Bool16 bPendingLpG2Set = kFalse;
    Bool16 bPendingLpG1Clear = kFalse;
    Bool16 bPendingLpG2Clear = kFalse;
    Bool16 bPendingClearKwh = kFalse;
    Bool16 bPendingWiring = kFalse;
    Bool16 bPendingPtRatio2 = kFalse;

    using Flag = Bool16 PendingCommands::*;
    // The flag of each setting, in the order of the settings.
    static constexpr std::array<Flag, kSettingCount> kOrder = {
        &PendingCommands::bPendingSetTime,   &PendingCommands::bPendingModbusAddr,
        &PendingCommands::bPendingBaudRate,  &PendingCommands::bPendingStopBit,
        &PendingCommands::bPendingCtRatio,   &PendingCommands::bPendingPtRatio,
        &PendingCommands::bPendingMfgSerial, &PendingCommands::bPendingScrollTime,
        &PendingCommands::bPendingDisplayItem, &PendingCommands::bPendingLpG1Set,
        &PendingCommands::bPendingLpG2Set,   &PendingCommands::bPendingLpG1Clear,
        &PendingCommands::bPendingLpG2Clear, &PendingCommands::bPendingClearKwh,
        &PendingCommands::bPendingWiring,    &PendingCommands::bPendingPtRatio2,
    };

    bool IsPending(Setting setting) const { return this->*kOrder[std::size_t(setting)] != kFalse; }
    // Sets the request's flag. A request for a setting already waiting takes the place of the
    // one before, under that one's number: the command is still sent once.
    quint64 Set(PendingRequest request);

    // In the fixed order, while `commOK()` holds: clears each set flag, then hands its request
    // to `serve`. A command whose write fails is therefore not repeated; the flags after it wait.
    void Serve(const std::function<bool()>& commOK, const std::function<void(const PendingRequest&)>& serve);

    // Clears every flag and hands back the requests that were waiting: commands asked for on
    // one connection are never sent on a later one, which may reach another meter.
    std::vector<PendingRequest> DropAll();

private:
    std::array<std::optional<PendingRequest>, kSettingCount> m_requests;
};
