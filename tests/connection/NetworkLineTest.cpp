// The tool on line to the meter through a device server: the session over TCP, a connection
// the far end lets go, and addresses that cannot be reached.
#include "MeterOnLine.h"
#include "connection/TcpTransport.h"
#include "link/RtuFrames.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using sim::Fault;

namespace {

// A port on 127.0.0.1 whose listener takes no more connections: its backlog holds one that
// was never accepted, so the system drops the next one's handshake and a connection attempt
// waits until it gives up.
class FullListener {
public:
    FullListener()
    {
        sockaddr_in local{};
        local.sin_family = AF_INET;
        local.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof local;
        auto* any = reinterpret_cast<sockaddr*>(&local);
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        m_waiting = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ok = ::bind(m_listener, any, length) == 0 && ::listen(m_listener, 0) == 0
            && ::getsockname(m_listener, any, &length) == 0 && ::connect(m_waiting, any, length) == 0;
        address = QStringLiteral("tcp://127.0.0.1:%1").arg(ntohs(local.sin_port));
    }
    ~FullListener()
    {
        for (int fd : {m_admitted, m_waiting, m_listener})
            ::close(fd);
    }
    // Takes the waiting connection, making room for the next.
    void admit() { m_admitted = ::accept(m_listener, nullptr, nullptr); }

    bool ok = false;
    QString address;

private:
    int m_listener = -1;
    int m_waiting = -1;
    int m_admitted = -1;
};

// A port on 127.0.0.1 where nothing listens.
QString RefusingAddress()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort());
}

} // namespace

class NetworkLineTest : public QObject {
    Q_OBJECT
private slots:
    void cleanup()
    {
        m_on.reset();
        m_connection.reset();
    }

    // Polling and a setting over TCP. The setting moves the meter to 9600 baud and the tool
    // follows on its own port, which on a network line changes nothing and goes on.
    void aSessionReadsAndSetsTheMeter()
    {
        QVERIFY(beginSession());
        QVERIFY(connection().port.Device().startsWith(QLatin1String("tcp://127.0.0.1:")));
        QSignalSpy readings(&m_on->session->poll, &PollCycle::readingTaken);
        m_on->session->settings.Request(Setting::BaudRate, {{9600}});
        m_on->session->poll.Timer1Sec_Timer();
        m_on->session->poll.Timer1Sec_Timer();
        QCOMPARE(m_on->meter->holding(0x1001), quint16(1)); // 9600
        QCOMPARE(connection().Settings(), QStringLiteral("9600,n,8,1"));
        QVERIFY(connection().bOnLine.isTrue());
        QCOMPARE(readings.size(), 2);
        QCOMPARE(readings.last().first().value<MeterReading>().fresh, 0x1Fu);
    }

    // The simulated device server goes away, idle or while a read waits for its reply: the
    // tool goes off line as when an adapter is unplugged, naming the address.
    void aLostConnectionTakesTheToolOffLine_data()
    {
        QTest::addColumn<bool>("whileReading");
        QTest::newRow("idle") << false;
        QTest::newRow("while a read waits") << true;
    }
    void aLostConnectionTakesTheToolOffLine()
    {
        QFETCH(bool, whileReading);
        QVERIFY(beginSession());
        const QString address = connection().port.Device();
        QSignalSpy changes(&connection(), &Connection::onLineChanged);
        if (whileReading) {
            m_on->meter->injectFault(Fault::noReply());
            QTimer::singleShot(100, this, [this] { m_on->meter->stop(); });
            connection().link.ResetRxData();
            QCOMPARE(connection().link.ReadRegisters(connection().link.ModbusAddress, Rtu::kReadHolding, 0x1000, 10).kind,
                 TransactionResult::Abandoned);
        } else {
            m_on->meter->stop();
        }
        QTRY_COMPARE(changes.size(), 1);
        QCOMPARE(changes.first().at(1).toString(),
                 QStringLiteral("Comm Port Error: %1: the connection was lost (The remote host closed the connection)").arg(address));
        QVERIFY(!connection().bOnLine.isTrue());
        QVERIFY(!connection().port.isOpen());
        QCOMPARE(m_on->prompts.errors, QStringList{QStringLiteral("Comm Port Error！")});
    }

