// The simulated meter as a Modbus RTU slave on its pseudo-terminal, seen from the line: its
// answers, its silences, its pacing, and the faults injected into its replies.

#include "MeterLine.h"

using sim::Fault;

namespace {

const QByteArray kWrite = WithCrc(Body(15, 6, {0x1050, 9})); // its reply echoes it

QByteArray withBadCrc(const QByteArray& frame)
{
    return frame.chopped(1) + char(~frame.back());
}

} // namespace

class MeterWireTest : public QObject, MeterLine {
    Q_OBJECT
private slots:
    void init() { QVERIFY(begin()); }

    void readsServeTheRegisterMap()
    {
        const QByteArray holding = request(Body(15, 3, {0x1000, 100}), 205);
        QCOMPARE(holding.size(), 205);
        QCOMPARE(WithCrc(holding.chopped(2)), holding);
        QCOMPARE(holding.left(13), QByteArray::fromHex("0f03c8 000f 0002 0001 0000 0005")); // address 15, 19200 8N1, 4-wire
        QCOMPARE(holding.mid(3 + 2 * 0x34, 8), QByteArray::fromHex("0008 000f 0001 0002")); // group 1: 8 channels, 15 min
        QCOMPARE(request(Body(15, 4, {0x100C, 8}), 21).mid(3, 16), QByteArray("QX5820  SN004217"));
    }

    void multipleWritesEchoStartAndCount()
    {
        QCOMPARE(request(Body(15, 16, {0x1034, 2}) + QByteArray::fromHex("04 000c 003c"), 8), WithCrc(Body(15, 16, {0x1034, 2})));
        QCOMPARE(request(Body(15, 3, {0x1034, 2}), 9), WithCrc(QByteArray::fromHex("0f0304 000c 003c")));
    }

