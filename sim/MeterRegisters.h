#pragma once

#include <QtGlobal>

#include <array>

namespace sim {

// Register addresses of the QX-5820. Holding registers are read with function 3 and written
// with 6 or 16; input registers are read with function 4.
namespace Reg {

// Holding: communication and measurement settings.
inline constexpr quint16 kSlaveAddress = 0x1000;
inline constexpr quint16 kBaudCode = 0x1001;   // 1 = 9600, 2 = 19200
inline constexpr quint16 kStopBitCode = 0x1002;
inline constexpr quint16 kWiring = 0x1004;     // 0 = auto-detect, 1..5 as the wiring codes
inline constexpr quint16 kClearEnergy = 0x1012;
inline constexpr quint16 kPtRatio1 = 0x1021;   // units of 0.1
inline constexpr quint16 kCtRatio = 0x1022;
// Seven registers: year % 100, month, day, hour, minute, second, weekday (0 = Sunday).
inline constexpr quint16 kClock = 0x1023;
inline constexpr int kClockFields = 7;
// Number, from 1, of the first interval that the next read of a record area returns.
inline constexpr quint16 kNextInterval = 0x104D;
inline constexpr quint16 kScrollTime = 0x1050;
inline constexpr quint16 kSerialDisplay = 0x1051;
inline constexpr quint16 kDisplayItems = 0x1052; // positions 1..50
inline constexpr quint16 kPtRatio2 = 0x4492;     // float, relative to PT ratio 1

// Input: identification and measurements.
inline constexpr quint16 kInfo = 0x1000;
inline constexpr quint16 kIdentification = 0x100C; // 16 characters, two per register
inline constexpr int kIdentificationLength = 16;
inline constexpr quint16 kFrequency = 0x107E;
inline constexpr quint16 kPhaseVoltage = 0x1080;  // each quantity: a, b, c, average or total
inline constexpr quint16 kLineVoltage = 0x1088;
inline constexpr quint16 kCurrent = 0x1090;
inline constexpr quint16 kActivePower = 0x1098;
inline constexpr quint16 kReactivePower = 0x10A0;
inline constexpr quint16 kApparentPower = 0x10A8;
inline constexpr quint16 kPowerFactor = 0x10B0;
inline constexpr quint16 kVoltageAngle = 0x10B8;  // a, b, c
inline constexpr quint16 kCurrentAngle = 0x10BE;
inline constexpr quint16 kWiringDetected = 0x10C4;
inline constexpr quint16 kPhaseSequence = 0x10C5;
// Energy kind k (kWh delivered, kWh received, kvarh lagging, kvarh leading, kVAh) of phase
// t sits at kEnergy + 6k + 2t.
inline constexpr quint16 kEnergy = 0x10D4;

// Input: load-profile counters, per group.
inline constexpr quint16 kValidIntervals = 0x1190;
inline constexpr quint16 kMaxIntervals = 0x1192;
inline constexpr quint16 kRecordRange = 0x1194; // first and last record number of group 1

} // namespace Reg

enum class Table { Holding, Input };

// A run of registers the meter serves. A request must lie inside one of them.
struct Block {
    Table table;
    quint16 first;
    quint16 count;

    bool holds(quint16 start, quint16 length) const
    {
        return start >= first && int(start) + length <= int(first) + count;
    }
};

inline constexpr quint16 kRecordAreaLength = 125;

inline constexpr Block kSettingsBlock{Table::Holding, 0x1000, 0x100};
inline constexpr Block kPtRatio2Block{Table::Holding, Reg::kPtRatio2, 2};
inline constexpr Block kInfoBlock{Table::Input, Reg::kInfo, 0x14};
inline constexpr Block kMeasurementBlock{Table::Input, Reg::kFrequency, 0x74};
inline constexpr Block kProfileCounterBlock{Table::Input, 0x1180, 0x16};

// The two load-profile groups: their setting registers and record area.
struct ProfileGroupRegisters {
    quint16 clear;      // writing kClearCommand empties the group
    quint16 channels;
    quint16 interval;   // minutes
    quint16 codes;      // one channel code per register
    int maxChannels;
    Block records;
};

inline constexpr quint16 kClearEnergyCommand = 0x55;
inline constexpr quint16 kClearGroupCommand = 0x33;

inline constexpr std::array<ProfileGroupRegisters, 2> kProfileGroups{{
    {0x1033, 0x1034, 0x1035, 0x1036, 12, {Table::Input, 0x2000, kRecordAreaLength}},
    {0x1042, 0x1043, 0x1044, 0x1045, 8, {Table::Input, 0x2100, kRecordAreaLength}},
}};

inline constexpr std::array<Block, 7> kServedBlocks{
    kSettingsBlock, kPtRatio2Block, kInfoBlock, kMeasurementBlock, kProfileCounterBlock,
    kProfileGroups[0].records, kProfileGroups[1].records,
};

} // namespace sim
