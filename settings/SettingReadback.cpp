#include "settings/SettingReadback.h"

#include "measure/DisplayItemNames.h"
#include "measure/FixedFormat.h"
#include "measure/FloatDecoding.h"
#include "measure/MeterReading.h"

#include <QStringList>

#include <optional>

namespace SettingReadback {
namespace {

// The block of a tick that brings each setting back.
MeterReading::Block BlockOf(Setting setting)
{
    switch (setting) {
    case Setting::PtRatio1:
    case Setting::CtRatio: return MeterReading::Ratios;
    case Setting::PtRatio2: return MeterReading::PtRatio2;
    case Setting::ClearKwh: return MeterReading::Energy;
    default: return MeterReading::RealTimeImage;
    }
}

int DisplayPosition(const RegisterWrite& write)
{
    return write.start - SettingRegister::kDisplayItems;
}

// A register setting's value in the reading: what the meter would hand back for the register.
std::optional<double> ReportedValue(const MeterReading& r, Setting setting, const RegisterWrite& write)
{
    if (!r.Has(BlockOf(setting)))
        return std::nullopt;
    switch (setting) {
    case Setting::Address: return r.slaveAddress;
    case Setting::BaudRate: return r.baudRateCode;
    case Setting::StopBit: return r.stopBitCode;
    case Setting::Wiring: return r.wiringSetting;
    case Setting::PtRatio1: return r.ptRatio1Register;
    case Setting::PtRatio2: return r.ptRatio2Register;
    case Setting::CtRatio: return r.ctRatioRegister;
    case Setting::ScrollTime: return r.scrollTime;
    case Setting::SerialDisplay: return r.serialDisplay;
    case Setting::DisplayItem: {
        const int position = DisplayPosition(write);
        if (position < 0 || position >= int(r.displayItems.size()))
            return std::nullopt;
        return r.displayItems[std::size_t(position)];
    }
    case Setting::Clock:
    case Setting::ClearKwh: break;
    }
    return std::nullopt;
}

// The register value a write carries; PT ratio 2 decoded as the poll decodes the register.
double WrittenValue(Setting setting, const RegisterWrite& write)
{
    if (setting == Setting::PtRatio2)
        return FloatAt(write.Data(), 0);
    return write.values.value(0);
}

QString CodeText(const QStringList& names, int code, int firstCode)
{
    const int index = code - firstCode;
    return index >= 0 && index < names.size() ? names[index] : QStringLiteral("code %1").arg(code);
}

QString ValueText(Setting setting, double value, const RegisterWrite& write)
{
    const int code = int(value);
    switch (setting) {
    case Setting::BaudRate: return CodeText({QStringLiteral("9600"), QStringLiteral("19200")}, code, 1);
    case Setting::StopBit: return CodeText({QStringLiteral("1"), QStringLiteral("2")}, code, 1);
    case Setting::Wiring:
        return CodeText({QStringLiteral("Auto"), QStringLiteral("1P2W"), QStringLiteral("1P3W"),
                         QStringLiteral("3P3W 2CT"), QStringLiteral("3P3W 3CT"), QStringLiteral("3P4W")}, code, 0);
    case Setting::PtRatio1: return FormatFixed(value / 10.0, 1);
    case Setting::PtRatio2: return FormatFixed(value, 4);
    case Setting::ScrollTime: return QStringLiteral("%1 s").arg(code);
    case Setting::SerialDisplay: return code == 1 ? QStringLiteral("shown") : QStringLiteral("hidden");
    case Setting::DisplayItem: {
        const QString name = DisplayItemName(code);
        return QStringLiteral("position %1: %2%3")
            .arg(DisplayPosition(write) + 1)
            .arg(code)
            .arg(name.isEmpty() ? QString() : QLatin1Char(' ') + name);
    }
    default: return QString::number(code);
    }
}

QDateTime MeterClock(const MeterReading& r)
{
    const MeterReading::Clock& c = r.clock;
    return QDateTime(QDate(c.year, c.month, c.day), QTime(c.hour, c.minute, c.second), r.takenAt.timeSpec());
}

QString ClockText(const QDateTime& time)
{
    return time.isValid() ? time.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")) : QStringLiteral("no valid date");
}

QDateTime WrittenClock(const RegisterWrite& write)
{
    const auto field = [&write](int i) { return int(write.values.value(i)); };
    return QDateTime(QDate(2000 + field(0), field(1), field(2)), QTime(field(3), field(4), field(5)));
}

bool ClockSet(const MeterReading& r)
{
    const QDateTime meter = MeterClock(r);
    return meter.isValid() && qAbs(meter.secsTo(r.takenAt)) <= kClockToleranceSeconds;
}

bool CountersCleared(const MeterReading& r, const MeterReading& before)
{
    for (int kind = 0; kind < MeterReading::EnergyKinds; ++kind) {
        const double total = r.EnergyTotal(kind);
        if (total != 0 && !(before.Has(MeterReading::Energy) && total < before.EnergyTotal(kind)))
            return false;
    }
    return true;
}

} // namespace

QString ReportedText(const MeterReading& reading, Setting setting, const RegisterWrite& write)
{
    if (!reading.Has(BlockOf(setting)))
        return QString();
    if (setting == Setting::Clock)
        return ClockText(MeterClock(reading));
    if (setting == Setting::ClearKwh)
        return QStringLiteral("%1 kWh").arg(FormatFixed(reading.EnergyTotal(MeterReading::KWhDelivered), 1));
    const auto value = ReportedValue(reading, setting, write);
    return value ? ValueText(setting, *value, write) : QString();
}

QString WrittenText(Setting setting, const RegisterWrite& write)
{
    if (setting == Setting::Clock)
        return ClockText(WrittenClock(write));
    if (setting == Setting::ClearKwh)
        return QStringLiteral("0 kWh");
    return ValueText(setting, WrittenValue(setting, write), write);
}

bool Reports(const MeterReading& reading, Setting setting, const RegisterWrite& write, const MeterReading& before)
{
    if (!reading.Has(BlockOf(setting)))
        return false;
    if (setting == Setting::Clock)
        return ClockSet(reading);
    if (setting == Setting::ClearKwh)
        return CountersCleared(reading, before);
    return ReportedValue(reading, setting, write) == WrittenValue(setting, write);
}

} // namespace SettingReadback
