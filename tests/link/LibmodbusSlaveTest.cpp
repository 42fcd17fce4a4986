// Our master against a slave built on libmodbus: the two implementations were written apart,
// so agreeing on the wire means the frames, CRC and reply handling are right, not merely
// consistent with our own simulator. The slave is reached on its serial line, or through that
// line put on the network by socat as a device server does.
#include "PtyPair.h"
#include "connection/LineSettings.h"
#include "connection/PortTransport.h"
#include "link/RegisterLink.h"
#include "link/RtuFrames.h"
#include "link/WatchedFlag.h"

#include <QTest>

#include <modbus.h>

#include <atomic>
#include <thread>

namespace {

// A libmodbus RTU slave at address 15 serving holding and input registers 0x1000..0x10FF. It
// answers on a thread of its own, since our master blocks in its waits.
struct LibmodbusSlave {
    explicit LibmodbusSlave(const QString& device)
        : map(modbus_mapping_new_start_address(0, 0, 0, 0, 0x1000, 0x100, 0x1000, 0x100)),
          ctx(modbus_new_rtu(qPrintable(device), 19200, 'N', 8, 1))
    {
        for (int i = 0; i < 0x100; ++i) {
            map->tab_registers[i] = uint16_t(0x4000 + i * 7);
            map->tab_input_registers[i] = uint16_t(0x9000 + i * 3);
        }
        modbus_set_slave(ctx, 15);
        modbus_set_indication_timeout(ctx, 0, 50000);
        if (modbus_connect(ctx) == 0)
            thread = std::thread([this] {
                uint8_t query[MODBUS_RTU_MAX_ADU_LENGTH];
                while (!stopped)
                    if (const int length = modbus_receive(ctx, query); length > 0)
                        modbus_reply(ctx, query, length, map);
            });
    }
    ~LibmodbusSlave()
    {
        stop();
        modbus_close(ctx);
        modbus_free(ctx);
        modbus_mapping_free(map);
    }
    void stop()
    {
        stopped = true;
        if (thread.joinable())
            thread.join();
    }

    modbus_mapping_t* map;
    modbus_t* ctx;
    std::atomic<bool> stopped{false};
    std::thread thread;
};

} // namespace

Q_DECLARE_METATYPE(PtyPair::Second)

class LibmodbusSlaveTest : public QObject {
    Q_OBJECT
private slots:
    void writesAndReadsOfBothFunctions_data()
    {
        QTest::addColumn<PtyPair::Second>("reached");
        QTest::newRow("serial line") << PtyPair::Second::PseudoTerminal;
        QTest::newRow("network") << PtyPair::Second::TcpPort;
    }
    void writesAndReadsOfBothFunctions()
    {
        QFETCH(PtyPair::Second, reached);
        PtyPair pair(reached);
        if (!pair.error().isEmpty())
            QSKIP(qPrintable(pair.error()));
        LibmodbusSlave slave(pair.first());
        QVERIFY(slave.thread.joinable());
        PortTransport port;
        QString error;
        QVERIFY2(port.open(pair.second(), *LineSettings::Parse(QStringLiteral("19200,n,8,1")), &error), qPrintable(error));
        WatchedFlag onLine;
        onLine.set(true);
        RegisterLink link(port, onLine);
        link.BuildCrcTables();
        link.ModbusAddress = 15;
        QCOMPARE(link.WriteRegisters(link.ModbusAddress, 0x1023, 3, QByteArray::fromHex("001A000B000F")).kind,
                 TransactionResult::Good);
        QCOMPARE(link.WriteSingleRegister(link.ModbusAddress, 0x1001, 1).kind, TransactionResult::Good);
        link.ResetRxData();
        QCOMPARE(link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, 100).kind, TransactionResult::Good);
        QCOMPARE(link.ReadRegisters(link.ModbusAddress, Rtu::kReadInput, 0x1080, 50).kind, TransactionResult::Good);
        slave.stop();
        QByteArray image; // holding 0x1000..0x1063, then input 0x1080..0x10B1
        for (int i = 0; i < 150; ++i) {
            const uint16_t word = i < 100 ? slave.map->tab_registers[i] : slave.map->tab_input_registers[0x80 + i - 100];
            image.append(char(word >> 8)).append(char(word & 0xFF));
        }
        QCOMPARE(link.RxData, image);
        // The writes landed where they were meant to.
        QCOMPARE(image.mid(2 * 0x01, 2), QByteArray::fromHex("0001"));
        QCOMPARE(image.mid(2 * 0x23, 6), QByteArray::fromHex("001A000B000F"));
    }
};

QTEST_GUILESS_MAIN(LibmodbusSlaveTest)
#include "LibmodbusSlaveTest.moc"
