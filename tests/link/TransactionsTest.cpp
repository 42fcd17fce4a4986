// Every outcome of a register transaction, through a real pseudo-terminal against the
// simulated meter: good replies, replies in pieces, bad CRC, wrong address, exceptions,
// silence, and an address changed while the transaction retries.
#include "MeterOnLine.h"
#include "RegisterWords.h"
#include "link/RtuFrames.h"
#include "link/Waits.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using sim::Fault;

class TransactionsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_on = std::make_unique<MeterOnLine>();
        QVERIFY(m_on->begin());
        m_status = std::make_unique<QSignalSpy>(&m_on->link(), &RegisterLink::statusText);
    }
    void cleanup()
    {
        m_status.reset();
        m_on.reset();
    }

    void readsAccumulateIntoOneImage()
    {
        RegisterLink& link = m_on->link();
        link.ResetRxData();
        link.bCommOK = kTrue;
        link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, 100);
        link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1064, 50);
        QCOMPARE(link.bCommOK, kTrue);
        QCOMPARE(link.RxData.size(), 300);
        for (int i : {0, 1, 0x21, 0x22, 99, 100, 149})
            QCOMPARE(RegisterWord(link.RxData, i), m_on->meter->holding(quint16(0x1000 + i)));
        QVERIFY(m_status->isEmpty());
    }

    void aReplyInPiecesIsTakenWhole()
    {
        m_on->meter->injectFault(Fault::split(4, 40));
        read(0x1080, 8);
        QCOMPARE(m_on->link().bCommOK, kTrue);
        QCOMPARE(RegisterWord(m_on->link().RxData, 7), m_on->meter->input(0x1087));
        QCOMPARE(m_on->meter->requestLog().size(), 1);
    }

    void spoiledRepliesFailOneAttemptEach_data()
    {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QString>("text");
        QTest::newRow("bad CRC") << Fault::badCrc() << QStringLiteral("CRC Error");
        QTest::newRow("other address") << Fault::wrongAddress() << QStringLiteral("Address Error");
        QTest::newRow("noise before the reply") << Fault::noise(3) << QString();
    }
    void spoiledRepliesFailOneAttemptEach()
    {
        QFETCH(Fault, fault);
        QFETCH(QString, text);
        m_on->meter->injectFault(fault);
        read(0x1000, 20);
        QCOMPARE(m_on->link().bCommOK, kTrue);
        QCOMPARE(m_on->meter->requestLog().size(), 2);
        QCOMPARE(m_on->link().RxData.size(), 40);
        if (!text.isEmpty())
            QCOMPARE(m_status->first().first().toString(), text);
        else
            QCOMPARE(m_status->size(), 1); // noise spoils the address byte or the CRC
    }

    void anExceptionReplyEndsAsATimeOut()
    {
        m_on->meter->injectFault(Fault::exception(2));
        QElapsedTimer clock;
        clock.start();
        read(0x1000, 10);
        QVERIFY(clock.elapsed() >= RegisterLink::kReplyTimeoutMs);
        QCOMPARE(m_on->link().bCommOK, kTrue);
        QCOMPARE(m_on->meter->requestLog().size(), 2);
        QVERIFY(m_status->isEmpty());
    }

    void silenceGivesUpAfterFiveAttemptsAndGoesOffLine()
    {
        m_on->meter->injectFault(Fault::noReply(), RegisterLink::kAttempts);
        QSignalSpy offLine(m_on->connection.get(), &Connection::onLineChanged);
        read(0x1000, 10);
        QCOMPARE(m_on->meter->requestLog().size(), 5);
        QCOMPARE(m_status->last().first().toString(), QStringLiteral("Communication Error! Retry 5 times!"));
        QCOMPARE(m_on->link().bCommOK, kFalse);
        QCOMPARE(m_on->link().bWaiting, kFalse);
        QVERIFY(!m_on->connection->bOnLine.isTrue());
        QVERIFY(!m_on->connection->port.isOpen());
        QCOMPARE(offLine.size(), 1);

        // Off line nothing is sent and the caller's flag is left alone.
        read(0x1000, 10);
        QCOMPARE(m_on->meter->requestLog().size(), 5);
        QCOMPARE(m_on->link().bCommOK, kTrue);
    }

    void anAddressChangedWhileRetryingIsUsedNextAttempt()
    {
        m_on->meter->injectFault(Fault::noReply());
        QTimer::singleShot(300, [this] {
            m_on->link().ModbusAddress = 16;
            m_on->meter->setHolding(0x1000, 16);
        });
        read(0x1000, 4);
        QCOMPARE(m_on->link().bCommOK, kTrue);
        const auto log = m_on->meter->requestLog();
        QCOMPARE(log.size(), 2);
        QCOMPARE(quint8(log[0].frame[0]), quint8(15));
        QCOMPARE(quint8(log[1].frame[0]), quint8(16)); // logged only with a valid CRC
    }

    void writesAndTheGapBetweenFrames()
    {
        RegisterLink& link = m_on->link();
        link.bCommOK = kFalse;
        link.WriteRegisters(link.ModbusAddress, 0x1022, 1, QByteArray::fromHex("0064"));
        QCOMPARE(link.bCommOK, kTrue);
        qint16 bytes = 4;
        link.WriteRegisters2(link.ModbusAddress, 0x4492, bytes, Rtu::SingleToBytes(2.0).mid(2, 2) + QByteArray(2, '\0'));
        QCOMPARE(bytes, qint16(2)); // the caller's byte count comes back as registers
        QCOMPARE(link.bCommOK, kTrue);
        QCOMPARE(m_on->meter->holding(0x1022), quint16(100));

        const auto log = m_on->meter->requestLog();
        QCOMPARE(log.size(), 2);
        QVERIFY(log[0].replyFinishedAt.has_value());
        QVERIFY(log[1].receivedAt - *log[0].replyFinishedAt >= std::chrono::milliseconds(RegisterLink::kFrameGapMs));
    }

    void theWindowStaysAliveWhileATransactionWaits()
    {
        m_on->meter->injectFault(Fault::late(500));
        int timerEvents = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&timerEvents] { ++timerEvents; });
        ticker.start(50);
        read(0x1000, 10);
        QCOMPARE(m_on->link().bCommOK, kTrue);
        QVERIFY2(timerEvents >= 5, "events are processed during the wait");
    }

private:
    void read(quint16 start, quint16 count)
    {
        RegisterLink& link = m_on->link();
        link.ResetRxData();
        link.bCommOK = kTrue;
        link.ReadRegisters(link.ModbusAddress, start >= 0x1080 ? Rtu::kReadInput : Rtu::kReadHolding, start, count);
    }

    std::unique_ptr<MeterOnLine> m_on;
    std::unique_ptr<QSignalSpy> m_status;
};

QTEST_GUILESS_MAIN(TransactionsTest)
#include "TransactionsTest.moc"
