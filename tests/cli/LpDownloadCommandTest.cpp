// lp download run as a user runs it: ranges checked row by row against the records of a
// simulated meter of the test's own, downloads stopped (Ctrl-C, a kill, a lost line) and
// continued with nothing lost or written twice, and what the command refuses: a meter whose
// intervals were numbered anew, links planted in the folder.
#include "CliRun.h"
#include "LpFileRows.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <signal.h>

namespace {

constexpr int kChannels[] = {8, 4}; // the simulated meter's groups
constexpr int kWaitMs = 30000;

// A meter whose clock stands still, so that its records can be read back; `history` intervals
// in `group` (0 or 1), or the ones it holds at power-on.
std::unique_ptr<sim::SimulatedMeterHost> Meter(int group = 0, int history = 0)
{
    sim::MeterModel model(7, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC), sim::SimClock::Mode::Frozen);
    if (history > 0)
        model.startWithHistory(group, history);
    return std::make_unique<sim::SimulatedMeterHost>(std::move(model));
}

QStringList Download(int group, const QString& folder, const QString& port, const QStringList& more)
{
    return QStringList{"lp", "download", "--group", QString::number(group), "--folder", folder, "--port", port} + more;
}

// The one file of a kind in the download folder under `parent`.
QString FileIn(const QString& parent, const QString& pattern)
{
    const QDir folder(parent + "/LP Data");
    const QStringList names = folder.entryList({pattern}, QDir::Files);
    return names.size() == 1 ? folder.filePath(names.first()) : QString();
}

// A number of the progress record in the download folder under `parent`.
int RecordField(const QString& parent, const char* key)
{
    return QJsonDocument::fromJson(FileBytes(FileIn(parent, "*.progress.json"))).object().value(key).toInt();
}

} // namespace

class LpDownloadCommandTest : public QObject {
    Q_OBJECT
private slots:
    // The built-in simulated meter of --port sim starts with this short history.
    void initTestCase() { qputenv("QX5820_SIM_HISTORY", "5"); }

