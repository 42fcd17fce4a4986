#include "measure/ReadingFields.h"

#include "ports/MeterChoices.h"

#include <QByteArray>

#include <charconv>

namespace {

// The shortest decimal that reads back as the same single: the meter sends singles, and the
// digits a double adds to them are noise.
double SinglePrecision(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, float(value)).ptr;
    return QByteArray(text, int(end - text)).toDouble();
}

class Collector {
public:
    explicit Collector(const MeterReading& reading) : m_reading(reading) {}

    void number(const QString& name, MeterReading::Block block, double value)
    {
        m_fields.append({name, m_reading.Has(block) ? QJsonValue(SinglePrecision(value)) : QJsonValue()});
    }
    void whole(const QString& name, MeterReading::Block block, qint64 value)
    {
        m_fields.append({name, m_reading.Has(block) ? QJsonValue(value) : QJsonValue()});
    }
    void text(const QString& name, MeterReading::Block block, const QString& value)
    {
        m_fields.append({name, m_reading.Has(block) ? QJsonValue(value) : QJsonValue()});
    }
    template <std::size_t N>
    void row(const char* quantity, const char* const (&suffixes)[N], const std::array<double, N>& values,
             MeterReading::Block block = MeterReading::RealTimeImage)
    {
        for (std::size_t i = 0; i < N; ++i)
            number(QStringLiteral("%1_%2").arg(QLatin1String(quantity), QLatin1String(suffixes[i])), block, values[i]);
    }
    QList<ReadingField> take() { return std::move(m_fields); }

private:
    const MeterReading& m_reading;
    QList<ReadingField> m_fields;
};

constexpr const char* kPhases[] = {"a", "b", "c"};
constexpr const char* kPhasesAverage[] = {"a", "b", "c", "avg"};
constexpr const char* kPhasesTotal[] = {"a", "b", "c", "total"};
constexpr const char* kPhaseVoltages[] = {"an", "bn", "cn", "ln_avg"};
constexpr const char* kLineVoltages[] = {"ab", "bc", "ca", "ll_avg"};
constexpr const char* kEnergyNames[] = {"kwh_delivered", "kwh_received", "kvarh_lagging", "kvarh_leading", "kvah"};
// The wiring setting's name by code; the wiring the meter detects reads "none" for code 0.
QString WiringName(int code, bool detected)
{
    if (detected && code == 0)
        return QStringLiteral("none");
    const QStringList names = WiringTexts();
    return code >= 0 && code < names.size() ? names.at(code) : QStringLiteral("code %1").arg(code);
}

QString ClockText(const MeterReading::Clock& c)
{
    return QStringLiteral("%1-%2-%3 %4:%5:%6")
        .arg(c.year, 4, 10, QLatin1Char('0')).arg(c.month, 2, 10, QLatin1Char('0')).arg(c.day, 2, 10, QLatin1Char('0'))
        .arg(c.hour, 2, 10, QLatin1Char('0')).arg(c.minute, 2, 10, QLatin1Char('0')).arg(c.second, 2, 10, QLatin1Char('0'));
}

} // namespace

QList<ReadingField> FieldsOf(const MeterReading& r)
{
    using B = MeterReading;
    Collector c(r);
    c.row("voltage", kPhaseVoltages, r.phaseVoltage);
    c.row("voltage", kLineVoltages, r.lineVoltage);
    c.row("current", kPhasesAverage, r.current);
    c.row("active_power", kPhasesTotal, r.activePower);
    c.row("reactive_power", kPhasesTotal, r.reactivePower);
    c.row("apparent_power", kPhasesTotal, r.apparentPower);
    c.row("power_factor", kPhasesAverage, r.powerFactor);
    c.row("voltage_angle", kPhases, r.voltageAngle);
    c.row("current_angle", kPhases, r.currentAngle);
    c.number(QStringLiteral("frequency"), B::Frequency, r.frequency);
    for (int kind = 0; kind < B::EnergyKinds; ++kind) {
        c.row(kEnergyNames[kind], kPhases, r.energy[std::size_t(kind)], B::Energy);
        c.number(QStringLiteral("%1_total").arg(QLatin1String(kEnergyNames[kind])), B::Energy, r.EnergyTotal(kind));
    }
    c.number(QStringLiteral("pt_ratio_1"), B::Ratios, r.ptRatio1Register / 10.0);
    c.whole(QStringLiteral("ct_ratio"), B::Ratios, r.ctRatioRegister);
    c.number(QStringLiteral("pt_ratio_2"), B::PtRatio2, r.ptRatio2);
    c.text(QStringLiteral("meter_clock"), B::RealTimeImage, ClockText(r.clock));
    c.text(QStringLiteral("identification"), B::RealTimeImage, IdentificationText(r.identification));
    c.text(QStringLiteral("wiring"), B::RealTimeImage, WiringName(r.wiringCode, true));
    c.text(QStringLiteral("phase_sequence"), B::RealTimeImage,
           r.phaseSequenceCode == 1 ? QStringLiteral("ABC") : r.phaseSequenceCode == 2 ? QStringLiteral("CBA") : QStringLiteral("error"));
    c.whole(QStringLiteral("slave_address"), B::RealTimeImage, r.slaveAddress);
    c.whole(QStringLiteral("baud_rate"), B::RealTimeImage, r.baudRateCode == 1 ? 9600 : r.baudRateCode == 2 ? 19200 : 0);
    c.whole(QStringLiteral("stop_bits"), B::RealTimeImage, r.stopBitCode);
    c.text(QStringLiteral("wiring_setting"), B::RealTimeImage, WiringName(r.wiringSetting, false));
    c.whole(QStringLiteral("scroll_time"), B::RealTimeImage, r.scrollTime);
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
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    return value.toString();
}
