// Three simulated meters on one line, at addresses 1, 2 and 3: each answers alone at its own
// address, and an address write moves only the meter it was for.

#include "MeterLine.h"

#include <vector>

namespace {

QByteArray identification(quint32 serial)
{
    return QByteArrayLiteral("QX5820  SN") + QByteArray::number(serial).rightJustified(6, '0');
}

} // namespace

class MeterBusTest : public QObject, MeterLine {
    Q_OBJECT
private slots:
    void init()
    {
        std::vector<sim::MeterModel> bus;
        for (quint8 address = 1; address <= 3; ++address) {
            sim::MeterModel& model = bus.emplace_back(FrozenMeter(42 + address));
            model.startWithSerialNumber(4216 + address);
            model.setHolding(sim::Reg::kSlaveAddress, address);
        }
        QVERIFY(begin(std::make_unique<sim::SimulatedMeterHost>(std::move(bus))));
    }

    // One reply, or none, arrives for each request: a second one would show as extra bytes.
    void eachMeterAnswersAlone_data()
    {
        QTest::addColumn<quint8>("address");
        QTest::addColumn<quint8>("silenced"); // 0: none
        QTest::addColumn<QByteArray>("text"); // the identification answered; empty: no reply
        QTest::newRow("meter 1") << quint8(1) << quint8(0) << identification(4217);
        QTest::newRow("meter 3") << quint8(3) << quint8(0) << identification(4219);
        QTest::newRow("nobody at 4") << quint8(4) << quint8(0) << QByteArray();
        QTest::newRow("meter 2 silenced") << quint8(2) << quint8(2) << QByteArray();
        QTest::newRow("meter 3 beside silent 2") << quint8(3) << quint8(2) << identification(4219);
    }
    void eachMeterAnswersAlone()
    {
        QFETCH(quint8, address);
        QFETCH(quint8, silenced);
        QFETCH(QByteArray, text);
        if (silenced)
            QVERIFY(meter->setSilent(silenced));
        const QByteArray reply = text.isEmpty() ? QByteArray() : WithCrc(Body(address, 4, {}) + char(16) + text);
        QCOMPARE(send(WithCrc(Body(address, 4, {0x100C, 8})), reply.size() + 1, 300), reply);
    }

    void anAddressWriteMovesOneMeter_data()
    {
        QTest::addColumn<QByteArray>("body"); // a write to meter 2
        QTest::addColumn<quint8>("after");    // where meter 2 answers then
        QTest::newRow("6 to a free address") << Body(2, 6, {0x1000, 7}) << quint8(7);
        QTest::newRow("6 to meter 3's address") << Body(2, 6, {0x1000, 3}) << quint8(2);
        QTest::newRow("16 to a free address") << Body(2, 16, {0x1000, 2}) + QByteArray::fromHex("04 0009 0002") << quint8(9);
        QTest::newRow("16 to meter 1's address") << Body(2, 16, {0x1000, 2}) + QByteArray::fromHex("04 0001 0002") << quint8(2);
    }
    void anAddressWriteMovesOneMeter()
    {
        QFETCH(QByteArray, body);
        QFETCH(quint8, after);
        const bool moved = after != 2;
        const QByteArray refused = body.left(1) + char(body.at(1) | 0x80) + char(3);
        QCOMPARE(request(body, moved ? 8 : 5), WithCrc(moved ? body.left(6) : refused));
        QCOMPARE(request(Body(after, 4, {0x100C, 8}), 21).mid(3, 16), identification(4218));
        QCOMPARE(meter->meter(2) == nullptr, moved);
        QVERIFY(meter->meter(1) && meter->meter(3)); // the others stay
    }
};

QTEST_GUILESS_MAIN(MeterBusTest)
#include "MeterBusTest.moc"
