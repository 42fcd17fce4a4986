// set against the simulated meter: writes confirmed from the readings (the tool following a new
// address or baud rate), the window's checks and questions, the meter's refusal, bad arguments.
#include "CliRun.h"
#include "sim/MeterRegisters.h"
#include "sim/SimulatedMeterHost.h"

#include <QRegularExpression>
#include <QTest>

class SetCommandTest : public QObject {
    Q_OBJECT
private slots:
    void exitStatusAndMessages_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out"); // a pattern stdout must hold, or empty
        QTest::addColumn<QString>("err"); // a text stderr must hold, or empty
        const auto set = [](QStringList more) { return QStringList{"set", "--port", "sim"} + more; };
        // The simulated meter starts at address 15, 19200 baud, CT ratio 5, PT ratio 1, 3P4W,
        // scroll time 5 s; group 1 holds 1440 intervals, group 2 960 on 4 channels.
        QTest::newRow("ct ratio") << set({"ct-ratio", "200"}) << 0 << "^CT ratio: 5 → 200: confirmed$" << "";
        QTest::newRow("pt ratio") << set({"pt-ratio", "120.5"}) << 0 << "^PT ratio 1: 1\\.0 → 120\\.5: confirmed$" << "";
        QTest::newRow("pt ratio 2") << set({"pt-ratio-2", "12000", "120"}) << 0
                                    << "^PT ratio 2 \\(pri\\. ÷ sec\\.\\): 1\\.0000 → 100\\.0000: confirmed\nPT ratio 2 × PT ratio 1: 100\\.0000 V$" << "";
        QTest::newRow("wiring, any case") << set({"wiring", "3p3w 2ct"}) << 0 << "^Wiring: 3P4W → 3P3W 2CT: confirmed$" << "";
        QTest::newRow("scroll time") << set({"scroll-time", "15"}) << 0 << "^Scroll time: 5 s → 15 s: confirmed$" << "";
        QTest::newRow("display item") << set({"display-item", "3", "116"}) << 0
                                      << "^Display item: position 3: 103.* → position 3: 116.*: confirmed$" << "";
        QTest::newRow("clock") << set({"clock"}) << 0 << "^Clock: .+ → \\d{4}/\\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d: confirmed$" << "";
        QTest::newRow("baud rate, followed") << set({"baud", "9600"}) << 0
                                             << "^Baud rate: 19200 → 9600: confirmed\nThe meter now answers at --baud 9600:" << "";
        QTest::newRow("lp group") << set({"lp-group", "2", "--channels", "6", "--interval", "30", "--codes", "1,2", "--yes"}) << 0
                                  << "^LP group 2: 4 channels every 15 min, codes 6,12,13,14,1,2,3,4 → 6 channels every 30 min, "
                                     "codes 1,2,13,14,1,2,3,4: confirmed\nIts records were deleted: 960 intervals before, 0 now\\.$"
                                  << "";
        QTest::newRow("lp clear") << set({"lp-clear", "1", "--yes"}) << 0
                                  << "^LP group 1 records: 1440 intervals → 0 intervals: confirmed$" << "";

        QTest::newRow("ct ratio check") << set({"ct-ratio", "12.5"}) << 5 << "" << "ct-ratio \"12.5\" refused: CT Ratio Range : 1~2400！";
        QTest::newRow("pt ratio check") << set({"pt-ratio", "6250.1"}) << 5 << "" << "PT_Ratio Range : 0.1~6250！";
        QTest::newRow("address check") << set({"address", "0"}) << 5 << "" << "Address Range : 1~250！";
        QTest::newRow("pt ratio beyond the register") << set({"pt-ratio", "5000"}) << 5 << ""
            << "→ 5000: not sent: PT ratio 1 above 3276.7 does not fit the meter's register";
        QTest::newRow("address the meter refuses") << set({"address", "250", "--timeout", "0.3"}) << 5 << ""
            << "Modbus address: 15 → 250: refused: exception 3 (Illegal Data Value)";
        QTest::newRow("clear kWh unconfirmed") << set({"clear-kwh"}) << 5 << ""
                                               << "Clr kWh: Clear all total kWh？ Nothing was sent: add --yes to confirm.";
        QTest::newRow("records deleted unconfirmed") << set({"lp-group", "1", "--channels", "6"}) << 5 << ""
                                                     << "Load Profile: Warning : You will delete Load Profile Data";

