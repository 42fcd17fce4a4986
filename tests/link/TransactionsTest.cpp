// Register transactions through a real pseudo-terminal against the simulated meter, paced at
// 19200 8N1: what only a real line and event loop show. Every outcome is tested on the
// scripted line (RegisterLinkTest, FieldCasesTest).
#include "MeterOnLine.h"
#include "link/RtuFrames.h"

#include <QElapsedTimer>
#include <QTest>

class TransactionsTest : public QObject {
    Q_OBJECT
private slots:
    void theLineWakesTheLinkWhileTheEventLoopRuns()
    {
        SessionOnLine on;
        QVERIFY(on.begin(true));
        RegisterLink& link = on.link();
        on.meter->injectFault(sim::Fault::split(4, 40));
        int events = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&events] { ++events; });
        ticker.start(10);
        QElapsedTimer clock;
        clock.start();
        link.ResetRxData();
        QCOMPARE(link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, 100).kind, TransactionResult::Good);
        QCOMPARE(link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1064, 50).kind, TransactionResult::Good);
        // Each wait ends on the reply's data, long before its time-out.
        QVERIFY(clock.elapsed() < RegisterLink::kReplyTimeoutMs);
        QVERIFY2(events >= 10, "events are processed during the waits");
        QByteArray image;
        for (quint16 reg = 0x1000; reg < 0x1000 + 150; ++reg)
            image.append(char(on.meter->holding(reg) >> 8)).append(char(on.meter->holding(reg) & 0xFF));
        QCOMPARE(link.RxData, image);
        // The silence before the second request, measured by the meter on the real clock.
        const auto log = on.meter->requestLog();
        QCOMPARE(log.size(), 2);
        QVERIFY(log[1].receivedAt - *log[0].replyFinishedAt >= std::chrono::milliseconds(RegisterLink::kFrameGapMs));
    }
};

QTEST_GUILESS_MAIN(TransactionsTest)
#include "TransactionsTest.moc"
