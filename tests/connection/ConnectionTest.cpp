// Going on line and off line: the address check, ports that fail, settings strings, a port
// that disappears while on line, and what the off-line reason tells to check.
#include "MeterOnLine.h"
#include "PtyPair.h"
#include "RecordingPrompts.h"
#include "connection/Connection.h"
#include "link/RtuFrames.h"

#include <QSignalSpy>
#include <QTest>

class ConnectionTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_pair = std::make_unique<PtyPair>();
        m_prompts = RecordingPrompts();
        m_connection = std::make_unique<Connection>(m_prompts);
        m_connection->SetPortEntries(PtyEntries());
        m_connection->SetSettings(QStringLiteral("19200,n,8,1"));
    }
    void cleanup()
    {
        m_connection.reset();
        m_pair.reset();
    }

    void anEmptyAddressIsRefusedBeforeAnythingElse()
    {
        useThePty();
        m_connection->ToggleOnLine(QString());
        QCOMPARE(m_prompts.errors, QStringList{QStringLiteral("No Address！")});
        QVERIFY(!m_connection->port.isOpen());

        // Even on line, the check comes first: the button cannot end the connection then.
        m_connection->ToggleOnLine(QStringLiteral("15"));
        QVERIFY(m_connection->bOnLine.isTrue());
        QVERIFY(m_connection->Timer1Sec.isActive());
        m_connection->ToggleOnLine(QString());
        QVERIFY(m_connection->bOnLine.isTrue());
        QVERIFY(m_connection->port.isOpen());
    }

    void portsThatCannotBeOpenedEndOffLine_data()
    {
        QTest::addColumn<int>("listIndex");
        QTest::addColumn<QString>("settings");
        QTest::newRow("numbered port that is not there") << 14 << QStringLiteral("19200,n,8,1");
        QTest::newRow("stop bits missing") << 15 << QStringLiteral("19200,n,8,");
        QTest::newRow("baud rate not a number") << 15 << QStringLiteral("fast,n,8,1");
    }
    void portsThatCannotBeOpenedEndOffLine()
    {
        QFETCH(int, listIndex);
        QFETCH(QString, settings);
        m_connection->ChoosePortIndex(listIndex);
        m_connection->SetSettings(settings);
        QSignalSpy changes(m_connection.get(), &Connection::onLineChanged);
        m_connection->ToggleOnLine(QStringLiteral("15"));
        QCOMPARE(m_prompts.errors, QStringList{QStringLiteral("Comm Port Error！")});
        QCOMPARE(m_connection->bOnLine.value(), kFalse);
        QVERIFY(!m_connection->Timer1Sec.isActive());
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.at(0).at(0).toBool(), false);
    }

    void unusableSettingsWhileOnLineAreAPortError()
    {
        useThePty();
        m_connection->ToggleOnLine(QStringLiteral("15"));
        m_connection->SetSettings(QStringLiteral("9600,n,8,2"));
        QVERIFY(m_connection->bOnLine.isTrue());
        m_connection->SetSettings(QStringLiteral("9600,q,8,2"));
        QCOMPARE(m_prompts.errors, QStringList{QStringLiteral("Comm Port Error！")});
        QVERIFY(!m_connection->bOnLine.isTrue());
        QVERIFY(!m_connection->port.isOpen());
    }

    void portOptionsNameAnEntry_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<int>("index"); // -1: refused
        QTest::addColumn<QString>("appended");
        QTest::newRow("first numbered port") << QStringLiteral("1") << 0 << QString();
        QTest::newRow("a found port by number") << QStringLiteral("16") << 15 << QString();
        QTest::newRow("number past the list") << QStringLiteral("18") << -1 << QString();
        QTest::newRow("number zero") << QStringLiteral("0") << -1 << QString();
        QTest::newRow("simulated meter") << QStringLiteral("sim") << 16 << QString();
        QTest::newRow("a numbered port by path") << PortCatalog::NumberedDevice(2) << 1 << QString();
        QTest::newRow("a device not in the list") << QStringLiteral("/dev/ttyACM7") << 17 << QStringLiteral("/dev/ttyACM7");
        QTest::newRow("network address") << QStringLiteral("tcp://10.0.0.5:4001") << 17 << QStringLiteral("tcp://10.0.0.5:4001");
        QTest::newRow("network address without a port") << QStringLiteral("tcp://10.0.0.5") << -1 << QString();
        QTest::newRow("network port out of range") << QStringLiteral("tcp://gw:70000") << -1 << QString();
        QTest::newRow("network address with a path") << QStringLiteral("tcp://gw:502/x") << -1 << QString();
        QTest::newRow("empty") << QString() << -1 << QString();
    }
    void portOptionsNameAnEntry()
    {
        QFETCH(QString, option);
        QFETCH(int, index);
        QFETCH(QString, appended);
        QList<PortEntry> entries = PtyEntries();
        const qsizetype before = entries.size();
        QString error;
        const std::optional<int> located = PortCatalog::Locate(entries, option, &error);
        QCOMPARE(located.value_or(-1), index);
        QCOMPARE(error.isEmpty(), index >= 0);
        QCOMPARE(entries.size(), before + (appended.isEmpty() ? 0 : 1));
        if (!appended.isEmpty())
            QCOMPARE(entries.last().device, appended);
    }

    void aVanishingPortTakesTheToolOffLine()
    {
        useThePty();
        m_connection->ToggleOnLine(QStringLiteral("15"));
        QVERIFY(m_connection->bOnLine.isTrue());
        // A transaction is waiting for its reply when the device disappears.
        QSignalSpy changes(m_connection.get(), &Connection::onLineChanged);
        const QString device = m_pair->second();
        bool returned = false;
        QTimer::singleShot(100, [this] { m_pair.reset(); });
        QTimer::singleShot(0, [this, &returned] {
            m_connection->link.ResetRxData();
            m_connection->link.ReadRegisters(m_connection->link.ModbusAddress, Rtu::kReadHolding, 0x1000, 10);
            returned = true;
        });
        QTRY_VERIFY_WITH_TIMEOUT(returned, 3000);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().at(1).toString(), // not the system's "Inappropriate ioctl for device"
                 QStringLiteral("Comm Port Error: %1: the port was closed or the adapter unplugged").arg(device));
        QVERIFY(!m_connection->bOnLine.isTrue());
        QVERIFY(!m_connection->port.isOpen());
        QCOMPARE(m_prompts.errors, QStringList{QStringLiteral("Comm Port Error！")});
    }

    // Each way a meter can fail to answer names what to look at, after the give-up text.
    void theOffLineReasonSaysWhatToCheck_data()
    {
        QTest::addColumn<int>("address");
        QTest::addColumn<int>("fault"); // -1: none
        QTest::addColumn<bool>("noise");
        QTest::addColumn<QString>("check");
        const int none = -1;
        QTest::newRow("nothing at all") << 20 << none << false << "nothing came back: check the meter's power";
        QTest::newRow("bytes, never a frame") << 15 << int(sim::Fault::Kind::Split) << false << "check the baud rate and stop bits";
        QTest::newRow("another address") << 15 << int(sim::Fault::Kind::WrongAddress) << false << "check the address";
        QTest::newRow("busy line") << 15 << none << true << "another master on the line";
    }
    void theOffLineReasonSaysWhatToCheck()
    {
        QFETCH(int, address);
        QFETCH(int, fault);
        QFETCH(bool, noise);
        QFETCH(QString, check);
        SessionOnLine online;
        QVERIFY(online.begin());
        if (fault == int(sim::Fault::Kind::Split))
            online.meter->injectFault(sim::Fault::split(2, 1000));
        else if (fault >= 0)
            online.meter->injectFault({.kind = sim::Fault::Kind(fault)});
        QSignalSpy arrived(&online.session->connection.port, &Transport::dataArrived);
        if (noise) {
            online.meter->setNoise(5000, 0);
            QVERIFY(arrived.wait(1000)); // the noise is on the line before the request is due
        }
        QSignalSpy changes(&online.session->connection, &Connection::onLineChanged);
        RegisterLink& link = online.link();
        link.attempts = 1;
        link.replyTimeoutMs = 300;
        link.ModbusAddress = qint16(address);
        link.ResetRxData();
        QVERIFY(link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, 3).gaveUp());
        QCOMPARE(changes.size(), 1);
        const QString reason = changes.at(0).at(1).toString();
        QVERIFY2(reason.startsWith(RegisterLink::GiveUpText(1)) && reason.contains(check), qPrintable(reason));
    }

private:
    // The port list with the pty's second end as the one port found.
    QList<PortEntry> PtyEntries() const
    {
        FoundPort pty;
        pty.device = m_pair->second();
        return PortCatalog::Build({pty});
    }
    void useThePty()
    {
        if (!m_pair->error().isEmpty())
            QSKIP(qPrintable(m_pair->error()));
        m_connection->ChoosePortIndex(15); // the first port after the numbered ones
    }

    std::unique_ptr<PtyPair> m_pair;
    RecordingPrompts m_prompts;
    std::unique_ptr<Connection> m_connection;
};

QTEST_GUILESS_MAIN(ConnectionTest)
#include "ConnectionTest.moc"
