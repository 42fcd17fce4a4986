#pragma once

#include "measure/MeterReading.h"

#include <QList>
#include <QString>
#include <QStringList>

// Whether the meter is wired to its load as it should be, judged from one reading: the
// voltages, the currents' angles against their voltages, the powers and power factors.
//
// Angles, as the meter reports them: degrees growing in the lagging direction from L1's
// voltage. With the sequence ABC, L2's voltage stands at 120° and L3's at 240°; the current of
// a load that lags its voltage by φ (inductive) stands at the voltage's angle + φ, a leading
// (capacitive) load's at the voltage's angle − |φ|. A power factor carries the sign of the
// active power (P / S). A load draws power on every phase: its currents lie within 90° of
// their voltages.
namespace WiringLimits {
// A voltage below this fraction of the highest one is low.
inline constexpr double kLowVoltageFraction = 0.80;
// Below this (volts, as the meter reports them) an input has no voltage at all.
inline constexpr double kAbsentVoltage = 10.0;
// Unbalance: the largest departure from the average, as a fraction of the average.
inline constexpr double kVoltageUnbalanceLimit = 0.03;
inline constexpr double kCurrentUnbalanceLimit = 0.20;
// Below this (amperes) no load current flows, and no current's angle means anything.
inline constexpr double kNoLoadCurrent = 0.01;
// A current below this fraction of the largest one is too small for its angle to be judged.
inline constexpr double kJudgedCurrentFraction = 0.10;
// The phases of one load lie within this many degrees of each other: how far a rewiring that
// explains the angles may leave them apart.
inline constexpr double kLoadAngleSpread = 40.0;
// Two rewirings whose load angles lie closer than this to 0° fit the readings equally well.
inline constexpr double kLoadAngleTie = 10.0;
// One phase's power factor below the first while every other one is above the second cannot
// be the same load's.
inline constexpr double kPoorPowerFactor = 0.5;
inline constexpr double kGoodPowerFactor = 0.9;
} // namespace WiringLimits

// One thing found wrong, in plain words: what and where, then what to check.
struct WiringFinding {
    enum class Check {
        Wiring,           // the meter recognises no wiring
        PhaseSequence,
        Voltage,          // a voltage missing or low
        CurrentDirection, // a CT connected backwards
        CurrentSwap,      // currents on each other's inputs
        PowerFactor,
        VoltageUnbalance,
        CurrentUnbalance,
    };
    Check check;
    QList<int> phases; // 0 (L1) to 2 (L3): the phases the finding names
    QString text;
};

struct WiringVerdict {
    QList<WiringFinding> findings;
    // Checks the reading gave no ground for (no load current, say), in plain words.
    QStringList unchecked;

    bool Passed() const { return findings.isEmpty() && unchecked.isEmpty(); }
    // The findings one per line; "All checks passed" only when every check ran and passed.
    QStringList Lines() const;
};

// Judges the wiring the reading shows, checking only what its wiring mode makes meaningful:
// one phase in 1P2W, two in 1P3W, line voltages and no per-phase angles in 3P3W.
WiringVerdict JudgeWiring(const MeterReading& reading);
