// Going on line and off line: the address check, ports that fail, settings strings, and a
// port that disappears while on line.
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
