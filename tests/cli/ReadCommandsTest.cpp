// read, watch, scan and ports, and the options every command shares: output, exit status and
// messages, on the simulated meter's pseudo-terminal and over TCP, and on a silent line; meter
// text on a terminal; Ctrl-C and SIGTERM.
#include "CliRun.h"
#include "PtyPair.h"
#include "sim/MeterRegisters.h"
#include "sim/SimulatedMeterHost.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

class ReadCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY2(m_silent.error().isEmpty(), qPrintable(m_silent.error()));
        const sim::SimulatedMeterHost::Started started = m_network.listen();
        QVERIFY2(!started.path.isEmpty(), qPrintable(started.error));
        m_networkAddress = started.path;
    }

    // A row's arguments may name "SILENT", a line where nothing answers, or "NETWORK", the
    // simulated meter behind a TCP port.
    void exitStatusAndMessages_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out"); // a line that must appear, or empty
        QTest::addColumn<QString>("err");
        const auto sim = [](QStringList more) { return QStringList{QStringLiteral("--port"), QStringLiteral("sim")} + more; };
        QTest::newRow("read as a table") << QStringList{"read"} + sim({}) << 0 << "identification              QX5820  SN004217" << "";
        QTest::newRow("read over TCP") << QStringList{"read", "--port", "NETWORK", "--format", "csv"} << 0 << "time,voltage_an_v," << "";
        QTest::newRow("scan") << QStringList{"scan"} + sim({}) << 0 << "address 15 at 19200 baud, 1 stop bit: QX5820  SN004217" << "";
        QTest::newRow("scan over TCP") << QStringList{"scan", "--port", "NETWORK", "--to", "20"} << 0 << "address 15 at tcp://127.0.0.1:" << "";
        QTest::newRow("scan finds nobody") << QStringList{"scan"} + sim({"--baud", "9600", "--to", "20"}) << 4 << ""
                                           << "no meter answered on sim at addresses 1-20 (9600 baud)";
        QTest::newRow("scan range") << QStringList{"scan"} + sim({"--from", "30", "--to", "20"}) << 2 << "" << "--from and --to";
        QTest::newRow("ports") << QStringList{"ports"} << 0 << "Port numbers 1 to 15 stand for" << "";
        QTest::newRow("overview") << QStringList{"--help"} << 0 << "Usage: qx5820 COMMAND [options]" << "";
        QTest::newRow("command help") << QStringList{"watch", "--help"} << 0 << "Usage: qx5820 watch [options]" << "";
        QTest::newRow("no command") << QStringList{} << 2 << "" << "Usage: qx5820 COMMAND [options]";
        QTest::newRow("unknown command") << QStringList{"reed"} << 2 << "" << "qx5820: unknown command \"reed\"";
        QTest::newRow("no port") << QStringList{"read"} << 2 << "" << "no port given";
        QTest::newRow("port number past the list") << QStringList{"read", "--port", "99"} << 2 << "" << "port number 99 is not in the list";
        QTest::newRow("bad network address") << QStringList{"read", "--port", "tcp://meter"} << 2 << "" << "tcp://host:port";
        QTest::newRow("baud rate") << QStringList{"read"} + sim({"--baud", "4800"}) << 2 << "" << "--baud must be 9600 or 19200, not \"4800\"";
        QTest::newRow("stop bits") << QStringList{"read"} + sim({"--stop-bits", "1.5"}) << 2 << "" << "--stop-bits must be 1 or 2";
        QTest::newRow("address") << QStringList{"read"} + sim({"--address", "251"}) << 2 << "" << "--address must be 1 to 250";
        QTest::newRow("format") << QStringList{"read"} + sim({"--format", "xml"}) << 2 << "" << "--format must be table, json or csv";
        QTest::newRow("watch as a table") << QStringList{"watch"} + sim({"--format", "table"}) << 2 << "" << "--format must be csv or json";
        QTest::newRow("count") << QStringList{"watch"} + sim({"--count", "0"}) << 2 << "" << "--count must be 1 or more";
        QTest::newRow("timeout nan") << QStringList{"read", "--port", "SILENT", "--timeout", "nan"} << 2 << ""
                                     << "--timeout must be 0.05 to 60 seconds, not \"nan\"";
        QTest::newRow("word after ports") << QStringList{"ports", "all"} << 2 << "" << "unexpected argument \"all\"";
        QTest::newRow("empty folder") << QStringList{"lp", "download", "--group", "1", "--folder", ""} + sim({}) << 2 << ""
                                      << "--folder needs a value";
        QTest::newRow("port number past an int") << QStringList{"read", "--port", "99999999999999999999"} << 2 << ""
                                                 << "port number 99999999999999999999 is not in the list";
        QTest::newRow("absent device") << QStringList{"read", "--port", "/dev/ttyQX404"} << 3 << "" << "Comm Port Error: /dev/ttyQX404";
        QTest::newRow("silent meter") << QStringList{"read", "--port", "SILENT", "--timeout", "0.1"} << 4 << ""
                                      << "Communication Error! Retry 5 times!";
        QTest::newRow("another address") << QStringList{"watch"} + sim({"--address", "3", "--timeout", "0.1"}) << 4 << ""
                                         << "Communication Error! Retry 5 times!";
        QTest::newRow("output to a full disk") << QStringList{"watch"} + sim({"--count", "2", "--output", "/dev/full"}) << 6 << ""
                                               << "/dev/full: No space left on device";
    }
    void exitStatusAndMessages()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        arguments.replaceInStrings(QStringLiteral("SILENT"), m_silent.first());
        arguments.replaceInStrings(QStringLiteral("NETWORK"), m_networkAddress);
        const CliResult run = RunCli(arguments);
        QVERIFY2(run.exitCode == status, run.err.constData());
        QVERIFY2(QString::fromUtf8(run.out).contains(out), run.out.constData());
        QVERIFY2(QString::fromUtf8(run.err).contains(err), run.err.constData());
        QCOMPARE(run.err.isEmpty(), err.isEmpty());
    }

    void jsonAndCsvCarryTheSameFields()
    {
        const CliResult json = RunCli({"read", "--port", "sim", "--format", "json"});
        QCOMPARE(json.exitCode, 0);
        QJsonParseError error;
        const QJsonObject object = QJsonDocument::fromJson(json.out, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(object.value("frequency_hz").toDouble() > 49 && object.value("frequency_hz").toDouble() < 51);
        QCOMPARE(object.value("wiring").toString(), QStringLiteral("3P4W"));

        const CliResult csv = RunCli({"read", "--port", "sim", "--format", "csv"});
        const QList<QByteArray> lines = csv.out.trimmed().split('\n');
        QCOMPARE(lines.size(), 2);
        const QList<QByteArray> names = lines[0].split(',');
        QCOMPARE(names.size(), object.size());
        QCOMPARE(lines[1].split(',').size(), names.size());
        for (const QByteArray& name : names)
            QVERIFY2(object.contains(QString::fromLatin1(name)), name.constData());
    }

    // A log appended to by two runs has one header, and every tick a line of its own.
    void watchAppendsOneLineATick()
    {
        QTemporaryDir dir;
        const QString log = dir.filePath("meter.csv");
        for (int run = 0; run < 2; ++run)
            QCOMPARE(RunCli({"watch", "--port", "sim", "--count", "3", "--output", log}).exitCode, 0);
        QFile file(log);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
        QCOMPARE(lines.size(), 1 + 2 * 3);
        QVERIFY(lines[0].startsWith("time,voltage_an_v,"));
        QVERIFY(!lines[4].startsWith("time"));

        const CliResult json = RunCli({"watch", "--port", "sim", "--count", "2", "--format", "json"});
        const QList<QByteArray> objects = json.out.trimmed().split('\n');
        QCOMPARE(objects.size(), 2);
        for (const QByteArray& line : objects)
            QVERIFY(QJsonDocument::fromJson(line).isObject());
    }

    // A meter whose identification holds ESC, CR and LF and a C1 control (CSI): shown, never
    // obeyed by the terminal, in every format; JSON still gives the text as the meter sent it.
    void meterTextShownNotObeyed_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("read as a table") << QStringList{"read"};
        QTest::newRow("read as CSV") << QStringList{"read", "--format", "csv"};
        QTest::newRow("read as JSON") << QStringList{"read", "--format", "json"};
        QTest::newRow("scan") << QStringList{"scan", "--from", "15", "--to", "15"};
    }
    void meterTextShownNotObeyed()
    {
        QFETCH(QStringList, arguments);
        const QByteArray identification("QX\x1b[2J\r\nSN\x9b""4217 ", 16);
        sim::SimulatedMeterHost meter;
        for (int i = 0; i < identification.size() / 2; ++i)
            meter.setInput(quint16(sim::Reg::kIdentification + i),
                           quint16(quint8(identification[2 * i]) << 8 | quint8(identification[2 * i + 1])));
        const QString port = meter.listen().path;
        QVERIFY(!port.isEmpty());
        const CliResult run = RunCli(arguments + QStringList{"--port", port});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        const QString out = QString::fromUtf8(run.out);
        for (const QChar c : out)
            QVERIFY2(c == u'\n' || c.category() != QChar::Other_Control, qPrintable(out));
        if (arguments.contains("json"))
            QCOMPARE(QJsonDocument::fromJson(run.out).object().value("identification").toString(),
                     QString::fromLatin1(identification).trimmed());
        else
            QVERIFY2(out.contains(QStringLiteral("QX\\x1b[2J\\x0d\\x0aSN\\x9b4217")), qPrintable(out));
    }

    // Ctrl-C or SIGTERM while a request waits for a meter that never answers: the transaction
    // is abandoned at once, not after its five attempts of 4 s.
    void signalEndsTheWait_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("signal");
        QTest::newRow("read, Ctrl-C") << QStringList{"read"} << SIGINT;
        QTest::newRow("watch, SIGTERM") << QStringList{"watch"} << SIGTERM;
        QTest::newRow("set, Ctrl-C") << QStringList{"set", "ct-ratio", "200"} << SIGINT;
    }
    void signalEndsTheWait()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, signal);
        QTcpServer silentMeter;
        QVERIFY(silentMeter.listen(QHostAddress::LocalHost));
        QProcess tool;
        tool.start(QStringLiteral(QX5820_CLI), arguments + QStringList{"--timeout", "4", "--port",
                   QStringLiteral("tcp://127.0.0.1:%1").arg(silentMeter.serverPort())});
        QVERIFY(silentMeter.waitForNewConnection(10000));
        QTcpSocket* line = silentMeter.nextPendingConnection();
        QVERIFY2(line->waitForReadyRead(10000), "no request came"); // the tool now waits for the reply
        ::kill(pid_t(tool.processId()), signal);
        QVERIFY2(tool.waitForFinished(5000), "still waiting 5 s after the signal");
        QCOMPARE(tool.exitStatus(), QProcess::NormalExit);
        QCOMPARE(tool.exitCode(), 130);
        QCOMPARE(tool.readAllStandardError(), QByteArray("qx5820: interrupted\n"));
    }

private:
    PtyPair m_silent;
    sim::SimulatedMeterHost m_network;
    QString m_networkAddress;
};

QTEST_GUILESS_MAIN(ReadCommandsTest)
#include "ReadCommandsTest.moc"
