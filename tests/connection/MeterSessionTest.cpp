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
        m_served.clear();
    }
    void cleanup() { m_on.reset(); }

    void oneTickReadsTheNineBlocksAndYieldsAReading()
    {
        QSignalSpy readings(&poll(), &PollCycle::readingTaken);
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

        const auto& t = m_on->screen.texts;
        QCOMPARE(t["txt_Online"], "On Line");
        QCOMPARE(t["txtFrequency"], QString::number(reading.frequency, 'f', 2));
        QCOMPARE(t["txt_PTRatio"], QString::number(m_on->meter->holding(0x1021) / 10.0, 'f', 1));
        QCOMPARE(t["txt_CTRatio"], QString::number(m_on->meter->holding(0x1022)) + ".0");
        QCOMPARE(t["Text_Valid_int_num(0)"], QString::number(reading.loadProfile[0].validIntervals));
        QCOMPARE(m_on->lists.start.size(), 1 + reading.loadProfile[0].validIntervals);
        QVERIFY(t["Text6"].isEmpty());
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
        auto& t = m_on->screen.texts;
        t["txt_V_N(0)"] = t["txtPTRatio2"] = QStringLiteral("kept");
        recordServing(&PendingCommands::bPendingSetTime, "time");
        poll().pending.bPendingSetTime = kTrue;
        QSignalSpy readings(&poll(), &PollCycle::readingTaken);
        failTransaction(block);

        poll().Timer1Sec_Timer();

        QCOMPARE(m_on->meter->requestLog().size(), block - 1 + RegisterLink::kAttempts);
        QVERIFY(!m_on->session->connection.bOnLine.isTrue());
        QVERIFY(m_served.isEmpty());
        QCOMPARE(poll().pending.bPendingSetTime, kFalse);
        QVERIFY(readings.isEmpty());
        if (block <= 5)
            QCOMPARE(t["txt_V_N(0)"], "kept");
        QCOMPARE(t["txtPTRatio2"], "kept");
        QCOMPARE(t.contains("txtFrequency"), block > 6);
        QCOMPARE(t["txt_Online"], "Off Line");
        const QString reason = QStringLiteral("Communication Error! Retry 5 times! 1 pending command was dropped, not sent.");
        QCOMPARE(t["txt_OffLineReason"], reason);
        // The lists are refreshed, and the status line cleared, once the energy block was
        // asked for: a failure there loses the status line's text, never the reason.
        QCOMPARE(m_on->lists.enabledHistory.isEmpty(), block < 7);
        QCOMPARE(t["Text6"], block == 7 ? QString() : reason);
    }

    void commandsAreServedInTheTablesOrder()
    {
        recordServing(&PendingCommands::bPendingCtRatio, "ct");
        recordServing(&PendingCommands::bPendingSetTime, "time");
        poll().pending.bPendingCtRatio = kTrue;
        poll().pending.bPendingSetTime = kTrue;
        poll().Timer1Sec_Timer();
        QCOMPARE(m_served, QStringList({"time", "ct"}));
        QCOMPARE(poll().pending.bPendingSetTime, kFalse);
        QCOMPARE(poll().pending.bPendingCtRatio, kFalse);
        QCOMPARE(m_on->meter->requestLog().size(), 11);
    }

    // A command whose write gives up is not repeated, and the tool goes off line: the commands
    // after it are dropped, never sent to whatever meter is connected next.
    void aFailedCommandDropsTheLaterOnes()
    {
        recordServing(&PendingCommands::bPendingSetTime, "time");
        recordServing(&PendingCommands::bPendingWiring, "wiring");
        poll().pending.bPendingSetTime = kTrue;
        poll().pending.bPendingWiring = kTrue;
        failTransaction(10);
        poll().Timer1Sec_Timer();
        QCOMPARE(m_served, QStringList{"time"});
        QCOMPARE(poll().pending.bPendingWiring, kFalse);
        QVERIFY(m_on->screen.texts["txt_OffLineReason"].endsWith("1 pending command was dropped, not sent."));

        m_on->session->ToggleOnLine(QStringLiteral("15"));
        m_on->session->connection.Timer1Sec.stop();
        poll().Timer1Sec_Timer();
        QCOMPARE(m_served, QStringList{"time"});
        QCOMPARE(m_on->screen.texts["txt_OffLineReason"], QString()); // cleared by going on line
    }

    void goingOffLineByHandDropsPendingCommands()
    {
        recordServing(&PendingCommands::bPendingClearKwh, "clear kWh");
        poll().pending.bPendingClearKwh = kTrue;
        poll().pending.bPendingPtRatio2 = kTrue;
        m_on->session->ToggleOnLine(QStringLiteral("15"));
        QCOMPARE(m_on->screen.texts["Text6"], "2 pending commands were dropped, not sent.");
        m_on->session->ToggleOnLine(QStringLiteral("15"));
        m_on->session->connection.Timer1Sec.stop();
        poll().Timer1Sec_Timer();
        QVERIFY(m_served.isEmpty());
        QCOMPARE(m_on->meter->requestLog().size(), 9);
    }

    void aClickDuringATickOnlySetsItsFlag()
    {
        recordServing(&PendingCommands::bPendingPtRatio2, "pt2");
        m_on->meter->injectFault(Fault::late(150));
        QTimer::singleShot(50, [this] {
            poll().pending.bPendingPtRatio2 = kTrue;
            poll().Timer1Sec_Timer(); // a tick due while this one waits does not start
        });
        poll().Timer1Sec_Timer();
        QCOMPARE(m_on->meter->requestLog().size(), 10);
        QCOMPARE(m_served, QStringList{"pt2"}); // later in the table: served in the same tick
    }

    // Ratios beyond the signed 16-bit range are shown as such, and the tick goes on: the
    // operator can still send a corrected ratio.
    void anOutOfRangeRatioIsShownAndTheTickGoesOn()
    {
        m_on->meter->setHolding(0x1021, 50000); // PT ratio 1: 5000.0
        m_on->meter->setHolding(0x1022, 0x8000);
        recordServing(&PendingCommands::bPendingPtRatio, "pt1");
        poll().pending.bPendingPtRatio = kTrue;
        poll().Timer1Sec_Timer();
        const auto& t = m_on->screen.texts;
        QCOMPARE(t["txt_PTRatio"], "5000.0 (out of range)");
        QCOMPARE(t["txt_CTRatio"], "32768.0 (out of range)");
        QCOMPARE(poll().PtRatio1Value, 5000.0);
        QVERIFY(!t["txtPTRatio2"].isEmpty());
        QCOMPARE(m_served, QStringList{"pt1"});
    }

    void displayItemsAreShownAfterTheirCommand()
    {
        recordServing(&PendingCommands::bPendingDisplayItem, "items");
        poll().pending.bPendingDisplayItem = kTrue;
        poll().Timer1Sec_Timer();
        QCOMPARE(poll().display.bDisplayItemSent, kTrue);
        poll().Timer1Sec_Timer();
        QVERIFY(m_on->screen.texts["txt_Display_Item"].startsWith("Display Item  : \r\n1 : "));
        QCOMPARE(poll().display.bDisplayItemSent, kFalse);
    }

private:
    PollCycle& poll() { return m_on->session->poll; }

    // The routine of `flag` writes one register, as every command does, and notes its name.
    void recordServing(PendingCommands::Flag flag, const char* name)
    {
        poll().SetRoutine(flag, [this, name] {
            m_served.append(QLatin1String(name));
            RegisterLink& link = m_on->session->connection.link;
            link.WriteRegisters(link.ModbusAddress, 0x1050, 1, QByteArray::fromHex("0005"));
        });
    }

    // Spoils every attempt of the tick's transaction number `n` (counted from 1).
    void failTransaction(int n)
    {
        RegisterLink& link = m_on->session->connection.link;
        link.bShowFrames = kTrue;
        auto count = std::make_shared<int>(0);
        connect(&link, &RegisterLink::requestEcho, this, [this, n, count] {
            if (++*count == n)
                m_on->meter->injectFault(Fault::badCrc(), RegisterLink::kAttempts);
        });
    }

    std::unique_ptr<SessionOnLine> m_on;
    QStringList m_served;
};

QTEST_GUILESS_MAIN(MeterSessionTest)
#include "MeterSessionTest.moc"
