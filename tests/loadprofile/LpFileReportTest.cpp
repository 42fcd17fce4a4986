// The report on a load-profile CSV file: gaps, duplicates and impossible values are found
// across any number of download blocks, and lines the download never writes are reported by
// number without stopping the reading.
#include "loadprofile/LpFileReport.h"

#include <QBuffer>
#include <QTest>

namespace {

// Two channels: a point value and an energy total.
const QByteArray kHeader = "Date : 2026/11/21  13:00\r\nDate,Time,Vln_avg(point),kWh+(total)\r\n";

QByteArray Row(const char* time, const char* volts, const char* total)
{
    return QByteArray("2026/11/21,") + time + ',' + volts + ',' + total + "\r\n";
}

// Rows every 15 minutes from 13:00, totals rising.
QByteArray Quarters(const QList<const char*>& times)
{
    QByteArray rows;
    for (int i = 0; i < times.size(); ++i)
        rows += Row(times[i], "230.1000", QByteArray::number(100 + i, 'f', 4));
    return rows;
}

LpFileReport::Report ReportOn(const QByteArray& text, qint64 intervalSeconds = 0)
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    return LpFileReport::Read(buffer, intervalSeconds);
}

} // namespace

class LpFileReportTest : public QObject {
    Q_OBJECT
private slots:
    void findsWhatIsMissingTwiceOrImpossible_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qint64>("givenInterval");
        QTest::addColumn<int>("blocks");
        QTest::addColumn<qint64>("intervals");
        QTest::addColumn<qint64>("interval");
        QTest::addColumn<qint64>("gaps");
        QTest::addColumn<qint64>("missing");
        QTest::addColumn<qint64>("duplicates");
        QTest::addColumn<qint64>("implausible");
        QTest::addColumn<qint64>("malformed");

        const QByteArray clean = kHeader + Quarters({"13:0:0", "13:15:0", "13:30:0", "13:45:0"});
        QTest::newRow("clean block") << clean << qint64(0) << 1 << qint64(4) << qint64(900)
                                     << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("an hour missing") << kHeader + Quarters({"13:0:0", "13:15:0", "13:30:0", "14:45:0", "15:0:0"})
                                         << qint64(0) << 1 << qint64(5) << qint64(900)
                                         << qint64(1) << qint64(4) << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("interval given, not inferred") << kHeader + Quarters({"13:0:0", "13:30:0", "14:0:0"})
                                                      << qint64(900) << 1 << qint64(3) << qint64(900)
                                                      << qint64(2) << qint64(2) << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("a second download continues the first")
            << kHeader + Quarters({"13:0:0", "13:15:0"}) + kHeader + Quarters({"13:30:0", "13:45:0"})
            << qint64(0) << 2 << qint64(4) << qint64(900)
            << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("a second download starts over") << clean + clean << qint64(0) << 2 << qint64(8) << qint64(900)
                                                       << qint64(0) << qint64(0) << qint64(4) << qint64(0) << qint64(0);
        QTest::newRow("impossible values")
            << kHeader + Row("13:0:0", "230", "12.0000") + Row("13:15:0", "nan", "12.5000")
                   + Row("13:30:0", "231", "11.0000") + Row("13:45:0", "-inf", "-1.0000") + Row("14:0:0", "231", "inf")
            << qint64(0) << 1 << qint64(5) << qint64(900)
            << qint64(0) << qint64(0) << qint64(0) << qint64(5) << qint64(0);
        QTest::newRow("malformed lines")
            << "2026/11/21,12:45:0,1,2\r\n" + kHeader + Row("13:0:0", "230", "1") + "2026/11/21,13:15:0,230\r\n"
                   + Row("13:30:0", "230", "abc") + "2026/13/40,13:45:0,1,2\r\n" + "2026/11/21,25:0:0,1,2\r\n"
                   + "\x01\x02garbage\r\n" + QByteArray(LpFileReport::kMaxLineLength * 2 + 5, 'x') + "\r\n"
                   + Row("14:0:0", "231", "2")
            << qint64(0) << 1 << qint64(3) << qint64(1800)
            << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(7);
        QTest::newRow("empty file") << QByteArray() << qint64(0) << 0 << qint64(0) << qint64(0)
                                    << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("header only, no line end") << QByteArray("Date,Time,kWh+(total)") << qint64(0) << 1 << qint64(0)
                                                  << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0);
    }

    void findsWhatIsMissingTwiceOrImpossible()
    {
        QFETCH(QByteArray, text);
        QFETCH(qint64, givenInterval);
        const LpFileReport::Report report = ReportOn(text, givenInterval);
        QVERIFY2(report.error.isEmpty(), qPrintable(report.error));
        QTEST(report.blocks, "blocks");
        QTEST(report.intervals, "intervals");
        QTEST(report.intervalSeconds, "interval");
        QTEST(report.gapCount, "gaps");
        QTEST(report.missingIntervals, "missing");
        QTEST(report.duplicateCount, "duplicates");
        QTEST(report.implausibleCount, "implausible");
        QTEST(report.malformedCount, "malformed");
        QVERIFY(!LpFileReport::Text(report).isEmpty());
    }

    // What the findings say: the line, the column and the values, so that the operator can
    // find them in the file.
    void findingsNameTheLineAndTheColumn()
    {
        const LpFileReport::Report report = ReportOn(
            kHeader + Row("13:0:0", "230", "12.0000") + Row("13:15:0", "230", "11.5000") + "2026/11/21,13:30:0,1\r\n"
            + Row("13:30:0", "230", "13.0000") + Row("14:15:0", "230", "14.0000"));
        QCOMPARE(report.implausible.size(), 1);
        QCOMPARE(report.implausible[0].line, qint64(4));
        QCOMPARE(report.implausible[0].what, "kWh+(total) goes back from 12.0000 to 11.5000");
        QCOMPARE(report.malformed.size(), 1);
        QCOMPARE(report.malformed[0].line, qint64(5));
        QCOMPARE(report.gaps.size(), 1);
        QCOMPARE(report.gaps[0].after.time(), QTime(13, 30));
        QCOMPARE(report.gaps[0].before.time(), QTime(14, 15));
        QCOMPARE(report.gaps[0].missing, qint64(2));
        QCOMPARE(report.first.time(), QTime(13, 0));
        QCOMPARE(report.last.time(), QTime(14, 15));
        // Both channels are plotted, in time order.
        QCOMPARE(report.channels.size(), 2);
        QCOMPARE(report.channels[1].name, "kWh+(total)");
        QCOMPARE(report.channels[1].points.size(), 4);
        QVERIFY(report.channels[1].points[0].x() < report.channels[1].points[3].x());
    }

    void aFileThatCannotBeOpenedSaysSo()
    {
        const LpFileReport::Report report = LpFileReport::ReadFile(QStringLiteral("/nonexistent/G1.csv"));
        QVERIFY(report.error.contains(QStringLiteral("G1.csv")));
        QVERIFY(LpFileReport::Text(report).contains(report.error));
    }
};

QTEST_GUILESS_MAIN(LpFileReportTest)
#include "LpFileReportTest.moc"
