// The scan for meters: it finds each meter of a bus at its address and rate, and a Stop ends it
// at the probe under way.
#include "MeterOnLine.h"
#include "connection/MeterScan.h"

#include <QTest>

#include <vector>

class MeterScanTest : public QObject {
    Q_OBJECT
private slots:
    void findsTheMetersOfABusUntilStopped_data()
    {
        QTest::addColumn<int>("stopAt"); // the address being tried at 19200 baud when Stop comes; 0: never
        QTest::addColumn<QList<int>>("found");
        QTest::newRow("whole range") << 0 << QList<int>{3, 7};
        QTest::newRow("stopped at 5") << 5 << QList<int>{3};
    }
    void findsTheMetersOfABusUntilStopped()
    {
        QFETCH(int, stopAt);
        QFETCH(QList<int>, found);
        std::vector<sim::MeterModel> bus;
        for (quint16 address : {3, 7}) {
            sim::MeterModel& model = bus.emplace_back(7, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC),
                                                      sim::SimClock::Mode::Frozen);
            model.setHolding(sim::Reg::kSlaveAddress, address);
        }
        sim::SimulatedMeterHost host(std::move(bus));
        const QString device = host.start().path;
        QVERIFY(!device.isEmpty());

        MeterScan scan;
        QObject::connect(&scan, &MeterScan::trying, [&scan, stopAt](int address, const QString& rate) {
            if (address == stopAt && rate == QLatin1String("19200"))
                scan.Stop();
        });
        QString error;
        QVERIFY2(scan.Run({device, {QStringLiteral("9600"), QStringLiteral("19200")}, QStringLiteral("1"), 1, 9, true}, &error),
                 qPrintable(error));
        QCOMPARE(scan.Stopped(), stopAt != 0);
        QList<int> addresses;
        for (const MeterScan::Found& meter : scan.Results()) {
            addresses << meter.address;
            QCOMPARE(meter.baudRate, QStringLiteral("19200")); // the meter's rate: at 9600 its replies are garbled
            QVERIFY(meter.identification.startsWith(QStringLiteral("QX5820")));
        }
        QCOMPARE(addresses, found);
    }
};

QTEST_GUILESS_MAIN(MeterScanTest)
#include "MeterScanTest.moc"
