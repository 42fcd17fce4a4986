// The trend series stays within its bound over any number of ticks, loses no tick's extremes
// and keeps its points in time order; its CSV export says why it failed and keeps the data.
#include "measure/TrendSeries.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

const QDateTime kStart(QDate(2026, 11, 21), QTime(13, 0), Qt::UTC);
constexpr qint64 kTickMs = 200;

MeterReading ReadingAt(qint64 tick, double voltage)
{
    MeterReading reading;
    reading.takenAt = kStart.addMSecs(tick * kTickMs);
    reading.phaseVoltage = {voltage, voltage + 1, voltage + 2, voltage + 1};
    reading.frequency = 50;
    return reading;
}

} // namespace

class TrendSeriesTest : public QObject {
    Q_OBJECT
private slots:
    void staysBoundedInOrderAndKeepsExtremes_data()
    {
        QTest::addColumn<int>("recent");
        QTest::addColumn<int>("older");
        QTest::addColumn<qint64>("ticks");
        QTest::newRow("fewer ticks than the recent window") << 10 << 8 << qint64(7);
        QTest::newRow("just past the recent window") << 10 << 8 << qint64(11);
        QTest::newRow("one halving") << 10 << 8 << qint64(19);
        QTest::newRow("many halvings") << 10 << 8 << qint64(5000);
        QTest::newRow("odd older capacity") << 4 << 5 << qint64(1234);
        QTest::newRow("a day at the default capacities") << TrendSeries::kRecentCapacity
                                                          << TrendSeries::kOlderCapacity << qint64(430000);
    }

    void staysBoundedInOrderAndKeepsExtremes()
    {
        QFETCH(int, recent);
        QFETCH(int, older);
        QFETCH(qint64, ticks);
        TrendSeries series(recent, older);
        const qint64 spike = ticks / 3;
        const qint64 dip = ticks / 2 + 1;
        for (qint64 tick = 0; tick < ticks; ++tick) {
            const double voltage = tick == spike ? 400 : tick == dip ? 100 : 230 + double(tick % 7);
            series.Append(ReadingAt(tick, voltage));
        }

        QVERIFY(series.Size() <= recent + older);
        QCOMPARE(series.TicksSeen(), ticks);
        qint64 ticksHeld = 0;
        float highest = 0;
        float lowest = 1000;
        for (qsizetype i = 0; i < series.Size(); ++i) {
            const TrendSeries::Bucket& bucket = series.At(i);
            QVERIFY(bucket.firstMs <= bucket.lastMs);
            if (i > 0)
                QVERIFY2(series.At(i - 1).lastMs < bucket.firstMs, "buckets out of time order");
            QVERIFY(bucket.min[TrendSeries::VoltageL1] <= bucket.max[TrendSeries::VoltageL1]);
            ticksHeld += bucket.ticks;
            const qint64 spikeMs = kStart.addMSecs(spike * kTickMs).toMSecsSinceEpoch();
            if (bucket.max[TrendSeries::VoltageL1] == 400)
                QVERIFY(bucket.firstMs <= spikeMs && spikeMs <= bucket.lastMs);
            highest = std::max(highest, bucket.max[TrendSeries::VoltageL1]);
            lowest = std::min(lowest, bucket.min[TrendSeries::VoltageL1]);
        }
        QCOMPARE(ticksHeld, ticks);
        QCOMPARE(highest, 400.0f);
        QCOMPARE(lowest, 100.0f);
        // The last ticks are kept one by one, the newest last.
        const qsizetype kept = std::min<qsizetype>(recent, ticks);
        for (qsizetype back = 1; back <= kept; ++back)
            QCOMPARE(series.At(series.Size() - back).ticks, 1);
        QCOMPARE(series.At(series.Size() - 1).lastMs, kStart.addMSecs((ticks - 1) * kTickMs).toMSecsSinceEpoch());
    }

    void csvExportWritesEveryPointOrSaysWhy()
    {
        TrendSeries series(3, 2);
        for (qint64 tick = 0; tick < 10; ++tick)
            series.Append(ReadingAt(tick, 230));
        const qsizetype points = series.Size();

        QTemporaryDir dir;
        const QString missingFolder = dir.filePath(QStringLiteral("no such folder/trends.csv"));
        const auto error = series.WriteCsv(missingFolder);
        QVERIFY(error.has_value());
        QVERIFY2(error->contains(QStringLiteral("trends.csv")), qPrintable(*error));
        QCOMPARE(series.Size(), points);

        const QString path = dir.filePath(QStringLiteral("trends.csv"));
        QVERIFY(!series.WriteCsv(path).has_value());
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QCOMPARE(lines.size(), points + 2); // header, the points, and the empty rest after the last line end
        QVERIFY(lines[0].startsWith("Start,End,Ticks,V L1 (V) min,V L1 (V) max"));
        QCOMPARE(lines[0].count(','), 2 + 2 * TrendSeries::QuantityCount);
        QCOMPARE(lines[1].count(','), lines[0].count(','));
    }
};

QTEST_GUILESS_MAIN(TrendSeriesTest)
#include "TrendSeriesTest.moc"