        QTest::newRow("unknown setting") << set({"speed", "5"}) << 2 << "" << "unknown setting \"speed\": one of clock, address, baud,";
        QTest::newRow("list value") << set({"wiring", "3P5W"}) << 2 << ""
            << "wiring MODE must be one of Auto, 1P2W, 1P3W, 3P3W 2CT, 3P3W 3CT, 3P4W, not \"3P5W\"";
        QTest::newRow("display position") << set({"display-item", "51", "116"}) << 2 << ""
                                          << "display-item POSITION must be one of 1 to 50, not \"51\"";
        QTest::newRow("channel code") << set({"lp-group", "1", "--codes", "1,15"}) << 2 << ""
                                      << "lp-group 1 channel 2 code must be one of 1 to 14, not \"15\"";
        QTest::newRow("missing value") << set({"display-item", "3"}) << 2 << "" << "usage: qx5820 set display-item POSITION ITEM";
        QTest::newRow("empty value") << set({"ct-ratio", ""}) << 5 << "" << "nothing was sent: the value is empty";
        QTest::newRow("help") << QStringList{"set", "--help"} << 0
                              << "\n  scroll-time SECONDS +the display's scroll time: 3 to 15\n(.|\n)*  lp-clear GROUP " << "";
    }
    void exitStatusAndMessages()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const CliResult run = RunCli(arguments);
        QVERIFY2(run.exitCode == status, run.err.constData());
        const QRegularExpression pattern(out, QRegularExpression::MultilineOption);
        QVERIFY2(pattern.match(QString::fromUtf8(run.out)).hasMatch(), run.out.constData());
        QVERIFY2(QString::fromUtf8(run.err).contains(err), run.err.constData());
        QCOMPARE(run.err.isEmpty(), err.isEmpty());
        QCOMPARE(run.out.isEmpty(), out.isEmpty());
    }

    // Under a locale whose point groups thousands, "2.000" reads 2000 there and 2 with a decimal
    // point: neither is written.
    void numberWithTwoReadingsRefused()
    {
        QProcessEnvironment german = QProcessEnvironment::systemEnvironment();
        german.insert("LC_ALL", "de_DE.UTF-8");
        german.insert("LANG", "de_DE.UTF-8");
        const CliResult run = RunCli({"set", "ct-ratio", "2.000", "--port", "sim"}, german);
        QVERIFY2(run.exitCode == 5, run.err.constData());
        QVERIFY2(run.err.startsWith("qx5820: ct-ratio \"2.000\" refused: "), run.err.constData());
        QVERIFY2(run.err.contains("2000") && run.err.contains(" 2 "), run.err.constData());
        QCOMPARE(run.out, QByteArray());
    }

    // One meter behind a TCP port across commands. An address typed "020" is 20: written, followed,
    // and named as --address takes it. The highest address a meter may be given is one --address
    // reaches and scan covers.
    void meterReachedAtItsNewAddress()
    {
        sim::SimulatedMeterHost meter;
        const QString port = meter.listen().path;
        QVERIFY(!port.isEmpty());
        const CliResult moved = RunCli({"set", "address", "020", "--port", port});
        QVERIFY2(moved.exitCode == 0, moved.err.constData());
        QCOMPARE(QString::fromUtf8(moved.out),
                 "Modbus address: 15 → 20: confirmed\nThe meter now answers at --address 20: use it from now on.\n");
        QCOMPARE(meter.holding(sim::Reg::kSlaveAddress), 20);
        QCOMPARE(RunCli({"read", "--port", port, "--address", "20", "--format", "csv"}).exitCode, 0);

        meter.setHolding(sim::Reg::kSlaveAddress, 250);
        const CliResult read = RunCli({"read", "--port", port, "--address", "250", "--format", "csv"});
        QVERIFY2(read.exitCode == 0, read.err.constData());
        const CliResult scan = RunCli({"scan", "--port", port, "--from", "249"});
        QVERIFY2(scan.exitCode == 0, scan.err.constData());
        QVERIFY2(scan.out.startsWith("address 250 at tcp://"), scan.out.constData());
    }
};

QTEST_GUILESS_MAIN(SetCommandTest)
#include "SetCommandTest.moc"
