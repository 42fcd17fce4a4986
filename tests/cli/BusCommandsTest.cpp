// Several meters on one line: read and watch go through them in turn, and a silent one is
// named and skipped without taking the others down.
#include "CliRun.h"
#include "sim/BusMeters.h"
#include "sim/SimulatedMeterHost.h"

#include <QRegularExpression>
#include <QTest>

#include <vector>

namespace {

// The meter each JSON line, CSV row or table block of the output names, in order.
QList<int> AddressesIn(const QByteArray& out)
{
    static const QRegularExpression named(QStringLiteral(R"(^(?:\{"address":(\d+),|(\d+),|address\s+(\d+)$))"),
                                          QRegularExpression::MultilineOption);
    QList<int> addresses;
    for (const QRegularExpressionMatch& match : named.globalMatch(QString::fromUtf8(out))) {
        for (int group = 1; group <= 3; ++group) {
            if (match.hasCaptured(group))
                addresses.append(match.captured(group).toInt());
        }
    }
    return addresses;
}

} // namespace

class BusCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void meterByMeter_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QList<int>>("addresses"); // of the output's lines or blocks, in order
        QTest::addColumn<QString>("err");
        QTest::newRow("read json, 2 silent") << QStringList{"read", "--address", "1-3", "--format", "json"} << 4
                                             << QList<int>{1, 3} << "qx5820: no answer from address 2\n";
        QTest::newRow("watch, 2 silent") << QStringList{"watch", "--address", "1-3", "--count", "2"} << 4
                                         << QList<int>{1, 3, 1, 3} << "qx5820: no answer from address 2\n";
        QTest::newRow("read table") << QStringList{"read", "--address", "3,1"} << 0 << QList<int>{3, 1} << "";
    }
    void meterByMeter()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QList<int>, addresses);
        QFETCH(QString, err);
        sim::SimulatedMeterHost line(sim::BusMeters(3));
        QVERIFY(line.setSilent(2));
        const QString port = line.listen().path;
        QVERIFY(!port.isEmpty());

        const CliResult result = RunCli(arguments + QStringList{"--port", port, "--timeout", "0.1"});
        QVERIFY2(result.exitCode == status, result.err.constData());
        QCOMPARE(AddressesIn(result.out), addresses);
        QVERIFY2(result.err.endsWith(err.toUtf8()), result.err.constData());
        QCOMPARE(result.err.contains("address 2 did not answer"), status != 0);
    }
};

QTEST_GUILESS_MAIN(BusCommandsTest)
#include "BusCommandsTest.moc"
