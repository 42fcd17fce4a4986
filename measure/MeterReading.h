#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>

#include <array>

// What one poll tick learnt about the meter, as numbers. The screen, the charts, logs and a
// command-line front end all read this; none of them reads another one's texts.
//
// Measurement arrays run phase a, b, c and then the average (voltages, currents, power factor)
// or the total (powers); line voltages run ab, bc, ca, average. Values are in the meter's own
// units, unscaled.
struct MeterReading {
    // The blocks of a tick, as bits of `fresh` and `known`.
    enum Block : unsigned {
        RealTimeImage = 1u << 0, // measurements, clock, identification, wiring, load-profile status
        Frequency = 1u << 1,
        Energy = 1u << 2,
        Ratios = 1u << 3,        // PT ratio 1 and CT ratio
        PtRatio2 = 1u << 4,
    };

    // A recording group as the meter reports it.
    struct LoadProfileGroup {
        int channelCount = 0;
        int intervalMinutes = 0;
        QList<int> channelCodes;
        int validIntervals = 0;
        int maxIntervals = 0;
    };

    // The meter's clock, each field as the meter holds it (the year as 2000 + its register).
    struct Clock {
        int year = 2000;
        int month = 0;
        int day = 0;
        int hour = 0;
        int minute = 0;
        int second = 0;
    };

    enum Energies { KWhDelivered, KWhReceived, KvarhLagging, KvarhLeading, KVAh, EnergyKinds };

    // A 16-bit ratio register: the tool reads it as a signed number, so a value of 0x8000 or
    // more is beyond what it can show as a ratio or write back.
    static constexpr bool RatioInRange(quint16 raw) { return raw < 0x8000; }

    bool Has(Block block) const { return (known & block) != 0; }
    double EnergyTotal(int kind) const;

    QDateTime takenAt;   // when the tick started, on the PC's clock
    unsigned fresh = 0;  // blocks read in this tick
    unsigned known = 0;  // blocks read at least once since going on line

    std::array<double, 4> phaseVoltage{};
    std::array<double, 4> lineVoltage{};
    std::array<double, 4> current{};
    std::array<double, 4> activePower{};
    std::array<double, 4> reactivePower{};
    std::array<double, 4> apparentPower{};
    std::array<double, 4> powerFactor{};
    std::array<double, 3> voltageAngle{}; // degrees
    std::array<double, 3> currentAngle{}; // degrees
    double frequency = 0;
    std::array<std::array<double, 3>, EnergyKinds> energy{}; // [kind][phase]

    quint16 ptRatio1Register = 0; // PT ratio 1 in tenths
    quint16 ctRatioRegister = 0;
    double ptRatio2 = 0;          // absolute: the register's relative value × PT ratio 1
    double ptRatio2Register = 0;  // the register's own value, relative to PT ratio 1

    // The meter's communication and display settings, as its holding registers hold them.
    int slaveAddress = 0;
    int baudRateCode = 0;      // 1 9600, 2 19200
    int stopBitCode = 0;       // 1 one stop bit, 2 two
    int wiringSetting = 0;     // 0 Auto, then as wiringCode; wiringCode is what the meter detects
    int scrollTime = 0;        // seconds
    int serialDisplay = 0;     // 1 while the manufacturing serial number is shown

    Clock clock;
    QByteArray identification; // the meter's 16-character text, byte for byte
    int wiringCode = 0;        // 0 none, 1 1P2W, 2 1P3W, 3 3P3W 2CT, 4 3P3W 3CT, 5 3P4W
    int phaseSequenceCode = 0; // 1 ABC, 2 CBA
    std::array<LoadProfileGroup, 2> loadProfile;
    std::array<int, 2> recordRange{};
    std::array<int, 50> displayItems{}; // item code at each display position
};
