#include "measure/ReadingFields.h"

#include "ports/MeterChoices.h"

#include <QByteArray>

#include <charconv>

namespace {

struct Unit {
    const char* text;
    const char* key;
};
// A piece of a field's name: as a key ("an") and in words ("L1-N").
struct Part {
    const char* key;
    const char* label;
};
constexpr Unit kVolt{"V", "v"}, kAmpere{"A", "a"}, kKilowatt{"kW", "kw"}, kKilovar{"kvar", "kvar"},
    kKilovoltAmpere{"kVA", "kva"}, kDegree{"°", "deg"}, kHertz{"Hz", "hz"}, kKilowattHour{"kWh", "kwh"},
    kKilovarHour{"kvarh", "kvarh"}, kKilovoltAmpereHour{"kVAh", "kvah"}, kSecond{"s", "s"}, kNoUnit{"", ""};

class Collector {
public:
    explicit Collector(const MeterReading& reading) : m_reading(reading) {}

    // A measurement; `unit` kNoUnit for a power factor.
    void measured(const QString& name, const QString& label, MeterReading::Block block, double value, const Unit& unit)
    {
        number(name, block, value, unit);
        m_fields.last().measured = true;
        m_fields.last().label = label;
    }
    void number(const QString& name, MeterReading::Block block, double value, const Unit& unit = kNoUnit)
    {
        m_fields.append({name, m_reading.Has(block) ? QJsonValue(SinglePrecision(value)) : QJsonValue(),
                         QString::fromUtf8(unit.text), QLatin1String(unit.key)});
    }
    void whole(const QString& name, MeterReading::Block block, qint64 value, const Unit& unit = kNoUnit)
    {
        m_fields.append({name, m_reading.Has(block) ? QJsonValue(value) : QJsonValue(), QString::fromUtf8(unit.text),
                         QLatin1String(unit.key)});
    }
    void text(const QString& name, MeterReading::Block block, const QString& value)
    {
        m_fields.append({name, m_reading.Has(block) ? QJsonValue(value) : QJsonValue(), {}, {}});
    }
    template <std::size_t N>
    void row(const Part& quantity, const Part (&parts)[N], const std::array<double, N>& values, const Unit& unit,
             MeterReading::Block block = MeterReading::RealTimeImage)
    {
        for (std::size_t i = 0; i < N; ++i)
            measured(QStringLiteral("%1_%2").arg(QLatin1String(quantity.key), QLatin1String(parts[i].key)),
                     QStringLiteral("%1 %2").arg(QLatin1String(quantity.label), QLatin1String(parts[i].label)), block, values[i], unit);
    }
    QList<ReadingField> take() { return std::move(m_fields); }

private:
    const MeterReading& m_reading;
    QList<ReadingField> m_fields;
};

constexpr Part kPhases[] = {{"a", "L1"}, {"b", "L2"}, {"c", "L3"}};
constexpr Part kPhasesAverage[] = {{"a", "L1"}, {"b", "L2"}, {"c", "L3"}, {"avg", "average"}};
constexpr Part kPhasesTotal[] = {{"a", "L1"}, {"b", "L2"}, {"c", "L3"}, {"total", "total"}};
constexpr Part kPhaseVoltages[] = {{"an", "L1-N"}, {"bn", "L2-N"}, {"cn", "L3-N"}, {"ln_avg", "L-N average"}};
constexpr Part kLineVoltages[] = {{"ab", "L1-L2"}, {"bc", "L2-L3"}, {"ca", "L3-L1"}, {"ll_avg", "L-L average"}};
struct Energy {
    Part name;
    Unit unit;
};
constexpr Energy kEnergies[] = {{{"energy_delivered", "kWh delivered"}, kKilowattHour},
                                {{"energy_received", "kWh received"}, kKilowattHour},
                                {{"energy_lagging", "kvarh lagging"}, kKilovarHour},
                                {{"energy_leading", "kvarh leading"}, kKilovarHour},
                                {{"energy_apparent", "kVAh"}, kKilovoltAmpereHour}};
// The wiring setting's name by code; the wiring the meter detects reads "none" for code 0.
QString WiringName(int code, bool detected)
{
    if (detected && code == 0)
        return QStringLiteral("none");
    const QStringList names = WiringTexts();
    return code >= 0 && code < names.size() ? names.at(code) : QStringLiteral("code %1").arg(code);
}

// ISO 8601 without an offset: the meter's clock keeps no zone.
QString ClockText(const MeterReading::Clock& c)
{
    return QStringLiteral("%1-%2-%3T%4:%5:%6")
        .arg(c.year, 4, 10, QLatin1Char('0')).arg(c.month, 2, 10, QLatin1Char('0')).arg(c.day, 2, 10, QLatin1Char('0'))
        .arg(c.hour, 2, 10, QLatin1Char('0')).arg(c.minute, 2, 10, QLatin1Char('0')).arg(c.second, 2, 10, QLatin1Char('0'));
}

} // namespace

