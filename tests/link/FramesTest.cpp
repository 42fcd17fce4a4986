// CRC-16 and frame layouts, checked against published vectors and against the frames that
// libmodbus, an independent implementation, puts on a line.
#include "PtyPair.h"
#include "link/Crc16.h"
#include "link/RtuFrames.h"

#include <QSerialPort>
#include <QTest>

#include <modbus.h>


namespace {

QByteArray hex(const char* text) { return QByteArray::fromHex(text); }

QByteArray sealed(QByteArray frame)
{
    Crc16 crc;
    crc.BuildCrcTables();
    Rtu::Seal(crc, frame);
    return frame;
}

// The bytes libmodbus sends for `request`, captured on the far end of a pty pair.
QByteArray libmodbusFrame(const std::function<void(modbus_t*)>& request)
{
    PtyPair pair;
    if (!pair.error().isEmpty())
        return {};
    QSerialPort far;
    far.setPortName(pair.second());
    if (!far.open(QIODevice::ReadOnly))
        return {};
    modbus_t* ctx = modbus_new_rtu(pair.first().toLocal8Bit().constData(), 19200, 'N', 8, 1);
    modbus_set_slave(ctx, 1);
    modbus_set_response_timeout(ctx, 0, 50000);
    if (modbus_connect(ctx) != 0) {
        modbus_free(ctx);
        return {};
    }
    request(ctx);
    modbus_close(ctx);
    modbus_free(ctx);
    QByteArray bytes;
    while (far.waitForReadyRead(200))
        bytes += far.readAll();
    return bytes;
}

} // namespace

class FramesTest : public QObject {
    Q_OBJECT
private slots:

    void publishedVectors_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QByteArray>("crcBytes");
        QTest::newRow("read 10 holding") << hex("01030000000A") << hex("C5CD");
        QTest::newRow("protocol guide example") << hex("1103006B0003") << hex("7687");
        QTest::newRow("empty message") << QByteArray() << hex("FFFF");
    }
    void publishedVectors()
    {
        QFETCH(QByteArray, message);
        QFETCH(QByteArray, crcBytes);
        QCOMPARE(ModbusCrcBytes(message, message.size()), crcBytes);
    }

    void readRequestMatchesLibmodbus()
    {
        const QByteArray theirs = libmodbusFrame([](modbus_t* ctx) {
            uint16_t regs[100];
            modbus_read_registers(ctx, 0x1000, 100, regs);
        });
        if (theirs.isEmpty())
            QSKIP("no pty pair (socat) or libmodbus could not open it");
        QCOMPARE(sealed(Rtu::ReadRequest(1, Rtu::kReadHolding, 0x1000, 100)), theirs);
    }

    void writeRequestMatchesLibmodbus()
    {
        const QByteArray theirs = libmodbusFrame([](modbus_t* ctx) {
            const uint16_t regs[3] = {0x1234, 0x00FF, 0xA55A};
            modbus_write_registers(ctx, 0x4492, 3, regs);
        });
        if (theirs.isEmpty())
            QSKIP("no pty pair (socat) or libmodbus could not open it");
        QCOMPARE(sealed(Rtu::WriteMultipleRequest(1, 0x4492, 3, hex("123400FFA55A"))), theirs);
    }

    void layouts()
    {
        // Start registers above 255 are split high byte first; 0xFFFF passes unchanged.
        QCOMPARE(Rtu::ReadRequest(15, Rtu::kReadInput, 0xFFFF, 2).left(6), hex("0F04FFFF0002"));
        QCOMPARE(Rtu::WriteSingleRequest(15, 0x1001, 2).left(6), hex("0F0610010002"));
        const QByteArray write = Rtu::WriteMultipleRequest(15, 0x1023, 2, hex("001A000B"));
        QCOMPARE(write.size(), 9 + 4);
        QCOMPARE(write.left(11), hex("0F101023000204001A000B"));
    }

    void crcCheckIsByteByByte()
    {
        QByteArray reply = sealed(hex("0F03020005") + QByteArray(2, '\0'));
        Crc16 crc;
        crc.BuildCrcTables();
        QVERIFY(Rtu::CrcMatches(crc, reply, reply.size()));
        std::swap(reply[reply.size() - 1], reply[reply.size() - 2]);
        QVERIFY(!Rtu::CrcMatches(crc, reply, reply.size()));
        QVERIFY(!Rtu::CrcMatches(crc, reply.left(3), 7)); // short replies never match
    }

    void singleToBytes_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("one") << 1.0 << hex("3F800000");
        QTest::newRow("minus two") << -2.0 << hex("C0000000");
        QTest::newRow("PT ratio 11000/110") << 11000.0 / 110.0 << hex("42C80000");
        QTest::newRow("tenth is truncated, not rounded") << 0.1 << hex("3DCCCCCC");
        QTest::newRow("zero") << 0.0 << hex("00000000");
        QTest::newRow("beyond a single") << 1e39 << hex("00000000");
        QTest::newRow("below the normal range") << 1e-39 << hex("00000000");
    }
    void singleToBytes()
    {
        QFETCH(double, value);
        QFETCH(QByteArray, bytes);
        QCOMPARE(Rtu::SingleToBytes(value), bytes);
    }

    void frameEcho() { QCOMPARE(Rtu::FrameEcho(hex("0F0310")), QStringLiteral("15 3 16 \r\n")); }
};

QTEST_GUILESS_MAIN(FramesTest)
#include "FramesTest.moc"
