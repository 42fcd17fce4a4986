#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// The meter's setting registers, written with function 16.
namespace SettingRegister {
inline constexpr quint16 kAddress = 0x1000;
inline constexpr quint16 kBaudRate = 0x1001;     // 1 9600, 2 19200
inline constexpr quint16 kStopBit = 0x1002;      // 1 one stop bit, 2 two
inline constexpr quint16 kWiring = 0x1004;       // 0 Auto, 1 1P2W, 2 1P3W, 3 3P3W 2CT, 4 3P3W 3CT, 5 3P4W
inline constexpr quint16 kClearKwh = 0x1012;     // the command code 0x55 clears all total kWh
inline constexpr quint16 kPtRatio1 = 0x1021;     // tenths
inline constexpr quint16 kCtRatio = 0x1022;
inline constexpr quint16 kClock = 0x1023;        // year % 100, month, day, hour, minute, second, weekday
inline constexpr quint16 kLpClear[] = {0x1033, 0x1042};   // the command code 0x33 clears a group's records
inline constexpr quint16 kLpGroup[] = {0x1034, 0x1043};   // channel count, interval, one code per channel
inline constexpr quint16 kScrollTime = 0x1050;   // seconds
inline constexpr quint16 kSerialDisplay = 0x1051;
inline constexpr quint16 kDisplayItems = 0x1052; // positions 1 to 50
inline constexpr quint16 kPtRatio2 = 0x4492;     // an IEEE-754 single, low-order register first
} // namespace SettingRegister

// One write of consecutive holding registers: the first register and a value for each.
struct RegisterWrite {
    quint16 start = 0;
    QList<quint16> values;

    // The request's data: two bytes per register, high byte first.
    QByteArray Data() const;
    friend bool operator==(const RegisterWrite&, const RegisterWrite&) = default;
};

// The register values of the settings that need more than a number in one register.
namespace SettingWrites {

inline constexpr quint16 kClearKwhCommand = 0x55;
inline constexpr quint16 kClearLpGroupCommand = 0x33;
// The largest PT ratio 1 its register holds: 32767 tenths.
inline constexpr double kPtRatio1Largest = 3276.7;

// One register holding the whole number of `value` (halves to even); nothing when it does not
// fit the signed 16-bit register.
std::optional<RegisterWrite> WholeNumber(quint16 reg, double value);
// The whole number of 10 × the value: PT ratio 1 travels in tenths.
std::optional<RegisterWrite> PtRatio1(double value);
// The PC's date and time in the meter's seven clock registers; Sunday is weekday 0.
RegisterWrite Clock(const QDateTime& now);
// 1 shows the serial number, 0 hides it again.
RegisterWrite SerialDisplay(bool shownNow);

// PT ratio 2 from the primary and secondary voltages: their ratio as a single over two
// registers, the low-order one first, so that the data bytes are bytes 2, 3, 0, 1 of the
// single. Nothing when the ratio is no finite, normal single.
std::optional<RegisterWrite> PtRatio2(double primary, double secondary);

} // namespace SettingWrites