double SinglePrecision(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, float(value)).ptr;
    return QByteArray(text, int(end - text)).toDouble();
}


QList<ReadingField> FieldsOf(const MeterReading& r)
{
    using B = MeterReading;
    Collector c(r);
    c.row({"voltage", "Voltage"}, kPhaseVoltages, r.phaseVoltage, kVolt);
    c.row({"voltage", "Voltage"}, kLineVoltages, r.lineVoltage, kVolt);
    c.row({"current", "Current"}, kPhasesAverage, r.current, kAmpere);
    c.row({"active_power", "Active power"}, kPhasesTotal, r.activePower, kKilowatt);
    c.row({"reactive_power", "Reactive power"}, kPhasesTotal, r.reactivePower, kKilovar);
    c.row({"apparent_power", "Apparent power"}, kPhasesTotal, r.apparentPower, kKilovoltAmpere);
    c.row({"power_factor", "Power factor"}, kPhasesAverage, r.powerFactor, kNoUnit);
    c.row({"voltage_angle", "Voltage angle"}, kPhases, r.voltageAngle, kDegree);
    c.row({"current_angle", "Current angle"}, kPhases, r.currentAngle, kDegree);
    c.measured(QStringLiteral("frequency"), QStringLiteral("Frequency"), B::Frequency, r.frequency, kHertz);
    for (int kind = 0; kind < B::EnergyKinds; ++kind) {
        const Energy& energy = kEnergies[kind];
        c.row(energy.name, kPhases, r.energy[std::size_t(kind)], energy.unit, B::Energy);
        c.measured(QStringLiteral("%1_total").arg(QLatin1String(energy.name.key)),
                   QStringLiteral("%1 total").arg(QLatin1String(energy.name.label)), B::Energy, r.EnergyTotal(kind), energy.unit);
    }
    c.number(QStringLiteral("pt_ratio_1"), B::Ratios, r.ptRatio1Register / 10.0);
    c.whole(QStringLiteral("ct_ratio"), B::Ratios, r.ctRatioRegister);
    // The register (primary ÷ secondary) as the settings write it, and the primary volts it
    // makes with PT ratio 1, as the real-time tab shows them.
    c.number(QStringLiteral("pt_ratio_2"), B::PtRatio2, r.ptRatio2Register);
    c.number(QStringLiteral("pt_ratio_2_primary"), B::PtRatio2, r.ptRatio2, kVolt);
    c.text(QStringLiteral("meter_clock"), B::RealTimeImage, ClockText(r.clock));
    c.text(QStringLiteral("identification"), B::RealTimeImage, IdentificationText(r.identification));
    c.text(QStringLiteral("wiring"), B::RealTimeImage, WiringName(r.wiringCode, true));
    c.text(QStringLiteral("phase_sequence"), B::RealTimeImage,
           r.phaseSequenceCode == 1 ? QStringLiteral("ABC") : r.phaseSequenceCode == 2 ? QStringLiteral("CBA") : QStringLiteral("error"));
    c.whole(QStringLiteral("slave_address"), B::RealTimeImage, r.slaveAddress);
    c.whole(QStringLiteral("baud_rate"), B::RealTimeImage, r.baudRateCode == 1 ? 9600 : r.baudRateCode == 2 ? 19200 : 0);
    c.whole(QStringLiteral("stop_bits"), B::RealTimeImage, r.stopBitCode);
    c.text(QStringLiteral("wiring_setting"), B::RealTimeImage, WiringName(r.wiringSetting, false));
    c.whole(QStringLiteral("scroll_time"), B::RealTimeImage, r.scrollTime, kSecond);
    c.whole(QStringLiteral("serial_display"), B::RealTimeImage, r.serialDisplay);
    for (int g = 0; g < 2; ++g) {
        const B::LoadProfileGroup& group = r.loadProfile[std::size_t(g)];
        const QString prefix = QStringLiteral("lp_group%1_").arg(g + 1);
        c.whole(prefix + QStringLiteral("channels"), B::RealTimeImage, group.channelCount);
        c.whole(prefix + QStringLiteral("interval_minutes"), B::RealTimeImage, group.intervalMinutes);
        c.whole(prefix + QStringLiteral("valid_intervals"), B::RealTimeImage, group.validIntervals);
        c.whole(prefix + QStringLiteral("max_intervals"), B::RealTimeImage, group.maxIntervals);
    }
    return c.take();
}

QString IdentificationText(const QByteArray& bytes)
{
    QString text = QString::fromLatin1(bytes);
    while (!text.isEmpty() && (text.back() == QChar(0) || text.back() == QLatin1Char(' ')))
        text.chop(1);
    return text;
}

QString FieldText(const QJsonValue& value)
{
    if (value.isDouble())
        return QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest);
    return value.toString();
}
