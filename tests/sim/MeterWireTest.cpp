// The simulated meter as a Modbus RTU slave on its pseudo-terminal, seen from the line.

#include "SimulatedMeterFixture.h"

using Line = MeterLineClient;

class MeterWireTest : public QObject, SimulatedMeterFixture {
    Q_OBJECT
private slots:
    void init() { QVERIFY(begin()); }
    void cleanup() { end(); }

    void readsServeTheRegisterMap()
    {
        const QByteArray holding = line->request(Line::read(15, 3, 0x1000, 100), 205).bytes;
        QCOMPARE(holding.size(), 205);
        QVERIFY(Line::crcGood(holding));
        QCOMPARE(holding.left(3), QByteArray::fromHex("0f03c8"));
        const QList<quint16> words = Line::words(holding);
        QCOMPARE(words.mid(0, 5), (QList<quint16>{15, 2, 1, 0, 5}));
        QCOMPARE(words.mid(0x34, 4), (QList<quint16>{8, 15, 1, 2}));

        QCOMPARE(line->request(Line::read(15, 4, 0x100C, 8), 21).bytes.mid(3, 16), QByteArray("QX5820  SN004217"));
        const QByteArray hostile("\x00\xff\r\nQX;\"\x7f,", 10);
        meter->setIdentification(hostile);
        QCOMPARE(line->request(Line::read(15, 4, 0x100C, 8), 21).bytes.mid(3, 16), hostile + QByteArray(6, ' '));
    }

    void writesEchoAndTakeEffect()
    {
        const QByteArray single = Line::withCrc(Line::writeSingle(15, 0x1050, 7));
        QCOMPARE(line->send(single, 8).bytes, single);
        QCOMPARE(meter->holding(0x1050), quint16(7));

        const QByteArray multiple = Line::writeMultiple(15, 0x1034, {12, 60});
        QCOMPARE(line->request(multiple, 8).bytes, Line::withCrc(multiple.left(6)));
        QCOMPARE(meter->holding(0x1034), quint16(12));
        QCOMPARE(meter->holding(0x1035), quint16(60));
    }

    void refusedRequestsGetExceptions_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("code");
        QTest::newRow("read coils") << Line::read(15, 1, 0x1000, 1) << 1;
        QTest::newRow("holding below the map") << Line::read(15, 3, 0x0FFF, 2) << 2;
        QTest::newRow("input past the info block") << Line::read(15, 4, 0x1012, 5) << 2;
        QTest::newRow("record area written") << Line::writeSingle(15, 0x2000, 1) << 2;
        QTest::newRow("no registers") << Line::read(15, 3, 0x1000, 0) << 3;
        QTest::newRow("126 registers") << Line::read(15, 4, 0x2000, 126) << 3;
        QTest::newRow("124 registers written") << Line::writeMultiple(15, 0x1000, QList<quint16>(124, 1)) << 3;
        QTest::newRow("baud code 3") << Line::writeSingle(15, 0x1001, 3) << 3;
    }
    void refusedRequestsGetExceptions()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, code);
        const QByteArray expected = Line::withCrc(QByteArray{body.left(1) + char(body.at(1) | 0x80) + char(code)});
        QCOMPARE(line->request(body, 5).bytes, expected);
        QCOMPARE(meter->holding(0x1001), quint16(2));
    }

    void silentWhenNotAddressedOrGarbled()
    {
        const QByteArray read = Line::read(15, 3, 0x1000, 2);
        QByteArray badCrc = Line::withCrc(read);
        badCrc[7] = static_cast<char>(~badCrc[7]);
        QVERIFY(line->send(badCrc, 1, kSilenceMs).bytes.isEmpty());
        QVERIFY(silentAfter(Line::read(16, 3, 0x1000, 2)));
        QVERIFY(silentAfter(Line::writeSingle(0, 0x1050, 9)));
        QCOMPARE(meter->holding(0x1050), quint16(9)); // a broadcast write is obeyed
        QVERIFY(line->send(QByteArray::fromHex("ff00ff"), 1, kSilenceMs).bytes.isEmpty());
        QCOMPARE(line->request(read, 9).bytes.size(), 9); // in step again after the silence

        QList<QByteArray> logged;
        for (const sim::LoggedRequest& entry : meter->requestLog())
            logged.append(entry.frame);
        QCOMPARE(logged, (QList<QByteArray>{Line::withCrc(Line::read(16, 3, 0x1000, 2)),
                                            Line::withCrc(Line::writeSingle(0, 0x1050, 9)), Line::withCrc(read)}));
        QCOMPARE(meter->repliesSent(), 1);
    }

    void answersAfterThePortIsReopened()
    {
        line.reset();
        line = std::make_unique<MeterLineClient>(path);
        QVERIFY(line->isOpen());
        QCOMPARE(line->request(Line::read(15, 3, 0x1000, 1), 7).bytes.size(), 7);
    }

    void addressAndBaudChangesFollowTheReply()
    {
        const QByteArray toSeven = Line::withCrc(Line::writeSingle(15, 0x1000, 7));
        QCOMPARE(line->send(toSeven, 8).bytes, toSeven);
        QVERIFY(silentAfter(Line::read(15, 3, 0x1000, 1)));
        const QByteArray to9600 = Line::withCrc(Line::writeSingle(7, 0x1001, 1));
        QCOMPARE(line->send(to9600, 8).bytes, to9600);
        QVERIFY(silentAfter(Line::read(7, 3, 0x1000, 1)));
        line->setBaudRate(9600);
        QCOMPARE(Line::words(line->request(Line::read(7, 3, 0x1000, 2), 9).bytes), (QList<quint16>{7, 1}));
        QCOMPARE(meter->requestLog().size(), 4); // the request at the old speed was not understood
    }

    void repliesTakeTheirWireTime_data()
    {
        QTest::addColumn<int>("meterBaudCode");
        QTest::addColumn<int>("baud");
        QTest::addColumn<QSerialPort::StopBits>("stopBits");
        QTest::addColumn<int>("bitsPerCharacter");
        QTest::newRow("19200 8N1") << 2 << 19200 << QSerialPort::OneStop << 10;
        QTest::newRow("19200 8N2") << 2 << 19200 << QSerialPort::TwoStop << 11;
        QTest::newRow("9600 8N1") << 1 << 9600 << QSerialPort::OneStop << 10;
    }
    void repliesTakeTheirWireTime()
    {
        QFETCH(int, meterBaudCode);
        QFETCH(int, baud);
        QFETCH(QSerialPort::StopBits, stopBits);
        QFETCH(int, bitsPerCharacter);
        end();
        QVERIFY(begin(stopBits));
        meter->setHolding(0x1001, quint16(meterBaudCode));
        line->setBaudRate(baud);
        const Reception reply = line->request(Line::read(15, 3, 0x1000, 100), 205);
        QCOMPARE(reply.bytes.size(), 205);
        const qint64 wireMs = (8 + 205) * bitsPerCharacter * 1000 / baud;
        QCOMPARE_GE(reply.lastMs, wireMs + 3); // request, turnaround, reply
        QCOMPARE_GE(reply.lastMs - reply.firstMs, 205 * bitsPerCharacter * 1000 / baud - 10); // paced, not one burst
    }



};

QTEST_GUILESS_MAIN(MeterWireTest)
#include "MeterWireTest.moc"
