// Our master against a slave built on libmodbus: the two implementations were written apart,
// so agreeing on the wire means the frames, CRC and reply handling are right, not merely
// consistent with our own simulator.
#include "PtyPair.h"
#include "RegisterWords.h"
#include "connection/LineSettings.h"
#include "connection/SerialTransport.h"
#include "link/RegisterLink.h"
#include "link/RtuFrames.h"
#include "link/WatchedFlag.h"

#include <QTest>

#include <modbus.h>

#include <atomic>
#include <thread>

namespace {

constexpr int kSlave = 15;

// A libmodbus RTU slave serving holding and input registers 0x1000..0x10FF on its own thread.
class LibmodbusSlave {
public:
    explicit LibmodbusSlave(const QString& device)
    {
        m_map = modbus_mapping_new_start_address(0, 0, 0, 0, 0x1000, 0x100, 0x1000, 0x100);
        for (int i = 0; i < 0x100; ++i) {
            m_map->tab_registers[i] = uint16_t(0x4000 + i * 7);
            m_map->tab_input_registers[i] = uint16_t(0x9000 + i * 3);
        }
        m_ctx = modbus_new_rtu(device.toLocal8Bit().constData(), 19200, 'N', 8, 1);
        modbus_set_slave(m_ctx, kSlave);
        modbus_set_indication_timeout(m_ctx, 0, 50000);
        m_ok = modbus_connect(m_ctx) == 0;
        if (m_ok)
            m_thread = std::thread([this] { serve(); });
    }
    ~LibmodbusSlave()
    {
        stop();
        modbus_close(m_ctx);
        modbus_free(m_ctx);
        modbus_mapping_free(m_map);
    }
    bool ok() const { return m_ok; }
    void stop()
    {
        m_stop = true;
        if (m_thread.joinable())
            m_thread.join();
    }
    const modbus_mapping_t& map() const { return *m_map; }

private:
    void serve()
    {
        uint8_t query[MODBUS_RTU_MAX_ADU_LENGTH];
        while (!m_stop) {
            const int rc = modbus_receive(m_ctx, query);
            if (rc > 0)
                modbus_reply(m_ctx, query, rc, m_map);
        }
    }

    modbus_t* m_ctx = nullptr;
    modbus_mapping_t* m_map = nullptr;
    std::thread m_thread;
    std::atomic<bool> m_stop{false};
    bool m_ok = false;
};

} // namespace

class LibmodbusSlaveTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_pair = std::make_unique<PtyPair>();
        if (!m_pair->error().isEmpty())
            QSKIP(qPrintable(m_pair->error()));
        m_slave = std::make_unique<LibmodbusSlave>(m_pair->first());
        QVERIFY(m_slave->ok());
        QString error;
        QVERIFY2(m_port.open(m_pair->second(), *LineSettings::Parse(QStringLiteral("19200,n,8,1")), &error),
                 qPrintable(error));
        m_onLine.set(true);
        m_link.BuildCrcTables();
        m_link.ModbusAddress = kSlave;
    }
    void cleanup()
    {
        m_port.close();
        m_slave.reset();
        m_pair.reset();
    }

    void readsHoldingThenInputIntoOneImage()
    {
        m_link.ResetRxData();
        m_link.bCommOK = kTrue;
        m_link.ReadRegisters(m_link.ModbusAddress, Rtu::kReadHolding, 0x1000, 100);
        m_link.ReadRegisters(m_link.ModbusAddress, Rtu::kReadInput, 0x1080, 50);
        QCOMPARE(m_link.bCommOK, kTrue);
        QCOMPARE(m_link.RxData.size(), 300);
        QCOMPARE(RegisterWord(m_link.RxData, 0), m_slave->map().tab_registers[0]);
        QCOMPARE(RegisterWord(m_link.RxData, 99), m_slave->map().tab_registers[99]);
        QCOMPARE(RegisterWord(m_link.RxData, 100), m_slave->map().tab_input_registers[0x80]);
        QCOMPARE(RegisterWord(m_link.RxData, 149), m_slave->map().tab_input_registers[0x80 + 49]);
    }

    void writesReachTheSlave()
    {
        m_link.WriteRegisters(m_link.ModbusAddress, 0x1023, 3, QByteArray::fromHex("001A000B000F"));
        QCOMPARE(m_link.bCommOK, kTrue);
        m_link.WriteSingleRegister(m_link.ModbusAddress, 0x1001, 1);
        QCOMPARE(m_link.bCommOK, kTrue);
        m_slave->stop();
        QCOMPARE(m_slave->map().tab_registers[0x23], uint16_t(26));
        QCOMPARE(m_slave->map().tab_registers[0x25], uint16_t(15));
        QCOMPARE(m_slave->map().tab_registers[0x01], uint16_t(1));
    }

private:
    std::unique_ptr<PtyPair> m_pair;
    std::unique_ptr<LibmodbusSlave> m_slave;
    SerialTransport m_port;
    WatchedFlag m_onLine;
    RegisterLink m_link{m_port, m_onLine};
};

QTEST_GUILESS_MAIN(LibmodbusSlaveTest)
#include "LibmodbusSlaveTest.moc"
