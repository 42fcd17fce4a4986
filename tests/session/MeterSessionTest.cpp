// The meter session on the wire, with no widget in the process: one tick's nine reads in
// order and the reading they yield, where a failure ends the tick, how pending commands are
// served, and what going off line does to them.
#include "MeterOnLine.h"
#include "measure/PollPlan.h"

#include <QSignalSpy>
#include <QTest>

using sim::Fault;

class MeterSessionTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_on = std::make_unique<SessionOnLine>();
        QVERIFY(m_on->begin());
    }
    void cleanup() { m_on.reset(); }

    void oneTickReadsTheNineBlocksAndYieldsAReading()
    {
        QSignalSpy readings(&poll(), &PollCycle::readingTaken);
        QSignalSpy blocks(&poll(), &PollCycle::blockRead);
        poll().Timer1Sec_Timer();
        const auto log = m_on->meter->requestLog();
        QCOMPARE(log.size(), qsizetype(PollPlan::kBlocks.size()));
        for (std::size_t i = 0; i < PollPlan::kBlocks.size(); ++i) {
            const PollBlock& block = PollPlan::kBlocks[i];
            QCOMPARE(log[qsizetype(i)].frame.left(6), Rtu::ReadRequest(15, block.function, block.start, block.count).left(6));
        }
        QCOMPARE(poll().PollStep, qint16(7));

        QCOMPARE(readings.size(), 1);
        const auto reading = readings.first().first().value<MeterReading>();
        QCOMPARE(reading.fresh, 0x1Fu);
        QCOMPARE(reading.takenAt, m_on->clock.now);
        QCOMPARE(reading.wiringCode, 5);
        QCOMPARE(reading.loadProfile[0].validIntervals, int(m_on->meter->input(0x1190)));
        QCOMPARE(reading.ptRatio1Register, m_on->meter->holding(0x1021));
        QVERIFY(reading.frequency > 49 && reading.frequency < 51);
        QVERIFY(reading.phaseVoltage[0] > 200);

        QList<int> shown;
        for (const QList<QVariant>& block : blocks)
            shown.append(block.first().toInt());
        QCOMPARE(shown, QList<int>({MeterReading::RealTimeImage, MeterReading::Frequency, MeterReading::Energy,
                                    MeterReading::Ratios, MeterReading::PtRatio2}));
        QCOMPARE(m_on->lists.start.size(), 1 + reading.loadProfile[0].validIntervals);
        QVERIFY(m_on->session->Status().isEmpty());
    }

    // Every block in turn gives up: the tick ends there, the tool goes off line, the pending
    // command is dropped unsent, and the reason stays beside the connection state.
    void aFailedBlockEndsTheTick_data()
    {
        QTest::addColumn<int>("block");
        for (int block = 1; block <= 9; ++block)
            QTest::addRow("block %d", block) << block;
    }
    void aFailedBlockEndsTheTick()
    {
        QFETCH(int, block);
        settings().Request(Setting::Clock);
        QSignalSpy readings(&poll(), &PollCycle::readingTaken);
        QSignalSpy blocks(&poll(), &PollCycle::blockRead);
        failTransaction(block);

        poll().Timer1Sec_Timer();

        QCOMPARE(m_on->meter->requestLog().size(), block - 1 + RegisterLink::kAttempts);
        QVERIFY(!m_on->session->OnLine());
        QVERIFY(m_on->writes().isEmpty());
        QVERIFY(!settings().IsPending(Setting::Clock));
        QCOMPARE(m_on->lastOutcome(), "dropped, not sent: the tool went off line");
        QVERIFY(readings.isEmpty());
        // Blocks 1 to 5 make one image, shown only whole; then one block is shown per read.
        QCOMPARE(blocks.size(), block <= 5 ? 0 : block - 5);
        const QString reason = QStringLiteral("Communication Error! Retry 5 times! — %1. 1 pending command was dropped, not sent.")
                                   .arg(Connection::WhatToCheck({TransactionResult::CrcError}));
        QCOMPARE(m_on->session->OffLineReason(), reason);
        // The lists are refreshed, and the status line cleared, once the energy block was
        // asked for: a failure there loses the status line's text, never the reason.
        QCOMPARE(m_on->lists.enabledHistory.isEmpty(), block < 7);
        QCOMPARE(m_on->session->Status(), block == 7 ? QString() : reason);
    }

    void commandsAreServedInTheTablesOrder()
    {
        settings().Request(Setting::PtRatio2, {{11000, 110}});
        settings().Request(Setting::CtRatio, {{200}});
        settings().Request(Setting::Clock);
        QCOMPARE(settings().pending.bPendingCtRatio, kTrue);
        poll().Timer1Sec_Timer();
        QCOMPARE(registersWritten(), QList<int>({0x1023, 0x1022, 0x4492}));
        QCOMPARE(settings().pending.bPendingSetTime | settings().pending.bPendingCtRatio, kFalse);
        QCOMPARE(m_on->meter->requestLog().size(), 12);
    }

    // A command whose write gives up is not repeated, and the tool goes off line: the commands
    // after it are dropped, never sent to whatever meter is connected next.
    void aFailedCommandDropsTheLaterOnes()
    {
        settings().Request(Setting::Clock);
        settings().Request(Setting::Wiring, {{3}});
        failTransaction(10);
        poll().Timer1Sec_Timer();
        QCOMPARE(registersWritten(), QList<int>(RegisterLink::kAttempts, 0x1023)); // spoiled each time
        QVERIFY(!settings().IsPending(Setting::Wiring));
        QVERIFY(m_on->session->OffLineReason().endsWith("1 pending command was dropped, not sent."));

        m_on->session->ToggleOnLine(QStringLiteral("15"));
        m_on->session->connection.Timer1Sec.stop();
        poll().Timer1Sec_Timer();
        QVERIFY(!registersWritten().contains(0x1004));
        QCOMPARE(m_on->session->OffLineReason(), QString()); // cleared by going on line
    }

    void goingOffLineByHandDropsPendingCommands()
    {
        settings().Request(Setting::ClearKwh);
        settings().Request(Setting::PtRatio2, {{11000, 110}});
        m_on->session->ToggleOnLine(QStringLiteral("15"));
        QCOMPARE(m_on->session->Status(), "2 pending commands were dropped, not sent.");
        m_on->session->ToggleOnLine(QStringLiteral("15"));
        m_on->session->connection.Timer1Sec.stop();
        poll().Timer1Sec_Timer();
        QVERIFY(m_on->writes().isEmpty());
        QCOMPARE(m_on->meter->requestLog().size(), 9);
    }

    void aClickDuringATickOnlySetsItsFlag()
    {
        m_on->meter->injectFault(Fault::late(150));
        QTimer::singleShot(50, [this] {
            settings().Request(Setting::PtRatio2, {{11000, 110}});
            poll().Timer1Sec_Timer(); // a tick due while this one waits does not start
        });
        poll().Timer1Sec_Timer();
        QCOMPARE(m_on->meter->requestLog().size(), 10);
        QCOMPARE(registersWritten(), QList<int>{0x4492}); // later in the table: served in the same tick
    }

    // Ratios beyond the signed 16-bit range are shown as such, and the tick goes on: the
    // operator can still send a corrected ratio.
    void anOutOfRangeRatioIsShownAndTheTickGoesOn()
    {
        m_on->meter->setHolding(0x1021, 50000); // PT ratio 1: 5000.0
        m_on->meter->setHolding(0x1022, 0x8000);
        settings().Request(Setting::PtRatio1, {{120}});
        poll().Timer1Sec_Timer();
        QCOMPARE(poll().Reading().ctRatioRegister, quint16(0x8000));
        QCOMPARE(poll().PtRatio1Value, 5000.0);
        QVERIFY(poll().Reading().Has(MeterReading::PtRatio2));
        QCOMPARE(registersWritten(), QList<int>{0x1021});
    }

    void aDisplayItemSentIsAnnounced()
    {
        QSignalSpy sent(&settings(), &MeterSettings::displayItemSent);
        settings().Request(Setting::DisplayItem, {{50, 139}});
        poll().Timer1Sec_Timer();
        QCOMPARE(sent.size(), 1);
    }

private:
    PollCycle& poll() { return m_on->session->poll; }
    MeterSettings& settings() { return m_on->session->settings; }

    // The first register of each write the meter received, in order.
    QList<int> registersWritten() const
    {
        QList<int> registers;
        for (const QByteArray& frame : m_on->writes())
            registers.append(frame.mid(4, 4).toInt(nullptr, 16));
        return registers;
    }

    // Spoils every attempt of the tick's transaction number `n` (counted from 1).
    void failTransaction(int n)
    {
        RegisterLink& link = m_on->link();
        link.bShowFrames = kTrue;
        auto count = std::make_shared<int>(0);
        connect(&link, &RegisterLink::requestEcho, this, [this, n, count] {
            if (++*count == n)
                m_on->meter->injectFault(Fault::badCrc(), RegisterLink::kAttempts);
        });
    }

    std::unique_ptr<SessionOnLine> m_on;
};

QTEST_GUILESS_MAIN(MeterSessionTest)
#include "MeterSessionTest.moc"
