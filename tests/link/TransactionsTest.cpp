// Register transactions through a real pseudo-terminal against the simulated meter, paced at
// 19200 8N1: what only a real line and event loop show. Every other outcome is tested on the
// scripted line (RegisterLinkTest, FieldCasesTest).
#include "MeterOnLine.h"
#include "RegisterWords.h"
#include "link/RtuFrames.h"

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
    }
    void cleanup() { m_on.reset(); }

    void readsAccumulateAndKeepTheGap()
    {
        RegisterLink& link = m_on->link();
        QSignalSpy status(&link, &RegisterLink::statusText);
        QElapsedTimer clock;
        clock.start();
        link.ResetRxData();
        link.bCommOK = kTrue;
        link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, 100);
        link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1064, 50);
        // Each wait ends on the reply's data, long before its time-out.
        QVERIFY(clock.elapsed() < RegisterLink::kReplyTimeoutMs);
        QCOMPARE(link.bCommOK, kTrue);
        QCOMPARE(link.RxData.size(), 300);
        for (int i : {0, 1, 0x21, 0x22, 99, 100, 149})
            QCOMPARE(RegisterWord(link.RxData, i), m_on->meter->holding(quint16(0x1000 + i)));
        QVERIFY(status.isEmpty());

        const auto log = m_on->meter->requestLog();
        QCOMPARE(log.size(), 2);
        QVERIFY(log[0].replyFinishedAt.has_value());
        QVERIFY(log[1].receivedAt - *log[0].replyFinishedAt >= std::chrono::milliseconds(RegisterLink::kFrameGapMs));
    }

    void aReplyInPiecesIsTakenWhole()
    {
        m_on->meter->injectFault(Fault::split(4, 40));
        read(0x1080, 8);
        QCOMPARE(m_on->link().bCommOK, kTrue);
        QCOMPARE(RegisterWord(m_on->link().RxData, 7), m_on->meter->input(0x1087));
        QCOMPARE(m_on->meter->requestLog().size(), 1);
    }

    void theEventLoopRunsWhileATransactionWaits()
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
};

QTEST_GUILESS_MAIN(TransactionsTest)
#include "TransactionsTest.moc"
