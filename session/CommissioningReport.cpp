#include "session/CommissioningReport.h"

#include "measure/ReadingFields.h"
#include "measure/TrendSeries.h"
#include "measure/WiringVerdict.h"
#include "ports/TimeText.h"
#include "session/MeterSession.h"
#include "settings/MeterConfiguration.h"
#include "settings/SettingTable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdlib>

namespace {

// The field each trend quantity follows, in TrendSeries::Quantity's order.
constexpr const char* kTrendFields[TrendSeries::QuantityCount] = {
    "voltage_an", "voltage_bn", "voltage_cn", "current_a", "current_b", "current_c",
    "active_power_a", "active_power_b", "active_power_c", "active_power_total",
    "reactive_power_a", "reactive_power_b", "reactive_power_c", "reactive_power_total",
    "apparent_power_a", "apparent_power_b", "apparent_power_c", "apparent_power_total",
    "power_factor_avg", "frequency",
};

void AddExtremes(QList<CommissioningReport::Measurement>& rows, const TrendSeries& trend)
{
    if (trend.Size() == 0)
        return;
    for (int q = 0; q < TrendSeries::QuantityCount; ++q) {
        const auto row = std::find_if(rows.begin(), rows.end(), [q](const auto& m) { return m.name == QLatin1String(kTrendFields[q]); });
        if (row == rows.end())
            continue;
        float low = trend.At(0).min[q], high = trend.At(0).max[q];
        for (qsizetype i = 1; i < trend.Size(); ++i) {
            low = std::min(low, trend.At(i).min[q]);
            high = std::max(high, trend.At(i).max[q]);
        }
        row->min = SinglePrecision(low);
        row->max = SinglePrecision(high);
    }
}

QList<CommissioningReport::Measurement> Measurements(const MeterReading& reading, const TrendSeries* trend)
{
    QList<CommissioningReport::Measurement> rows;
    for (const ReadingField& field : FieldsOf(reading)) {
        if (field.measured && field.value.isDouble())
            rows.append({field.name, field.label, field.value.toDouble(), field.unit, field.unitKey, {}, {}});
    }
    if (trend)
        AddExtremes(rows, *trend);
    return rows;
}

// Ascending numbers as runs: "11-20, 25".
QString Runs(const QList<int>& numbers)
{
    QStringList runs;
    for (qsizetype i = 0; i < numbers.size();) {
        qsizetype end = i;
        while (end + 1 < numbers.size() && numbers[end + 1] == numbers[end] + 1)
            ++end;
        runs << (end == i ? QString::number(numbers[i]) : QStringLiteral("%1-%2").arg(numbers[i]).arg(numbers[end]));
        i = end + 1;
    }
    return runs.join(QStringLiteral(", "));
}

// Every setting the meter holds, in the setting table's names and words.
// The order a reader expects, the meter's line first, then how it measures, shows and records:
// the poll cycle serves them in another order, for reasons of its own.
constexpr Setting kReportOrder[] = {
    Setting::Address, Setting::BaudRate, Setting::StopBit, Setting::Wiring, Setting::PtRatio1,
    Setting::PtRatio2, Setting::CtRatio, Setting::ScrollTime, Setting::DisplayItem,
    Setting::LpGroup1, Setting::LpGroup2,
};

QList<CommissioningReport::Row> Settings(const MeterReading& reading)
{
    const QList<SettingComparison> compared = Compare(ConfigurationOf(reading, {}), reading);
    QList<CommissioningReport::Row> rows;
    for (const Setting setting : kReportOrder) {
        QList<int> empty;
        for (const SettingComparison& c : compared) {
            if (c.item.setting != setting)
                continue;
            // Most display positions hold nothing: they share one row.
            if (setting == Setting::DisplayItem && c.item.value.fields.value(1) == 0)
                empty << int(c.item.value.fields.value(0));
            else
                rows.append({SpecOf(setting).name, c.meter});
        }
        if (!empty.isEmpty())
            rows.append({SpecOf(setting).name, QStringLiteral("no item at positions %1").arg(Runs(empty))});
        // The register is primary ÷ secondary; the meter's display and the real-time tab show
        // the primary volts it makes with PT ratio 1.
        if (setting == Setting::PtRatio2)
            rows.append({QStringLiteral("PT ratio 2 × PT ratio 1"), QStringLiteral("%1 V").arg(reading.ptRatio2, 0, 'f', 4)});
    }
    return rows;
}

// The meter keeps local time, as the PC shows it.
QDateTime ClockOf(const MeterReading& reading)
{
    const MeterReading::Clock& c = reading.clock;
    return QDateTime(QDate(c.year, c.month, c.day), QTime(c.hour, c.minute, c.second));
}

QString Key(const CommissioningReport::Measurement& m)
{
    return m.unitKey.isEmpty() ? m.name : m.name + QLatin1Char('_') + m.unitKey;
}

} // namespace

