// The CRC-16 and the IEEE-754 single layout against values published outside this code. The
// frames themselves are checked on the wire against a libmodbus slave (LibmodbusSlaveTest).
#include "link/Crc16.h"
#include "link/RtuFrames.h"

#include <QTest>

class FramesTest : public QObject {
    Q_OBJECT
private slots:
    void publishedCrcVectors_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QByteArray>("crcBytes");
        QTest::newRow("read 10 holding") << QByteArray::fromHex("01030000000A") << QByteArray::fromHex("C5CD");
        QTest::newRow("protocol guide example") << QByteArray::fromHex("1103006B0003") << QByteArray::fromHex("7687");
        QTest::newRow("empty message") << QByteArray() << QByteArray::fromHex("FFFF");
    }
    void publishedCrcVectors()
    {
        QFETCH(QByteArray, message);
        QFETCH(QByteArray, crcBytes);
        QCOMPARE(ModbusCrcBytes(message, message.size()), crcBytes);
    }

    void singleToBytes_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("one") << 1.0 << QByteArray::fromHex("3F800000");
        QTest::newRow("minus two") << -2.0 << QByteArray::fromHex("C0000000");
        QTest::newRow("PT ratio 11000/110") << 11000.0 / 110.0 << QByteArray::fromHex("42C80000");
        QTest::newRow("tenth is truncated, not rounded") << 0.1 << QByteArray::fromHex("3DCCCCCC");
        QTest::newRow("zero") << 0.0 << QByteArray::fromHex("00000000");
        QTest::newRow("beyond a single") << 1e39 << QByteArray::fromHex("00000000");
        QTest::newRow("below the normal range") << 1e-39 << QByteArray::fromHex("00000000");
    }
    void singleToBytes()
    {
        QFETCH(double, value);
        QFETCH(QByteArray, bytes);
        QCOMPARE(Rtu::SingleToBytes(value), bytes);
    }
};

QTEST_GUILESS_MAIN(FramesTest)
#include "FramesTest.moc"
