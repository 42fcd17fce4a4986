// The report on a load-profile CSV file: gaps, duplicates and impossible values are found
// across any number of download blocks, and lines the download never writes are reported by
// number without stopping the reading.
#include "loadprofile/LpFileReport.h"
#include "loadprofile/LpFileReportJob.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QTemporaryDir>
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

// The same, read a line (or a piece of an overlong one) per slice, as the window reads it.
LpFileReport::Report ReportInSlices(const QByteArray& text, qint64 intervalSeconds = 0)
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    LpFileReport::Scan scan(buffer, intervalSeconds);
    while (scan.Next(1)) {
    }
    return scan.Finish();
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
            << qint64(0) << 1 << qint64(2) << qint64(3600)
            << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(7);
        QTest::newRow("a row of unreadable values is one line skipped, no interval")
            << kHeader + Quarters({"13:0:0", "13:15:0"}) + Row("13:30:0", "x", "y") + Row("13:45:0", "1", "z")
            << qint64(900) << 1 << qint64(2) << qint64(900)
            << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(2);
        QTest::newRow("empty file") << QByteArray() << qint64(0) << 0 << qint64(0) << qint64(0)
                                    << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("header only, no line end") << QByteArray("Date,Time,kWh+(total)") << qint64(0) << 1 << qint64(0)
                                                  << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0) << qint64(0);
    }

    void findsWhatIsMissingTwiceOrImpossible()
    {
        QFETCH(QByteArray, text);
        QFETCH(qint64, givenInterval);
        for (const LpFileReport::Report& report : {ReportOn(text, givenInterval), ReportInSlices(text, givenInterval)}) {
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
    }

    // A skipped line is described as what it is, and the lines after it keep their numbers.
    void describesEachSkippedLineTruly_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("what");
        const qint64 limit = LpFileReport::kMaxLineLength;
        const QString longer = QStringLiteral("a line longer than 65536 characters");
        QTest::newRow("garbage") << QByteArray("\x01\x02garbage")
                                 << QStringLiteral("1 column where the header has 4 columns: \"\\x01\\x02garbage\"");
        QTest::newRow("a value missing") << QByteArray("2026/11/21,13:15:0,230")
                                         << QStringLiteral("3 columns where the header has 4 columns: \"2026/11/21,13:15:0,230\"");
        QTest::newRow("two values unreadable") << QByteArray("2026/11/21,13:15:0,x,\x1b[2J")
                                               << QStringLiteral("Vln_avg(point) is not a number: \"x\", and 1 more");
        QTest::newRow("a line of the longest length") << QByteArray(limit, 'x')
                                                      << QStringLiteral("1 column where the header has 4 columns: \"%1…\"").arg(QString(40, u'x'));
        QTest::newRow("a line one longer") << QByteArray(limit + 1, 'x') << longer;
        QTest::newRow("a line far longer") << QByteArray(limit * 3, 'x') << longer;
    }

    void describesEachSkippedLineTruly()
    {
        QFETCH(QByteArray, line);
        const QByteArray text = kHeader + line + "\r\n2026/11/21,13:0:0\r\n" + Row("13:15:0", "230", "1");
        for (const LpFileReport::Report& report : {ReportOn(text), ReportInSlices(text)}) {
            QCOMPARE(report.malformedCount, qint64(2));
            QCOMPARE(report.malformed[0].line, qint64(3));
            QTEST(report.malformed[0].what, "what");
            QCOMPARE(report.malformed[1].line, qint64(4));
            QCOMPARE(report.intervals, qint64(1));
        }
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

    // The window's job reads a file from the event loop to the same report, once; what is no
    // plain file (a pipe or a device would block the window or never end) is refused.
    void theJobReportsFromTheEventLoop_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("error");
        QTest::newRow("a file") << QStringLiteral("G1.csv") << QString();
        QTest::newRow("absent") << QStringLiteral("absent.csv") << QStringLiteral("absent.csv");
        QTest::newRow("a folder") << QString() << QStringLiteral("not a plain file");
        QTest::newRow("a device") << QStringLiteral("/dev/zero") << QStringLiteral("not a plain file");
    }

    void theJobReportsFromTheEventLoop()
    {
        QFETCH(QString, name);
        QFETCH(QString, error);
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("G1.csv")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kHeader + Quarters({"13:0:0", "13:30:0", "14:0:0"}));
        file.close();
        const QString path = QDir(folder.path()).filePath(name);
        LpFileReportJob job(path, 900);
        QSignalSpy done(&job, &LpFileReportJob::done);
        QVERIFY(done.wait(5000));
        QTest::qWait(50);
        QCOMPARE(done.size(), 1);
        const auto report = done[0][0].value<LpFileReport::Report>();
        QCOMPARE(report.error.isEmpty(), error.isEmpty());
        QVERIFY2(report.error.contains(error), qPrintable(report.error));
        QCOMPARE(report.error, LpFileReport::ReadFile(path, 900).error);
        QCOMPARE(report.missingIntervals, error.isEmpty() ? 2 : 0);
    }
};

QTEST_GUILESS_MAIN(LpFileReportTest)
#include "LpFileReportTest.moc"
