#include "settings/SettingWrites.h"

#include "connection/TextNumbers.h"
#include "link/RtuFrames.h"

QByteArray RegisterWrite::Data() const
{
    return Rtu::RegisterData(values);
}

namespace SettingWrites {
namespace {

RegisterWrite One(quint16 reg, qint16 value)
{
    return {reg, {quint16(value)}};
}

} // namespace

RegisterWrite ListCode(quint16 reg, int listIndex, int firstCode)
{
    return One(reg, qint16(listIndex + firstCode));
}

std::optional<RegisterWrite> WholeNumber(quint16 reg, const QString& text)
{
    const auto whole = WholeNumberOf(text);
    return whole ? std::optional(One(reg, *whole)) : std::nullopt;
}

std::optional<RegisterWrite> PtRatio1(const QString& text)
{
    const auto value = NumericValue(text);
    const auto tenths = value ? WholeNumber16(10 * *value) : std::nullopt;
    return tenths ? std::optional(One(SettingRegister::kPtRatio1, *tenths)) : std::nullopt;
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

std::optional<RegisterWrite> DisplayItem(int positionIndex, const QString& itemText)
{
    return WholeNumber(quint16(SettingRegister::kDisplayItems + positionIndex), itemText);
}

RegisterWrite SerialDisplay(bool shownNow)
{
    return One(SettingRegister::kSerialDisplay, shownNow ? 0 : 1);
}

RegisterWrite ClearKwh()
{
    return One(SettingRegister::kClearKwh, kClearKwhCommand);
}

std::optional<RegisterWrite> PtRatio2(const QString& primary, const QString& secondary)
{
    const auto high = NumericValue(primary);
    const auto low = NumericValue(secondary);
    if (!high || !low)
        return std::nullopt;
    const double ratio = *high / *low;
    const QByteArray single = Rtu::SingleToBytes(ratio);
    if (single == QByteArray(4, '\0')) // zero, infinite (a secondary of 0) or not a number
        return std::nullopt;
    const auto word = [&single](int at) { return quint16(quint8(single[at]) << 8 | quint8(single[at + 1])); };
    return RegisterWrite{SettingRegister::kPtRatio2, {word(2), word(0)}};
}

} // namespace SettingWrites
