// wiring and lp report: the core's verdicts from a shell, their text and exit status.
#include "CliRun.h"
#include "ReportFixtures.h"
#include "sim/SimulatedMeterHost.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

// A download block of a point value and an energy total, a row at each time given.
QByteArray LpFile(const QList<const char*>& times)
{
    QByteArray text = "Date : 2026/11/21  13:00\r\nDate,Time,Vln_avg(point),kWh+(total)\r\n";
    for (int i = 0; i < times.size(); ++i)
        text += QByteArray("2026/11/21,") + times[i] + ",230.1000," + QByteArray::number(100 + i, 'f', 4) + "\r\n";
    return text;
}

} // namespace

class VerdictCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        for (sim::SimulatedMeterHost* meter : {&m_wellWired, &m_miswired}) {
            const sim::SimulatedMeterHost::Started started = meter->listen();
            QVERIFY2(!started.path.isEmpty(), qPrintable(started.error));
            m_addresses.append(started.path);
        }
        const auto write = [this](const char* name, const QByteArray& text) {
            QFile file(m_dir.filePath(QLatin1String(name)));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        };
        write("clean.csv", LpFile({"13:00:00", "13:15:00", "13:30:00", "13:45:00"}));
        write("flawed.csv", LpFile({"13:00:00", "13:15:00", "13:15:00", "14:00:00", "14:15:00"}));
    }

    // WELL and MISWIRED stand for a meter wired as it should be and one whose L1 CT is
    // connected backwards, DIR for the folder of clean.csv and flawed.csv.
    void verdicts_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QStringList>("out"); // lines that must appear
        QTest::addColumn<QString>("err");
        QTest::newRow("well wired") << QStringList{"wiring", "--port", "WELL"} << 0 << QStringList{"All checks passed"} << "";
        QTest::newRow("CT backwards") << QStringList{"wiring", "--port", "MISWIRED"} << 1
                                      << QStringList{"L1: current reversed"} << "";
        QTest::newRow("watched, the worst seen")
            << QStringList{"wiring", "--port", "MISWIRED", "--watch", "--count", "2"} << 1
            << QStringList{"Reading of ", "\n\nReading of ", "L1: current reversed"} << "";
        QTest::newRow("count without watch") << QStringList{"wiring", "--port", "sim", "--count", "2"} << 2 << QStringList{}
                                             << "--count goes with --watch";
        QTest::newRow("clean file") << QStringList{"lp", "report", "DIR/clean.csv"} << 0
                                    << QStringList{"intervals read: 4", "Gaps: 0", "Duplicates: 0"} << "";
        QTest::newRow("gap and duplicate") << QStringList{"lp", "report", "DIR/flawed.csv", "--interval", "15"} << 1
                                           << QStringList{"Gaps: 1, 2 intervals missing", "Duplicates: 1", "again at line 5"} << "";
        QTest::newRow("no such file") << QStringList{"lp", "report", "DIR/none.csv"} << 2 << QStringList{}
                                      << "none.csv: no such file";
        QTest::newRow("a folder") << QStringList{"lp", "report", "DIR"} << 2 << QStringList{} << "not a plain file";
        QTest::newRow("no file") << QStringList{"lp", "report"} << 2 << QStringList{} << "no file given";
        QTest::newRow("interval") << QStringList{"lp", "report", "DIR/clean.csv", "--interval", "0"} << 2 << QStringList{}
                                  << "--interval must be 1 to 1440 minutes";
        QTest::newRow("lp help") << QStringList{"lp", "--help"} << 0
                                 << QStringList{"Usage: qx5820 lp download", "--group <N>", "Usage: qx5820 lp report [options] FILE", "--interval <MIN>"} << "";
    }
    void verdicts()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QStringList, out);
        QFETCH(QString, err);
        arguments.replaceInStrings(QStringLiteral("WELL"), m_addresses.value(0));
        arguments.replaceInStrings(QStringLiteral("MISWIRED"), m_addresses.value(1));
        arguments.replaceInStrings(QStringLiteral("DIR"), m_dir.path());
        const CliResult run = RunCli(arguments);
        QVERIFY2(run.exitCode == status, run.err.constData());
        for (const QString& line : out)
            QVERIFY2(QString::fromUtf8(run.out).contains(line), run.out.constData());
        QVERIFY2(QString::fromUtf8(run.err).contains(err), run.err.constData());
        QCOMPARE(run.err.isEmpty(), err.isEmpty());
    }

private:
    QTemporaryDir m_dir;
    sim::SimulatedMeterHost m_wellWired{MeterWired("none")};
    sim::SimulatedMeterHost m_miswired{MeterWired("reversed-ct-l1")};
    QStringList m_addresses;
};

QTEST_GUILESS_MAIN(VerdictCommandsTest)
#include "VerdictCommandsTest.moc"