    void anUnreachableAddressIsAPortError_data()
    {
        QTest::addColumn<bool>("listening");
        QTest::addColumn<QString>("detail");
        QTest::newRow("nothing listens") << false << QStringLiteral("Connection refused");
        QTest::newRow("no answer") << true << QStringLiteral("no connection within 5 s");
    }
    void anUnreachableAddressIsAPortError()
    {
        QFETCH(bool, listening);
        QFETCH(QString, detail);
        FullListener full;
        QVERIFY(full.ok);
        const QString address = listening ? full.address : RefusingAddress();
        QSignalSpy changes(&connectTo(address), &Connection::onLineChanged);
        m_connection->ToggleOnLine(QStringLiteral("15"));
        QCOMPARE(m_prompts.errors, QStringList{QStringLiteral("Comm Port Error！")});
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().at(1).toString(), QStringLiteral("Comm Port Error: %1: %2").arg(address, detail));
        QVERIFY(!m_connection->bOnLine.isTrue());
    }

    // The window lives while the tool waits for the device server: the operator's click goes
    // off line and ends the wait quietly; clicked again, once the server takes connections,
    // the second attempt goes on line and the first one has nothing more to say.
    void clicksWhileConnectingTakeOver_data()
    {
        QTest::addColumn<bool>("clickedAgain");
        QTest::newRow("off line") << false;
        QTest::newRow("off and on line again") << true;
    }
    void clicksWhileConnectingTakeOver()
    {
        QFETCH(bool, clickedAgain);
        FullListener full;
        QVERIFY(full.ok);
        QSignalSpy changes(&connectTo(full.address), &Connection::onLineChanged);
        QTimer::singleShot(100, this, [&] {
            m_connection->ToggleOnLine(QStringLiteral("15"));
            if (!clickedAgain)
                return;
            full.admit();
            m_connection->ToggleOnLine(QStringLiteral("15"));
        });
        QElapsedTimer clock;
        clock.start();
        m_connection->ToggleOnLine(QStringLiteral("15"));
        QCOMPARE_LT(clock.elapsed(), TcpTransport::kConnectTimeoutMs / 2); // ended by the click, not the time-out
        QVERIFY(m_prompts.errors.isEmpty());
        QCOMPARE(changes.size(), clickedAgain ? 2 : 1);
        QCOMPARE(changes.first().at(0).toBool(), false);
        QCOMPARE(changes.first().at(1).toString(), QString()); // the operator asked for it
        QCOMPARE(m_connection->bOnLine.isTrue(), clickedAgain);
        QCOMPARE(m_connection->port.isOpen(), clickedAgain);
        QCOMPARE(m_connection->Timer1Sec.isActive(), clickedAgain);
    }

private:
    bool beginSession()
    {
        m_on = std::make_unique<SessionOnLine>();
        return m_on->begin(false, Via::Network);
    }
    Connection& connection() { return m_on->session->connection; }

    // A connection whose chosen port is `address`, off line.
    Connection& connectTo(const QString& address)
    {
        m_prompts = RecordingPrompts();
        m_connection = std::make_unique<Connection>(m_prompts);
        QList<PortEntry> entries = PortCatalog::Build({});
        QString error;
        m_connection->ChoosePortIndex(PortCatalog::Locate(entries, address, &error).value_or(0));
        m_connection->SetPortEntries(entries);
        m_connection->SetSettings(QStringLiteral("19200,n,8,1"));
        return *m_connection;
    }

    std::unique_ptr<SessionOnLine> m_on;
    RecordingPrompts m_prompts;
    std::unique_ptr<Connection> m_connection;
};

QTEST_GUILESS_MAIN(NetworkLineTest)
#include "NetworkLineTest.moc"
