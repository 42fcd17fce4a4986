#include "settings/SettingWrites.h"

#include "link/RtuFrames.h"
#include "ports/TextNumbers.h"

QByteArray RegisterWrite::Data() const
{
    return Rtu::RegisterData(values);
}

namespace SettingWrites {

std::optional<RegisterWrite> WholeNumber(quint16 reg, double value)
{
    const auto whole = WholeNumber16(value);
    return whole ? std::optional(RegisterWrite{reg, {quint16(*whole)}}) : std::nullopt;
}

std::optional<RegisterWrite> PtRatio1(double value)
{
    return WholeNumber(SettingRegister::kPtRatio1, 10 * value);
}

RegisterWrite Clock(const QDateTime& now)
{
    const QDate date = now.date();
    const QTime time = now.time();
    const int year = date.year();
    return {SettingRegister::kClock,
            {quint16(year - 100 * (year / 100)), quint16(date.month()), quint16(date.day()), quint16(time.hour()),
             quint16(time.minute()), quint16(time.second()), quint16(date.dayOfWeek() % 7)}};
}

RegisterWrite SerialDisplay(bool shownNow)
{
    return {SettingRegister::kSerialDisplay, {quint16(shownNow ? 0 : 1)}};
}

std::optional<RegisterWrite> PtRatio2(double primary, double secondary)
{
    const QByteArray single = Rtu::SingleToBytes(primary / secondary);
    if (single == QByteArray(4, '\0')) // zero, infinite (a secondary of 0) or not a number
        return std::nullopt;
    const auto word = [&single](int at) { return quint16(quint8(single[at]) << 8 | quint8(single[at + 1])); };
    return RegisterWrite{SettingRegister::kPtRatio2, {word(2), word(0)}};
}

} // namespace SettingWrites