QString TimeWithOffset(const QDateTime& time)
{
    const int offset = time.offsetFromUtc();
    const QTime magnitude = QTime(0, 0).addSecs(std::abs(offset));
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + (offset < 0 ? QStringLiteral(" UTC-") : QStringLiteral(" UTC+"))
           + magnitude.toString(QStringLiteral("HH:mm"));
}

QString CommissioningReport::ReadingTime() const
{
    const QString at = QStringLiteral("taken %1").arg(TimeWithOffset(takenAt));
    return fresh ? at : at + QStringLiteral(" (not current: the tool was off line or the last tick failed)");
}

CommissioningReport BuildReport(const MeterSession& session, const ReportExtras& extras)
{
    const MeterReading& reading = session.Reading();
    CommissioningReport report;
    report.site = extras.site;
    report.engineer = extras.engineer;
    report.note = extras.note;
    report.toolVersion = extras.toolVersion;
    report.madeAt = extras.madeAt;
    report.identification = IdentificationText(reading.identification);
    report.address = session.Address();
    report.baudRate = session.BaudRate();
    report.stopBits = session.StopBits();
    report.takenAt = reading.takenAt;
    report.meterClock = ClockOf(reading);
    report.fresh = session.OnLine() && !session.freshness.Stale();
    report.settings = Settings(reading);
    report.measurements = Measurements(reading, extras.trend);
    const WiringVerdict verdict = JudgeWiring(reading);
    for (const WiringFinding& finding : verdict.findings)
        report.verdict << finding.text;
    if (verdict.findings.isEmpty())
        report.verdict << verdict.Lines().first();
    report.unchecked = verdict.unchecked;
    report.history = extras.history;
    report.reading = reading;
    return report;
}

QByteArray ReportJson(const CommissioningReport& report)
{
    QJsonObject settings;
    for (const CommissioningReport::Row& row : report.settings) {
        // The display items share one name: a list of them.
        QJsonValueRef slot = settings[row.label];
        if (slot.isString())
            slot = QJsonArray{slot.toString(), row.value};
        else if (slot.isArray())
            slot = slot.toArray() + QJsonValue(row.value);
        else
            slot = row.value;
    }
    QJsonObject measurements;
    for (const CommissioningReport::Measurement& m : report.measurements) {
        QJsonObject value{{QStringLiteral("value"), m.value}};
        if (m.min)
            value.insert(QStringLiteral("min"), *m.min);
        if (m.max)
            value.insert(QStringLiteral("max"), *m.max);
        measurements.insert(Key(m), value);
    }
    const QJsonObject root{
        {QStringLiteral("header"), QJsonObject{{QStringLiteral("site"), report.site},
                                               {QStringLiteral("engineer"), report.engineer},
                                               {QStringLiteral("note"), report.note},
                                               {QStringLiteral("pc_time"), IsoTimeWithOffset(report.madeAt)},
                                               {QStringLiteral("tool_version"), report.toolVersion}}},
        {QStringLiteral("meter"), QJsonObject{{QStringLiteral("identification"), report.identification},
                                              {QStringLiteral("address"), report.address},
                                              {QStringLiteral("baud_rate"), report.baudRate.toInt()},
                                              {QStringLiteral("stop_bits"), report.stopBits.toInt()},
                                              {QStringLiteral("reading_pc_time"), IsoTimeWithOffset(report.takenAt)},
                                              {QStringLiteral("reading_fresh"), report.fresh},
                                              {QStringLiteral("meter_clock"), report.meterClock.toString(Qt::ISODate)},
                                              {QStringLiteral("clock_difference_s"), report.ClockDifference()}}},
        {QStringLiteral("settings"), settings},
        {QStringLiteral("measurements"), measurements},
        {QStringLiteral("wiring"), QJsonObject{{QStringLiteral("verdict"), QJsonArray::fromStringList(report.verdict)},
                                               {QStringLiteral("unchecked"), QJsonArray::fromStringList(report.unchecked)}}},
        {QStringLiteral("history"), QJsonArray::fromStringList(report.history)},
    };
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}