    void refusedRequestsGetExceptions_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("code");
        QTest::newRow("read coils") << Body(15, 1, {0x1000, 1}) << 1;
        QTest::newRow("holding below the map") << Body(15, 3, {0x0FFF, 2}) << 2;
        QTest::newRow("input past the info block") << Body(15, 4, {0x1012, 5}) << 2;
        QTest::newRow("record area written") << Body(15, 6, {0x2000, 1}) << 2;
        QTest::newRow("no registers") << Body(15, 3, {0x1000, 0}) << 3;
        QTest::newRow("126 registers") << Body(15, 4, {0x2000, 126}) << 3;
        QTest::newRow("124 registers written") << Body(15, 16, {0x1052, 124}) + char(248) + QByteArray(248, 1) << 3;
        QTest::newRow("baud code 3") << Body(15, 6, {0x1001, 3}) << 3;
    }
    void refusedRequestsGetExceptions()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, code);
        QCOMPARE(request(body, 5), WithCrc(body.left(1) + char(body.at(1) | 0x80) + char(code)));
        QCOMPARE(meter->holding(0x1001), quint16(2));
        QCOMPARE(meter->holding(0x1052), quint16(101)); // display item 1
    }

    void silentWhenNotAddressedOrGarbled()
    {
        const QByteArray read = WithCrc(Body(15, 3, {0x1000, 2}));
        QVERIFY(silentAfter(withBadCrc(read)));
        QVERIFY(silentAfter(WithCrc(Body(16, 3, {0x1000, 2}))));
        QVERIFY(silentAfter(WithCrc(Body(0, 6, {0x1050, 9}))));
        QCOMPARE(meter->holding(0x1050), quint16(9)); // a broadcast write is obeyed
        QCOMPARE(send(read, 9).size(), 9); // in step again after the silence
        QCOMPARE(meter->requestLog().size(), 3); // the good frames, whoever they were for
    }

    void anAddressChangeFollowsTheReply()
    {
        const QByteArray toSeven = WithCrc(Body(15, 6, {0x1000, 7}));
        QCOMPARE(send(toSeven, 8), toSeven);
        QVERIFY(silentAfter(WithCrc(Body(15, 3, {0x1000, 1}))));
        QCOMPARE(request(Body(7, 3, {0x1000, 1}), 7), WithCrc(QByteArray::fromHex("070302 0007")));
    }

    // A write of the baud or stop-bit code is answered on the line it came on; from then on
    // the meter understands only requests on the line the code names.
    void lineCodeChangesFollowTheReply_data()
    {
        QTest::addColumn<quint16>("reg");
        QTest::addColumn<quint16>("code");
        QTest::addColumn<int>("baud");
        QTest::addColumn<QSerialPort::StopBits>("stopBits");
        QTest::addColumn<QByteArray>("settings"); // baud and stop-bit codes, read back
        QTest::newRow("baud code 1: 9600") << quint16(0x1001) << quint16(1) << 9600 << QSerialPort::OneStop << QByteArray::fromHex("0001 0001");
        QTest::newRow("stop-bit code 2") << quint16(0x1002) << quint16(2) << 19200 << QSerialPort::TwoStop << QByteArray::fromHex("0002 0002");
    }
    void lineCodeChangesFollowTheReply()
    {
        QFETCH(quint16, reg);
        QFETCH(quint16, code);
        QFETCH(int, baud);
        QFETCH(QSerialPort::StopBits, stopBits);
        QFETCH(QByteArray, settings);
        const QByteArray head = Body(15, 16, {reg, 1});
        QCOMPARE(request(head + char(2) + char(code >> 8) + char(code & 0xFF), 8), WithCrc(head));
        const QByteArray read = Body(15, 3, {0x1001, 2});
        QVERIFY(silentAfter(WithCrc(read)));
        port.setBaudRate(baud);
        port.setStopBits(stopBits);
        QCOMPARE(request(read, 9), WithCrc(QByteArray::fromHex("0f0304") + settings));
        QCOMPARE(meter->requestLog().size(), 2); // the read on the old line was not understood
    }

    void repliesTakeTheirWireTime_data()
    {
        QTest::addColumn<int>("baud");
        QTest::addColumn<QSerialPort::StopBits>("stopBits");
        QTest::newRow("19200 8N1") << 19200 << QSerialPort::OneStop;
        QTest::newRow("19200 8N2") << 19200 << QSerialPort::TwoStop;
        QTest::newRow("9600 8N1") << 9600 << QSerialPort::OneStop;
    }
    void repliesTakeTheirWireTime()
    {
        QFETCH(int, baud);
        QFETCH(QSerialPort::StopBits, stopBits);
        QVERIFY(begin(stopBits));
        meter->setHolding(0x1001, baud == 9600 ? 1 : 2);
        meter->setHolding(0x1002, stopBits == QSerialPort::TwoStop ? 2 : 1);
        port.setBaudRate(baud);
        QCOMPARE(request(Body(15, 3, {0x1000, 100}), 205).size(), 205);
        const int bits = stopBits == QSerialPort::TwoStop ? 11 : 10;
        QCOMPARE_GE(lastMs, (8 + 205) * bits * 1000 / baud + 3); // request, turnaround, reply
        QCOMPARE_GE(lastMs - firstMs, 205 * bits * 1000 / baud - 10); // paced, not one burst
    }

    void faultShapesTheNextReply_data()
    {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QByteArray>("reply"); // what arrives, after `noise` bytes of anything
        QTest::addColumn<int>("noise");
        QTest::addColumn<int>("earliestMs");   // the first byte, ms after the request
        QTest::addColumn<int>("spreadMs");     // first to last byte, at the least
        QTest::newRow("no reply") << Fault::noReply() << QByteArray() << 0 << -1 << 0;
        QTest::newRow("exception") << Fault::exception(4) << WithCrc(QByteArray::fromHex("0f8604")) << 0 << 0 << 0;
        QTest::newRow("bad CRC") << Fault::badCrc() << withBadCrc(kWrite) << 0 << 0 << 0;
        QTest::newRow("wrong address") << Fault::wrongAddress() << WithCrc('\x10' + kWrite.mid(1, 5)) << 0 << 0 << 0;
        QTest::newRow("noise") << Fault::noise(5) << kWrite << 5 << 0 << 0;
        QTest::newRow("split") << Fault::split(3, 100) << kWrite << 0 << 0 << 150;
        QTest::newRow("late") << Fault::late(300) << kWrite << 0 << 300 << 0;
    }
    void faultShapesTheNextReply()
    {
        QFETCH(Fault, fault);
        QFETCH(QByteArray, reply);
        QFETCH(int, noise);
        QFETCH(int, earliestMs);
        QFETCH(int, spreadMs);
        meter->injectFault(fault);
        const QByteArray spoiled = send(kWrite, std::max<qsizetype>(1, noise + reply.size()), 600);
        QCOMPARE(spoiled.size(), noise + reply.size());
        QCOMPARE(spoiled.mid(noise), reply);
        QCOMPARE_GE(firstMs, earliestMs);
        QCOMPARE_GE(lastMs - firstMs, spreadMs);
        // Only a refusing meter leaves the write undone.
        QCOMPARE(meter->holding(0x1050), quint16(fault.kind == Fault::Kind::Exception ? 5 : 9));
        QCOMPARE(send(kWrite, 8), kWrite);
    }

    // A slow meter takes the requests that come while it is late and answers them all, in order.
    void aSlowMeterAnswersEveryRequestInOrder()
    {
        meter->setSlowReplies(1, 300);
        const QByteArray first = WithCrc(Body(15, 3, {0x1000, 1}));
        const QByteArray second = WithCrc(Body(15, 3, {0x1002, 1}));
        QCOMPARE(send(first + second, 14), WithCrc(QByteArray::fromHex("0f0302 000f")) + WithCrc(QByteArray::fromHex("0f0302 0001")));
        QCOMPARE_GE(firstMs, 300);
    }

    // Noise with no quiet: a byte every millisecond; stopped, the meter is heard clearly again.
    void noiseKeepsTheLineBusy()
    {
        meter->setNoise(50, 0);
        QCOMPARE(send(QByteArray(), 200, 1000).size(), 200);
        meter->setNoise(0, 0);
        QCOMPARE(send(kWrite, 8), kWrite);
    }
};

QTEST_GUILESS_MAIN(MeterWireTest)
#include "MeterWireTest.moc"