    void wholeRangesRowByRow_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("history"); // 0: what the meter holds at power-on
        QTest::addColumn<QStringList>("range");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        QTest::newRow("steps of 4 and 3") << 1 << 0 << QStringList{"--from", "3", "--to", "9"} << 3 << 9;
        QTest::newRow("every valid interval") << 2 << 6 << QStringList{} << 1 << 6;
        QTest::newRow("from 1438 to the last") << 1 << 0 << QStringList{"--from", "1438"} << 1438 << 1440;
    }
    void wholeRangesRowByRow()
    {
        QFETCH(int, group);
        QFETCH(int, history);
        QFETCH(QStringList, range);
        QFETCH(int, first);
        QFETCH(int, last);
        const auto meter = Meter(group - 1, history);
        QTemporaryDir dir;
        const CliResult run = RunCli(Download(group, dir.path(), meter->start().path, range));
        QVERIFY2(run.exitCode == 0, run.err.constData());
        const QString csv = FileIn(dir.path(), "*.csv");
        QCOMPARE(QString::fromUtf8(run.out), QStringLiteral("%1: %2 intervals written (%3 to %4 of group %5)\n")
                                                 .arg(csv).arg(last - first + 1).arg(first).arg(last).arg(group));
        QCOMPARE(run.err, QByteArray()); // no progress bar off a terminal
        QCOMPARE(DataRows(csv), MeterRows(*meter, group - 1, kChannels[group - 1], first, last));
        QFile file(csv);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readLine().startsWith("Date : "));
        const QByteArray columns = file.readLine();
        QVERIFY(columns.startsWith("Date,Time,"));
        QCOMPARE(columns.count(','), 1 + kChannels[group - 1]);
        QCOMPARE(FileIn(dir.path(), "*.progress.json"), QString()); // done: no record left
    }

    // Each way a download can stop, then --continue: the file ends up with every interval of
    // the range once. A meter whose group changed meanwhile is refused until it is set back.
    void stoppedAndContinued_data()
    {
        QTest::addColumn<QString>("how");
        for (const char* how : {"Ctrl-C", "killed", "line lost", "rows without their record", "group changed", "renumbered"})
            QTest::newRow(how) << QString::fromLatin1(how);
    }
    void stoppedAndContinued()
    {
        QFETCH(QString, how);
        const auto meter = Meter();
        meter->setPacing(true);
        QTemporaryDir dir;
        QString port = meter->start().path;
        QProcess first;
        first.start(QStringLiteral(QX5820_CLI), Download(1, dir.path(), port, {"--to", "48", "--timeout", "0.2"}));
        QTRY_VERIFY_WITH_TIMEOUT(DataRows(FileIn(dir.path(), "*.csv")).size() >= 8, kWaitMs);
        const QString csv = FileIn(dir.path(), "*.csv");
        if (how == "killed") {
            first.kill();
        } else if (how == "line lost") {
            meter->stop();
        } else {
            QCOMPARE(::kill(pid_t(first.processId()), SIGINT), 0);
        }
        QVERIFY(first.waitForFinished(kWaitMs));
        const QString err = QString::fromUtf8(first.readAllStandardError());
        if (how == "killed") {
            QCOMPARE(first.exitStatus(), QProcess::CrashExit);
        } else {
            QCOMPARE(first.exitCode(), how == "line lost" ? 4 : 130);
            QVERIFY2(err.contains("Run the same command with --continue"), qPrintable(err));
        }
        QVERIFY(DataRows(csv).size() < 48);
        QVERIFY(!FileIn(dir.path(), "*.progress.json").isEmpty());

        meter->setPacing(false); // the rest need not take the line's time
        if (how == "line lost")
            port = meter->start().path;
        if (how == "rows without their record") {
            // As a run killed between a step's rows and its record leaves them.
            QFile file(csv);
            QVERIFY(file.open(QIODevice::Append));
            file.write("2026/11/15,0:0:0,1.0000,2.0000,3.0000,4.0000,5.0000,6.0000,7.0000,8.0000\r\n");
        }
        const QStringList again = Download(1, dir.path(), port, {"--continue"});
        if (how == "group changed") {
            const quint16 code = meter->holding(0x1036);
            meter->setHolding(0x1036, 14);
            const CliResult refused = RunCli(again);
            QCOMPARE(refused.exitCode, 5);
            QVERIFY2(refused.err.contains("would not match the file's columns"), refused.err.constData());
            meter->setHolding(0x1036, code);
        }
        if (how == "renumbered") {
            // The meter's memory rolled on by a day: its interval `next` now holds a later one.
            const int next = RecordField(dir.path(), "next");
            const QByteArray follows = MeterRows(*meter, 0, kChannels[0], next, next).value(0);
            meter->withModel([](sim::MeterModel& model) {
                model = sim::MeterModel(7, QDateTime(QDate(2026, 11, 16), QTime(23, 59, 7), Qt::UTC), sim::SimClock::Mode::Frozen);
            });
            const QByteArray moved = MeterRows(*meter, 0, kChannels[0], next, next).value(0);
            const QByteArray before = FileBytes(csv);
            const CliResult refused = RunCli(again);
            QCOMPARE(refused.exitCode, 5);
            for (const QByteArray& row : {follows, moved})
                QVERIFY2(refused.err.contains(LpCsvFile::TimeText(*LpCsvFile::RowTime(row)).toUtf8()), refused.err.constData());
            QCOMPARE(FileBytes(csv), before);
            return;
        }
        const CliResult second = RunCli(again);
        QVERIFY2(second.exitCode == 0, second.err.constData());
        QVERIFY(second.out.contains(" intervals written ("));
        QCOMPARE(DataRows(csv), MeterRows(*meter, 0, kChannels[0], 1, 48));
        QCOMPARE(FileIn(dir.path(), "*.progress.json"), QString());
    }

    // A link planted under the name of the day's file or of the progress record, pointing at
    // a file outside "LP Data": refused before anything is written, and that file untouched.
    void plantedLinksAreRefused_data()
    {
        QTest::addColumn<QString>("name"); // %1: the meter's part of the names
        QTest::newRow("the day's file") << "%1_" + QDate::currentDate().toString("yyyyMMdd") + "_Group1.csv";
        QTest::newRow("the progress record") << "%1_Group1.progress.json";
    }
    void plantedLinksAreRefused()
    {
        QFETCH(QString, name);
        const auto meter = Meter();
        QTemporaryDir dir;
        const QString port = meter->start().path;
        const CliResult first = RunCli(Download(1, dir.path(), port, {"--to", "1"}));
        QVERIFY2(first.exitCode == 0, first.err.constData());
        const QString csv = FileIn(dir.path(), "*.csv");
        const QString outside = dir.filePath("outside");
        QVERIFY(QFile::rename(csv, outside));
        const QString planted = QFileInfo(csv).dir().filePath(name.arg(QFileInfo(csv).fileName().section(u'_', 0, -3)));
        QFile::remove(planted);
        QVERIFY(QFile::link(outside, planted));
        const QByteArray before = FileBytes(outside);

        const CliResult refused = RunCli(Download(1, dir.path(), port, {"--to", "1"}));
        QCOMPARE(refused.exitCode, 6);
        QVERIFY2(QString::fromUtf8(refused.err).contains(planted + ": it is a symbolic link"), refused.err.constData());
        QCOMPARE(FileBytes(outside), before);
    }

    // Against the built-in simulated meter; "DIR" stands for an empty folder.
    void messagesAndExitStatus_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out"); // a text that must appear, or empty
        QTest::addColumn<QString>("err");
        const auto lp = [](int group, QStringList more) { return Download(group, "DIR", "sim", more); };
        QTest::newRow("listed") << QStringList{"--help"} << 0 << "lp download: a load-profile group's" << "";
        QTest::newRow("help") << QStringList{"lp", "download", "--help"} << 0 << "Usage: qx5820 lp download [options]" << "";
        QTest::newRow("unknown word") << QStringList{"lp", "upload"} << 2 << "" << "unknown lp sub-command \"upload\"";
        QTest::newRow("no group") << QStringList{"lp", "download", "--port", "sim"} << 2 << "" << "no group given";
        QTest::newRow("group 3") << lp(3, {}) << 2 << "" << "--group must be 1 or 2, not \"3\"";
        QTest::newRow("not a number") << lp(1, {"--to", "ten"}) << 2 << "" << "--to must be a whole number, not \"ten\"";
        QTest::newRow("continue with a range") << lp(1, {"--continue", "--from", "2"}) << 2 << ""
                                               << "--from and --to do not go with it";
        QTest::newRow("bad range") << lp(1, {"--from", "5", "--to", "4"}) << 2 << ""
                                   << "Interval starting number must less than final number！";
        QTest::newRow("past the valid intervals") << lp(1, {"--to", "6"}) << 2 << "" << "Over Interval Valid limit";
        QTest::newRow("continue without a record") << lp(1, {"--continue"}) << 2 << ""
                                                   << "--continue: no interrupted download of group 1";
        QTest::newRow("folder that cannot be made") << Download(1, "/proc/qx5820", "sim", {}) << 6 << ""
                                                    << "cannot create the folder \"LP Data\" in /proc/qx5820";
        QTest::newRow("every interval of the built-in meter") << lp(2, {}) << 0 << "5 intervals written (1 to 5 of group 2)" << "";
    }
    void messagesAndExitStatus()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        QTemporaryDir dir;
        arguments.replaceInStrings(QRegularExpression("^DIR$"), dir.path());
        const CliResult run = RunCli(arguments);
        QVERIFY2(run.exitCode == status, run.err.constData());
        QVERIFY2(QString::fromUtf8(run.out).contains(out), run.out.constData());
        QVERIFY2(QString::fromUtf8(run.err).contains(err), run.err.constData());
        QCOMPARE(run.err.isEmpty(), err.isEmpty());
    }
};

QTEST_GUILESS_MAIN(LpDownloadCommandTest)
#include "LpDownloadCommandTest.moc"
