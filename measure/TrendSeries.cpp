#include "measure/TrendSeries.h"

#include <QDateTime>
#include <QDir>
#include <QSaveFile>
#include <QStringList>

#include <algorithm>

namespace {

struct QuantityInfo {
    const char* name;
    double MeterReading::*single;               // a quantity of its own, or
    std::array<double, 4> MeterReading::*array; // one element of a family
    int element;
};

constexpr QuantityInfo kQuantities[TrendSeries::QuantityCount] = {
    {"V L1 (V)", nullptr, &MeterReading::phaseVoltage, 0},
    {"V L2 (V)", nullptr, &MeterReading::phaseVoltage, 1},
    {"V L3 (V)", nullptr, &MeterReading::phaseVoltage, 2},
    {"I L1 (A)", nullptr, &MeterReading::current, 0},
    {"I L2 (A)", nullptr, &MeterReading::current, 1},
    {"I L3 (A)", nullptr, &MeterReading::current, 2},
    {"P L1 (kW)", nullptr, &MeterReading::activePower, 0},
    {"P L2 (kW)", nullptr, &MeterReading::activePower, 1},
    {"P L3 (kW)", nullptr, &MeterReading::activePower, 2},
    {"P total (kW)", nullptr, &MeterReading::activePower, 3},
    {"Q L1 (kvar)", nullptr, &MeterReading::reactivePower, 0},
    {"Q L2 (kvar)", nullptr, &MeterReading::reactivePower, 1},
    {"Q L3 (kvar)", nullptr, &MeterReading::reactivePower, 2},
    {"Q total (kvar)", nullptr, &MeterReading::reactivePower, 3},
    {"S L1 (kVA)", nullptr, &MeterReading::apparentPower, 0},
    {"S L2 (kVA)", nullptr, &MeterReading::apparentPower, 1},
    {"S L3 (kVA)", nullptr, &MeterReading::apparentPower, 2},
    {"S total (kVA)", nullptr, &MeterReading::apparentPower, 3},
    {"PF average", nullptr, &MeterReading::powerFactor, 3},
    {"Frequency (Hz)", &MeterReading::frequency, nullptr, 0},
};

TrendSeries::Bucket Merged(const TrendSeries::Bucket& earlier, const TrendSeries::Bucket& later)
{
    TrendSeries::Bucket merged = earlier;
    merged.lastMs = later.lastMs;
    merged.ticks += later.ticks;
    for (int q = 0; q < TrendSeries::QuantityCount; ++q) {
        merged.min[q] = std::min(merged.min[q], later.min[q]);
        merged.max[q] = std::max(merged.max[q], later.max[q]);
    }
    return merged;
}

QString CsvTime(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

} // namespace

TrendSeries::TrendSeries(int recentCapacity, int olderCapacity, QObject* parent)
    : QObject(parent), m_recentCapacity(std::max(1, recentCapacity)), m_olderCapacity(std::max(2, olderCapacity))
{
    m_older.reserve(m_olderCapacity + 1);
}

QString TrendSeries::Name(int quantity)
{
    return QString::fromLatin1(kQuantities[quantity].name);
}

double TrendSeries::ValueOf(const MeterReading& reading, int quantity)
{
    const QuantityInfo& info = kQuantities[quantity];
    return info.single ? reading.*info.single : (reading.*info.array)[info.element];
}

void TrendSeries::Append(const MeterReading& reading)
{
    Bucket tick;
    tick.firstMs = tick.lastMs = reading.takenAt.toMSecsSinceEpoch();
    tick.ticks = 1;
    for (int q = 0; q < QuantityCount; ++q)
        tick.min[q] = tick.max[q] = float(ValueOf(reading, q));
    m_recent.push_back(tick);
    ++m_ticksSeen;
    if (qsizetype(m_recent.size()) > m_recentCapacity) {
        FoldIntoOlder(m_recent.front());
        m_recent.pop_front();
    }
    emit appended();
}

void TrendSeries::Clear()
{
    m_recent.clear();
    m_older.clear();
    m_olderTicks = 1;
    m_ticksSeen = 0;
    emit appended();
}

const TrendSeries::Bucket& TrendSeries::At(qsizetype index) const
{
    const auto older = qsizetype(m_older.size());
    return index < older ? m_older[size_t(index)] : m_recent[size_t(index - older)];
}

// The tick that leaves the recent window joins the newest older bucket until that one holds
// its share of ticks.
void TrendSeries::FoldIntoOlder(const Bucket& tick)
{
    if (!m_older.empty() && m_older.back().ticks < m_olderTicks)
        m_older.back() = Merged(m_older.back(), tick);
    else
        m_older.push_back(tick);
    if (qsizetype(m_older.size()) > m_olderCapacity)
        HalveOlder();
}

void TrendSeries::HalveOlder()
{
    size_t kept = 0;
    for (size_t i = 0; i < m_older.size(); i += 2)
        m_older[kept++] = i + 1 < m_older.size() ? Merged(m_older[i], m_older[i + 1]) : m_older[i];
    m_older.resize(kept);
    m_olderTicks *= 2;
}

std::optional<QString> TrendSeries::WriteCsv(const QString& path) const
{
    QStringList header{QStringLiteral("Start"), QStringLiteral("End"), QStringLiteral("Ticks")};
    for (int q = 0; q < QuantityCount; ++q)
        header << Name(q) + QStringLiteral(" min") << Name(q) + QStringLiteral(" max");

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QStringLiteral("Cannot open %1: %2").arg(QDir::toNativeSeparators(path), file.errorString());
    file.write(header.join(u',').toUtf8() + "\r\n");
    for (qsizetype i = 0; i < Size(); ++i) {
        const Bucket& bucket = At(i);
        QStringList row{CsvTime(bucket.firstMs), CsvTime(bucket.lastMs), QString::number(bucket.ticks)};
        for (int q = 0; q < QuantityCount; ++q)
            row << QString::number(bucket.min[q]) << QString::number(bucket.max[q]);
        file.write(row.join(u',').toUtf8() + "\r\n");
    }
    // QSaveFile remembers the first failed write and then refuses to commit.
    if (!file.commit())
        return QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), file.errorString());
    return std::nullopt;
}
