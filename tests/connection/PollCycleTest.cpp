// One tick of the poll cycle on the wire: the nine reads in order, where a failure ends the
// tick, and how pending commands are served.
#include "MapScreen.h"
#include "MeterOnLine.h"
#include "connection/PollCycle.h"
#include "link/RtuFrames.h"

#include <QTest>

using sim::Fault;

namespace {

struct Request {
    int function;
    int start;
    int count;
};

Request decode(const QByteArray& frame)
{
    return {quint8(frame[1]), quint8(frame[2]) << 8 | quint8(frame[3]), quint8(frame[4]) << 8 | quint8(frame[5])};
}

const Request kTick[] = {
    {3, 0x1000, 100}, {3, 0x1064, 50}, {4, 0x1000, 20}, {4, 0x1080, 90}, {4, 0x1180, 22},
    {4, 0x107E, 2},   {4, 0x10D4, 30}, {3, 0x1021, 2},  {3, 0x4492, 2},
};

} // namespace

class PollCycleTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_on = std::make_unique<MeterOnLine>();
        QVERIFY(m_on->begin(false));
        m_screen.texts.clear();
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("1"));
        m_lists = RecordingLists();
        m_poll = std::make_unique<PollCycle>(*m_on->connection, m_screen, m_lists);
        connect(&m_on->link(), &RegisterLink::statusText, this,
                [this](const QString& text) { m_screen.SetText(QStringLiteral("Text6"), text); });
        m_served.clear();
    }
    void cleanup()
    {
        m_poll.reset();
        m_on.reset();
    }

    void oneTickReadsTheNineBlocksInOrder()
    {
        m_poll->Timer1Sec_Timer();
        const auto log = m_on->meter->requestLog();
        QCOMPARE(log.size(), 9);
        for (int i = 0; i < 9; ++i) {
            const Request r = decode(log[i].frame);
            QCOMPARE(r.function, kTick[i].function);
            QCOMPARE(r.start, kTick[i].start);
            QCOMPARE(r.count, kTick[i].count);
        }
        QCOMPARE(m_poll->PollStep, qint16(7));
        const auto& t = m_screen.texts;
        QCOMPARE(t["txt_Online"], "On Line");
        QVERIFY(t["txtFrequency"].startsWith("49.") || t["txtFrequency"].startsWith("50."));
        QCOMPARE(t["txt_PTRatio"], QString::number(m_on->meter->holding(0x1021) / 10.0, 'f', 1));
        QCOMPARE(t["txt_CTRatio"], QString::number(m_on->meter->holding(0x1022)) + ".0");
        QCOMPARE(t["txt_Wiring"], "3P4W");
        QCOMPARE(t["Text_Valid_int_num(0)"], QString::number(m_on->meter->input(0x1190)));
        QCOMPARE(m_lists.start.size(), 1 + int(m_on->meter->input(0x1190)));
        QVERIFY(!t["txt_kWh(5)"].isEmpty());
        QVERIFY(t["Text6"].isEmpty());
    }

    void aFailedBlockEndsTheTick_data()
    {
        QTest::addColumn<int>("block");
        for (int block = 1; block <= 9; ++block)
            QTest::addRow("block %d", block) << block;
    }
    void aFailedBlockEndsTheTick()
    {
        QFETCH(int, block);
        m_screen.SetText(QStringLiteral("txt_V_N(0)"), QStringLiteral("kept"));
        m_screen.SetText(QStringLiteral("txtPTRatio2"), QStringLiteral("kept"));
        recordServing(&PendingCommands::bPendingSetTime, "time");
        m_poll->pending.bPendingSetTime = kTrue;
        failTransaction(block);

        m_poll->Timer1Sec_Timer();

        QCOMPARE(m_on->meter->requestLog().size(), block - 1 + RegisterLink::kAttempts);
        QVERIFY(!m_on->connection->bOnLine.isTrue());
        QVERIFY(m_served.isEmpty());
        QCOMPARE(m_poll->pending.bPendingSetTime, kTrue);
        const auto& t = m_screen.texts;
        if (block <= 5)
            QCOMPARE(t["txt_V_N(0)"], "kept");
        QCOMPARE(t["txtPTRatio2"], "kept");
        QCOMPARE(t.contains("txtFrequency"), block > 6);
        // The lists are refreshed, and the status cleared, once the energy block was asked for:
        // a failure there loses its give-up text, a later one shows it.
        QCOMPARE(m_lists.enabledHistory.isEmpty(), block < 7);
        QCOMPARE(t["Text6"], block == 7 ? QString() : QStringLiteral("Communication Error! Retry 5 times!"));
    }

    void commandsAreServedInTheTablesOrder()
    {
        recordServing(&PendingCommands::bPendingCtRatio, "ct");
        recordServing(&PendingCommands::bPendingSetTime, "time");
        m_poll->pending.bPendingCtRatio = kTrue;
        m_poll->pending.bPendingSetTime = kTrue;
        m_poll->Timer1Sec_Timer();
        QCOMPARE(m_served, QStringList({"time", "ct"}));
        QCOMPARE(m_poll->pending.bPendingSetTime, kFalse);
        QCOMPARE(m_poll->pending.bPendingCtRatio, kFalse);
        QCOMPARE(m_on->meter->requestLog().size(), 11);
    }

    void aFailedCommandLeavesTheLaterOnesPending()
    {
        recordServing(&PendingCommands::bPendingSetTime, "time");
        recordServing(&PendingCommands::bPendingWiring, "wiring");
        m_poll->pending.bPendingSetTime = kTrue;
        m_poll->pending.bPendingWiring = kTrue;
        failTransaction(10);
        m_poll->Timer1Sec_Timer();
        QCOMPARE(m_served, QStringList{"time"});
        QCOMPARE(m_poll->pending.bPendingSetTime, kFalse); // sent once, not repeated
        QCOMPARE(m_poll->pending.bPendingWiring, kTrue);
    }

    void aClickDuringATickOnlySetsItsFlag()
    {
        recordServing(&PendingCommands::bPendingPtRatio2, "pt2");
        m_on->meter->injectFault(Fault::late(150));
        QTimer::singleShot(50, [this] {
            m_poll->pending.bPendingPtRatio2 = kTrue;
            m_poll->Timer1Sec_Timer(); // a tick due while this one waits does not start
        });
        m_poll->Timer1Sec_Timer();
        QCOMPARE(m_on->meter->requestLog().size(), 10);
        QCOMPARE(m_served, QStringList{"pt2"}); // later in the table: served in the same tick
    }

    void displayItemsAreShownAfterTheirCommand()
    {
        recordServing(&PendingCommands::bPendingDisplayItem, "items");
        m_poll->pending.bPendingDisplayItem = kTrue;
        m_poll->Timer1Sec_Timer();
        QCOMPARE(m_poll->display.bDisplayItemSent, kTrue);
        m_poll->Timer1Sec_Timer();
        QVERIFY(m_screen.texts["txt_Display_Item"].startsWith("Display Item  : \r\n1 : "));
        QCOMPARE(m_poll->display.bDisplayItemSent, kFalse);
    }

private:
    // The routine of `flag` writes one register, as every command does, and notes its name.
    void recordServing(PendingCommands::Flag flag, const char* name)
    {
        m_poll->SetRoutine(flag, [this, name] {
            m_served.append(QLatin1String(name));
            RegisterLink& link = m_on->link();
            link.WriteRegisters(link.ModbusAddress, 0x1050, 1, QByteArray::fromHex("0005"));
        });
    }

    // Spoils every attempt of the tick's transaction number `n` (counted from 1).
    void failTransaction(int n)
    {
        m_on->link().bShowFrames = kTrue;
        auto count = std::make_shared<int>(0);
        connect(&m_on->link(), &RegisterLink::requestEcho, this, [this, n, count] {
            if (++*count == n)
                m_on->meter->injectFault(Fault::badCrc(), RegisterLink::kAttempts);
        });
    }

    std::unique_ptr<MeterOnLine> m_on;
    MapScreen m_screen;
    RecordingLists m_lists;
    std::unique_ptr<PollCycle> m_poll;
    QStringList m_served;
};

QTEST_GUILESS_MAIN(PollCycleTest)
#include "PollCycleTest.moc"
