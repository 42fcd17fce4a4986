// What every command's parser takes: the options its help offers, mbpoll's short names, the
// port from the environment, stray words, and the frames --verbose shows.
#include "CliRun.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

class CommandLineTest : public QObject {
    Q_OBJECT
private slots:
    void helpOffersWhatTheParserTakes_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QString>("refused"); // an option the command has no use for, so neither offers nor takes
        QTest::newRow("ports") << QStringList{"ports"} << "port";
        QTest::newRow("read") << QStringList{"read"} << "output";
        QTest::newRow("watch") << QStringList{"watch"} << "all";
        QTest::newRow("set") << QStringList{"set"} << "format";
        QTest::newRow("config save") << QStringList{"config", "save"} << "yes";
        QTest::newRow("config diff") << QStringList{"config", "diff"} << "yes";
        QTest::newRow("config apply") << QStringList{"config", "apply"} << "count";
        QTest::newRow("scan") << QStringList{"scan"} << "address";
        QTest::newRow("lp download") << QStringList{"lp", "download"} << "interval";
        QTest::newRow("lp report") << QStringList{"lp", "report"} << "port";
        QTest::newRow("wiring") << QStringList{"wiring"} << "format";
        QTest::newRow("report") << QStringList{"report"} << "count";
    }
    // Each option the help lists goes through the parser (which answers --help only when it
    // knows every option before it).
    void helpOffersWhatTheParserTakes()
    {
        QFETCH(QStringList, command);
        QFETCH(QString, refused);
        const CliResult help = RunCli(command + QStringList{"--help"});
        QCOMPARE(help.exitCode, 0);
        static const QRegularExpression listed(QStringLiteral(R"(^  (?:-\w, )?--([a-z-]+)( <)?)"), QRegularExpression::MultilineOption);
        QStringList offered;
        for (auto match = listed.globalMatch(QString::fromUtf8(help.out)); match.hasNext();) {
            const QRegularExpressionMatch option = match.next();
            offered.append(option.captured(1));
            QStringList given{QStringLiteral("--") + option.captured(1)};
            if (option.hasCaptured(2))
                given.append(QStringLiteral("1"));
            const CliResult run = RunCli(command + given + QStringList{"--help"});
            QVERIFY2(run.exitCode == 0, qPrintable(given.join(' ') + QStringLiteral(": ") + QString::fromUtf8(run.err)));
        }
        QVERIFY(offered.contains(QStringLiteral("help")));
        QVERIFY(!offered.contains(refused));
        const CliResult run = RunCli(command + QStringList{QStringLiteral("--") + refused, "1"});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains("Unknown option"), run.err.constData());
    }

    void lineOptions_data()
    {
        QTest::addColumn<QString>("environmentPort"); // QX5820_PORT, unset when empty
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("err");
        QTest::newRow("short options") << "sim" << QStringList{"read", "-a", "15", "-b", "19200", "-t", "1", "--format", "json"} << 0 << "";
        QTest::newRow("-a reaches another meter") << "sim" << QStringList{"read", "-a", "16", "-t", "0.1"} << 4 << "nothing came back";
        QTest::newRow("-b is --baud") << "sim" << QStringList{"read", "-b", "4800"} << 2 << "--baud must be 9600 or 19200";
        QTest::newRow("-t is --timeout") << "sim" << QStringList{"read", "-t", "0"} << 2 << "--timeout must be 0.05 to 60";
        QTest::newRow("--port over the environment") << "/dev/qx5820-none" << QStringList{"read", "--port", "sim"} << 0 << "";
        QTest::newRow("no port at all") << "" << QStringList{"wiring"} << 2 << "or the QX5820_PORT environment variable";
        QTest::newRow("stray word") << "sim" << QStringList{"read", "now"} << 2 << "unexpected argument \"now\"";
        QTest::newRow("stray word after a setting") << "sim" << QStringList{"set", "clock", "now"} << 2 << "usage: qx5820 set clock";
        QTest::newRow("stray file") << "sim" << QStringList{"config", "diff", "a.json", "b.json"} << 2 << "usage: qx5820 config diff";
        QTest::newRow("stray word of lp") << "sim" << QStringList{"lp", "download", "--group", "1", "all"} << 2 << "unexpected argument";
        QTest::newRow("two reports") << "" << QStringList{"lp", "report", "a.csv", "b.csv"} << 2 << "takes one file";
    }
    void lineOptions()
    {
        QFETCH(QString, environmentPort);
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, err);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QX5820_PORT"));
        if (!environmentPort.isEmpty())
            environment.insert(QStringLiteral("QX5820_PORT"), environmentPort);
        const CliResult run = RunCli(arguments, environment);
        QVERIFY2(run.exitCode == status, run.err.constData());
        QVERIFY2(QString::fromUtf8(run.err).contains(err), run.err.constData());
    }

    // Times in ISO 8601, the PC's with its offset; both PT ratio 2 values, each named for what it is.
    void jsonTimesAndRatios()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TZ"), QStringLiteral("Asia/Kolkata"));
        const CliResult run = RunCli({"read", "--port", "sim", "--format", "json"}, environment);
        QCOMPARE(run.exitCode, 0);
        const QJsonObject reading = QJsonDocument::fromJson(run.out).object();
        QVERIFY2(QRegularExpression(QStringLiteral(R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}\+05:30$)"))
                     .match(reading.value("time").toString()).hasMatch(), run.out.constData());
        QVERIFY(QRegularExpression(QStringLiteral(R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$)")).match(reading.value("meter_clock").toString()).hasMatch());
        QVERIFY(reading.value("voltage_an_v").toDouble() > 100);
        QVERIFY(qFuzzyCompare(reading.value("pt_ratio_2_primary_v").toDouble(),
                              reading.value("pt_ratio_1").toDouble() * reading.value("pt_ratio_2").toDouble()));
    }

    void verboseShowsEachFrame()
    {
        const CliResult run = RunCli({"read", "--port", "sim", "-v", "--format", "csv"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.startsWith("time,"));
        // The monitor's lines: the request of the first block, then the meter's good reply.
        QVERIFY2(QRegularExpression(QStringLiteral(R"(  TX  request\s+0F 03 10 00 )")).match(QString::fromUtf8(run.err)).hasMatch(), run.err.constData());
        QVERIFY2(QRegularExpression(QStringLiteral(R"(  RX  good, [\d.]+ ms\s+0F 03 )")).match(QString::fromUtf8(run.err)).hasMatch(), run.err.constData());
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
