// The setting commands on the wire against the simulated meter: the frame each button sends,
// the meter taking it and the history confirming it from the next readings, the tool following
// the meter's new address and line settings, and what is refused or never sent.
#include "MeterOnLine.h"
#include "link/RtuFrames.h"

#include <QTest>

using sim::Fault;

namespace {

using Click = void (MeterSettings::*)();

// A choice as the operator makes it: an entry picked by index, or a text typed.
struct Choice {
    const char* control;
    int pick = -1;
    const char* typed = nullptr;
};

struct Command {
    const char* name;
    QList<Choice> choices;
    Click click;
    const char* frame; // without the CRC
    const char* line;  // the PC port's settings afterwards
};

const Command kCommands[] = {
    {"clock, Sunday 23:59:07", {}, &MeterSettings::Comm_SetTime_Click,
     "0f10 1023 0007 0e 001a 000b 000f 0017 003b 0007 0000", "19200,n,8,1"},
    {"address 20 picked", {{"Combo_Modbus_add", 19}}, &MeterSettings::cmd_Test_Modbus_Click,
     "0f10 1000 0001 02 0014", "19200,n,8,1"},
    {"baud rate 9600", {{"Combo_Modbus_BaudRate", 0}}, &MeterSettings::Cmd_Modbus_BaudRate_Click,
     "0f10 1001 0001 02 0001", "9600,n,8,1"},
    {"stop bits 2", {{"Combo_SetStopBit", 1}}, &MeterSettings::Comm_Change_StopBit_Click,
     "0f10 1002 0001 02 0002", "19200,n,8,2"},
    {"wiring Auto", {{"Combo_SetWiring", 0}}, &MeterSettings::Comm_ChangeWiring_Click,
     "0f10 1004 0001 02 0000", "19200,n,8,1"},
    {"ct ratio 2400", {{"Combo_CT_Ratio", -1, "2400"}}, &MeterSettings::Cmd_CT_Ratio_Click,
     "0f10 1022 0001 02 0960", "19200,n,8,1"},
    {"pt ratio 1 of 120.5", {{"Combo_PT_Ratio", -1, "120.5"}}, &MeterSettings::Cmd_PT_Ratio_Click,
     "0f10 1021 0001 02 04b5", "19200,n,8,1"},
    {"pt ratio 1 of 0.1", {{"Combo_PT_Ratio", -1, "0.1"}}, &MeterSettings::Cmd_PT_Ratio_Click,
     "0f10 1021 0001 02 0001", "19200,n,8,1"},
    {"pt ratio 2 of 11000 / 110", {{"txtPT1", -1, "11000"}, {"txtPT2", -1, "110"}},
     &MeterSettings::Comm_change_VT_Click, "0f10 4492 0002 04 0000 42c8", "19200,n,8,1"},
    {"serial number shown", {}, &MeterSettings::Cmd_Dis_MFGSerial_Click, "0f10 1051 0001 02 0001", "19200,n,8,1"},
    {"scroll time first entry", {{"Combo1", 0}}, &MeterSettings::Command6_Click, "0f10 1050 0001 02 0003", "19200,n,8,1"},
    {"scroll time 15", {{"Combo1", 12}}, &MeterSettings::Command6_Click, "0f10 1050 0001 02 000f", "19200,n,8,1"},
    {"item 139 at position 50", {{"Combo_Display_Ser_sel", 49}, {"Combo_Display_Item_sel", 50}},
     &MeterSettings::Command5_Click, "0f10 1083 0001 02 008b", "19200,n,8,1"},
    {"clear kWh", {}, &MeterSettings::Command1_Click, "0f10 1012 0001 02 0055", "19200,n,8,1"},
};

} // namespace

Q_DECLARE_METATYPE(Choice)

class SettingCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_on = std::make_unique<SessionOnLine>();
        m_on->clock.now = QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7));
        QVERIFY(m_on->begin());
        m_on->screen.FillStartUpLists();
    }
    void cleanup() { m_on.reset(); }

    void eachCommandWritesItsFrameAndTheMeterConfirmsIt_data()
    {
        QTest::addColumn<int>("row");
        for (int i = 0; i < int(std::size(kCommands)); ++i)
            QTest::newRow(kCommands[i].name) << i;
    }
    void eachCommandWritesItsFrameAndTheMeterConfirmsIt()
    {
        QFETCH(int, row);
        const Command& command = kCommands[row];
        for (const Choice& choice : command.choices)
            choose(choice);
        (settings().*command.click)();
        tick();
        const auto log = m_on->meter->requestLog();
        QCOMPARE(log.size(), qsizetype(PollPlan::kBlocks.size() + 1));
        QCOMPARE(log.last().frame.chopped(2).toHex(), QByteArray(command.frame).replace(' ', ""));
        QCOMPARE(session().connection.Settings(), QString::fromLatin1(command.line));
        QCOMPARE(lastOutcome(), "waiting for the meter");
        for (int i = 0; i < SettingsHistory::kConfirmTicks && lastOutcome() != "confirmed"; ++i)
            tick();
        QCOMPARE(lastOutcome(), "confirmed");
        QVERIFY(session().connection.bOnLine.isTrue());
    }

    // Above 60 the typed address is appended to the list the tool talks by, each time; up to
    // 60 the entry of the same index is picked, or none when the address was typed.
    void theToolFollowsTheNewAddress_data()
    {
        QTest::addColumn<Choice>("choice");
        QTest::addColumn<int>("times");
        QTest::addColumn<int>("entries");
        QTest::addColumn<int>("picked");
        QTest::addColumn<int>("address");
        QTest::newRow("61 appended") << Choice{"Combo_Modbus_add", -1, "61"} << 1 << 248 << 247 << 61;
        QTest::newRow("61 twice, kept twice") << Choice{"Combo_Modbus_add", -1, "61"} << 2 << 249 << 248 << 61;
        QTest::newRow("200 picked, appended") << Choice{"Combo_Modbus_add", 199} << 1 << 248 << 247 << 200;
        QTest::newRow("20 picked") << Choice{"Combo_Modbus_add", 19} << 1 << 247 << 19 << 20;
        QTest::newRow("20 typed: no pick") << Choice{"Combo_Modbus_add", -1, "20"} << 1 << 247 << -1 << 15;
    }
    void theToolFollowsTheNewAddress()
    {
        QFETCH(Choice, choice);
        QFETCH(int, times);
        QFETCH(int, entries);
        QFETCH(int, picked);
        QFETCH(int, address);
        choose(choice);
        for (int i = 0; i < times; ++i) {
            settings().cmd_Test_Modbus_Click();
            tick();
        }
        QCOMPARE(m_on->screen.Count("Combo_Modbus_add_sel"), entries);
        QCOMPARE(m_on->screen.ListIndex("Combo_Modbus_add_sel"), picked);
        QCOMPARE(int(session().connection.link.ModbusAddress), address);
        QCOMPARE(int(m_on->meter->holding(0x1000)), choice.typed ? QString(choice.typed).toInt() : choice.pick + 1);
    }

    void anEmptyFieldAsksForNothing()
    {
        for (const char* field : {"Combo_Modbus_add", "Combo_PT_Ratio", "Combo_CT_Ratio", "txtPT1"})
            m_on->screen.SetText(field, QString());
        m_on->screen.SetText("txtPT2", "110");
        settings().cmd_Test_Modbus_Click();
        settings().Cmd_PT_Ratio_Click();
        settings().Cmd_CT_Ratio_Click();
        settings().Comm_change_VT_Click();
        const PendingCommands& p = session().poll.pending;
        QCOMPARE(p.bPendingModbusAddr | p.bPendingPtRatio | p.bPendingCtRatio | p.bPendingPtRatio2, kFalse);
    }

    void aPtRatio1BeyondItsRegisterIsNotSentAndSaysWhy()
    {
        choose({"Combo_PT_Ratio", -1, "5000"});
        settings().Cmd_PT_Ratio_Click();
        tick();
        QCOMPARE(m_on->meter->requestLog().size(), qsizetype(PollPlan::kBlocks.size()));
        const QString why = "PT ratio 1 above 3276.7 does not fit the meter's register";
        QCOMPARE(m_on->screen.texts["Text6"], why + "; nothing was sent.");
        QCOMPARE(lastOutcome(), "not sent: " + why);
    }

    void aRefusedFieldIsReportedAndEmptied()
    {
        choose({"Combo_CT_Ratio", -1, "abc"});
        settings().Combo_CT_Ratio_Validate();
        choose({"Combo_Modbus_add_sel", -1, "12.5"});
        settings().Combo_Modbus_add_sel_Validate();
        QCOMPARE(m_on->prompts.errors, QStringList({"CT Ratio Range : 1~2400！", "Address Range : 1~250！"}));
        QCOMPARE(m_on->screen.Text("Combo_CT_Ratio"), QString());
        QCOMPARE(m_on->screen.Text("Combo_Modbus_add_sel"), QString());
        QCOMPARE(int(session().connection.link.ModbusAddress), 15);

        choose({"Combo_Modbus_add_sel", -1, "0"}); // taken here, unlike as a new address
        settings().Combo_Modbus_add_sel_Validate();
        QCOMPARE(int(session().connection.link.ModbusAddress), 0);
        QCOMPARE(m_on->prompts.errors.size(), 2);
    }

    void aClearNotConfirmedAsksForNothing()
    {
        m_on->prompts.answerYes = false;
        settings().Command1_Click();
        QCOMPARE(m_on->prompts.questions, QStringList{"Clr kWh: Clear all total kWh？"});
        QCOMPARE(session().poll.pending.bPendingClearKwh, kFalse);
    }

    // A meter that acknowledges and keeps its old value.
    void aWriteTheMeterDoesNotKeepIsNotConfirmed()
    {
        choose({"Combo_CT_Ratio", -1, "200"});
        settings().Cmd_CT_Ratio_Click();
        tick();
        m_on->meter->setHolding(0x1022, 5);
        for (int i = 0; i < SettingsHistory::kConfirmTicks; ++i)
            tick();
        QCOMPARE(lastOutcome(), "not confirmed within 3 ticks");
        QCOMPARE(settings().history.Entries().last().from, "5");
        QCOMPARE(settings().history.Entries().last().to, "200");
    }

    // The meter refuses an address it cannot take: each attempt ends as a time-out and the
    // tool goes off line, naming the exception in the history. The clock written before it in
    // the same tick can no longer be confirmed.
    void aRefusedWriteNamesTheException()
    {
        choose({"Combo_Modbus_add", -1, "248"});
        settings().Comm_SetTime_Click();
        settings().cmd_Test_Modbus_Click();
        tick();
        QVERIFY(!session().connection.bOnLine.isTrue());
        const auto& entries = settings().history.Entries();
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].outcome, "not confirmed: the tool went off line");
        QCOMPARE(entries[1].outcome, "refused: exception 3 (Illegal Data Value)");
        QCOMPARE(int(m_on->meter->holding(0x1000)), 15);
    }

private:
    MeterSession& session() { return *m_on->session; }
    MeterSettings& settings() { return m_on->session->settings; }
    void tick() { session().poll.Timer1Sec_Timer(); }
    QString lastOutcome() const
    {
        const auto& entries = m_on->session->settings.history.Entries();
        return entries.isEmpty() ? QString() : entries.last().outcome;
    }
    void choose(const Choice& choice)
    {
        if (choice.typed)
            m_on->screen.SetText(choice.control, choice.typed);
        else
            m_on->screen.Select(choice.control, choice.pick);
    }

    std::unique_ptr<SessionOnLine> m_on;
};

QTEST_GUILESS_MAIN(SettingCommandsTest)
#include "SettingCommandsTest.moc"
