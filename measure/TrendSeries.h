#pragma once

#include "measure/MeterReading.h"

#include <QObject>
#include <QString>

#include <array>
#include <deque>
#include <optional>
#include <vector>

// The live measurements of a session over time, for the trend chart and its CSV export.
//
// Memory stays bounded however long the tool polls: the last `recentCapacity` ticks are kept
// as they were read; older ticks are folded into buckets that hold each quantity's minimum and
// maximum over a run of ticks. When there are more than `olderCapacity` buckets, neighbouring
// buckets are merged pairwise, so a bucket covers twice as many ticks as before. At most
// recentCapacity + olderCapacity buckets are ever held, whatever the length of the session;
// buckets stay in time order, and a merge never loses an extreme.
class TrendSeries : public QObject {
    Q_OBJECT
public:
    // The quantities followed, in the order of the chart's list and the CSV columns.
    enum Quantity {
        VoltageL1, VoltageL2, VoltageL3,
        CurrentL1, CurrentL2, CurrentL3,
        ActiveL1, ActiveL2, ActiveL3, ActiveTotal,
        ReactiveL1, ReactiveL2, ReactiveL3, ReactiveTotal,
        ApparentL1, ApparentL2, ApparentL3, ApparentTotal,
        PowerFactor, Frequency,
        QuantityCount
    };

    // One run of consecutive ticks. The meter sends single-precision floats, so a float holds
    // every value as it was read.
    struct Bucket {
        qint64 firstMs = 0; // when the first tick of the run was taken, ms since the epoch
        qint64 lastMs = 0;  // and the last
        qint32 ticks = 0;
        std::array<float, QuantityCount> min{};
        std::array<float, QuantityCount> max{};
    };

    // About 10 minutes at full resolution at five ticks a second, and 4,000 buckets for the
    // rest of the session: 7,000 buckets of 184 bytes at most, about 1.3 MB.
    static constexpr int kRecentCapacity = 3000;
    static constexpr int kOlderCapacity = 4000;

    explicit TrendSeries(int recentCapacity = kRecentCapacity, int olderCapacity = kOlderCapacity,
                         QObject* parent = nullptr);

    // The name of a quantity with its unit, as the chart's list and the CSV header show it.
    static QString Name(int quantity);
    static double ValueOf(const MeterReading& reading, int quantity);

    // One tick's reading: connected to PollCycle::readingTaken.
    void Append(const MeterReading& reading);
    void Clear();

    // Buckets in time order: the older ones first, then the recent ticks.
    qsizetype Size() const { return qsizetype(m_older.size() + m_recent.size()); }
    const Bucket& At(qsizetype index) const;
    // Ticks appended since the last Clear.
    qint64 TicksSeen() const { return m_ticksSeen; }
    // Ticks an older bucket holds when full.
    qint64 OlderBucketTicks() const { return m_olderTicks; }

    // Writes every bucket with its times and each quantity's minimum and maximum. The file is
    // replaced only when all of it was written; the error names the file and the reason.
    std::optional<QString> WriteCsv(const QString& path) const;

signals:
    void appended();

private:
    void FoldIntoOlder(const Bucket& tick);
    void HalveOlder();

    int m_recentCapacity;
    int m_olderCapacity;
    std::deque<Bucket> m_recent;
    std::vector<Bucket> m_older;
    qint64 m_olderTicks = 1;
    qint64 m_ticksSeen = 0;
};
