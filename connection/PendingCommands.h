#pragma once

#include "link/Bool16.h"

#include <array>
#include <functional>

// The commands the operator asked for and the poll cycle has not sent yet. A click only sets
// its flag; the next tick serves the flags in a fixed order: the clock and the communication
// parameters first, PT ratio 2 last.
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
    static constexpr std::array<Flag, 16> kOrder = {
        &PendingCommands::bPendingSetTime,   &PendingCommands::bPendingModbusAddr,
        &PendingCommands::bPendingBaudRate,  &PendingCommands::bPendingStopBit,
        &PendingCommands::bPendingCtRatio,   &PendingCommands::bPendingPtRatio,
        &PendingCommands::bPendingMfgSerial, &PendingCommands::bPendingScrollTime,
        &PendingCommands::bPendingDisplayItem, &PendingCommands::bPendingLpG1Set,
        &PendingCommands::bPendingLpG2Set,   &PendingCommands::bPendingLpG1Clear,
        &PendingCommands::bPendingLpG2Clear, &PendingCommands::bPendingClearKwh,
        &PendingCommands::bPendingWiring,    &PendingCommands::bPendingPtRatio2,
    };

    // The routine that sends the command of `flag`.
    void SetRoutine(Flag flag, std::function<void()> routine);

    // In the fixed order, while `commOK()` holds: clears each set flag, then runs its routine.
    // A command whose write fails is therefore not repeated; the flags after it wait.
    void Serve(const std::function<bool()>& commOK);

    // Clears every flag and returns how many were set. Commands asked for on one connection
    // are never sent on a later one, which may reach another meter.
    int DropAll();

private:
    std::array<std::function<void()>, 16> m_routines;
};
