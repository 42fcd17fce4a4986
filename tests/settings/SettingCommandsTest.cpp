// The setting commands on the wire against the simulated meter: the frame each request sends,
// the meter taking it and the history confirming it from the next readings, the tool following
// the meter's new address and line settings, and what is refused or never sent.
#include "MeterOnLine.h"
#include "link/RtuFrames.h"

#include <QLocale>
#include <QSignalSpy>
#include <QTest>

namespace {

struct Command {
    const char* name;
    Setting setting;
    QStringList texts; // one per field, as the operator types or picks them
    const char* frame; // without the CRC
    const char* line;  // the PC port's settings afterwards
};

const QStringList kGroup1{"8", "15", "1", "2", "3", "4", "5", "7", "9", "11", "6", "8", "10", "12"};

const Command kCommands[] = {
    {"clock, Sunday 23:59:07", Setting::Clock, {}, "0f10 1023 0007 0e 001a 000b 000f 0017 003b 0007 0000", "19200,n,8,1"},
    {"address 20", Setting::Address, {"20"}, "0f10 1000 0001 02 0014", "19200,n,8,1"},
    {"baud rate 9600", Setting::BaudRate, {"9600"}, "0f10 1001 0001 02 0001", "9600,n,8,1"},
    {"stop bits 2", Setting::StopBit, {"2"}, "0f10 1002 0001 02 0002", "19200,n,8,2"},
    {"wiring Auto", Setting::Wiring, {"Auto"}, "0f10 1004 0001 02 0000", "19200,n,8,1"},
    {"ct ratio 2400", Setting::CtRatio, {"2400"}, "0f10 1022 0001 02 0960", "19200,n,8,1"},
    {"pt ratio 1 of 120.5", Setting::PtRatio1, {"120.5"}, "0f10 1021 0001 02 04b5", "19200,n,8,1"},
    {"pt ratio 1 of 0.1", Setting::PtRatio1, {"0.1"}, "0f10 1021 0001 02 0001", "19200,n,8,1"},
    {"pt ratio 2 of 11000 / 110", Setting::PtRatio2, {"11000", "110"}, "0f10 4492 0002 04 0000 42c8", "19200,n,8,1"},
    {"serial number shown", Setting::SerialDisplay, {}, "0f10 1051 0001 02 0001", "19200,n,8,1"},
    {"scroll time 3", Setting::ScrollTime, {"3"}, "0f10 1050 0001 02 0003", "19200,n,8,1"},
    {"scroll time 15", Setting::ScrollTime, {"15"}, "0f10 1050 0001 02 000f", "19200,n,8,1"},
    {"item 139 at position 50", Setting::DisplayItem, {"50", "139"}, "0f10 1083 0001 02 008b", "19200,n,8,1"},
    {"clear kWh", Setting::ClearKwh, {}, "0f10 1012 0001 02 0055", "19200,n,8,1"},
    {"group 1, 12 channels", Setting::LpGroup1, QStringList{"12"} + kGroup1.mid(1),
     "0f10 1034 000e 1c 000c 000f 0001 0002 0003 0004 0005 0007 0009 000b 0006 0008 000a 000c", "19200,n,8,1"},
    {"group 2", Setting::LpGroup2, {"4", "15", "6", "12", "13", "14", "1", "2", "3", "4"},
     "0f10 1043 000a 14 0004 000f 0006 000c 000d 000e 0001 0002 0003 0004", "19200,n,8,1"},
    {"clear group 2", Setting::LpClear2, {}, "0f10 1042 0001 02 0033", "19200,n,8,1"},
};

} // namespace

class SettingCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_on = std::make_unique<SessionOnLine>();
        m_on->clock.now = QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7));
        QVERIFY(m_on->begin());
    }
    void cleanup()
    {
        m_on.reset();
        QLocale::setDefault(QLocale::c());
    }

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
        QSignalSpy settled(&settings().history, &SettingsHistory::settled);
        const quint64 id = request(command.setting, command.texts);
        QVERIFY(settings().IsPending(command.setting));
        m_on->tick();
        QCOMPARE(m_on->writes(), QList<QByteArray>{QByteArray(command.frame).replace(' ', "")});
        QCOMPARE(session().connection.Settings(), QString::fromLatin1(command.line));
        QCOMPARE(m_on->lastOutcome(), "waiting for the meter");
        for (int i = 0; i < SettingsHistory::kConfirmTicks && settled.isEmpty(); ++i)
            m_on->tick();
        QCOMPARE(settled.size(), 1);
        const auto outcome = settled.first().first().value<SettingOutcome>();
        QCOMPARE(outcome.id, id);
        QCOMPARE(outcome.result, SettingOutcome::Confirmed);
        QVERIFY(session().OnLine());
    }

    // A command given as a number is normalised: "020" or " +20" writes 20 and the tool follows
    // the meter there, so that it reaches the meter it just moved.
    void theToolFollowsTheAddressWritten_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("020") << "020";
        QTest::newRow("+20 with blanks") << " +20 ";
        QTest::newRow("20.0") << "20.0";
    }
    void theToolFollowsTheAddressWritten()
    {
        QFETCH(QString, typed);
        const int address = int(QLocale::c().toDouble(typed.trimmed()));
        request(Setting::Address, {typed});
        m_on->tick();
        QCOMPARE(int(m_on->meter->holding(0x1000)), address);
        QCOMPARE(session().Address(), address);
        m_on->tick();
        QCOMPARE(m_on->lastOutcome(), "confirmed");
    }

    // The value is read and checked again when the command is served: what the operator typed
    // after asking is never sent unchecked, and a ratio beyond its register is never wrapped.
    void aValueRefusedWhenServedIsNotSentAndSaysWhy_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QString>("why");
        QTest::newRow("ct 0") << int(Setting::CtRatio) << QStringList{"0"} << "CT Ratio Range : 1~2400！";
        QTest::newRow("pt beyond its register") << int(Setting::PtRatio1) << QStringList{"5000"}
                                                << "PT ratio 1 above 3276.7 does not fit the meter's register";
        QTest::newRow("pt 2 over 0") << int(Setting::PtRatio2) << QStringList{"11000", "0"}
                                     << "PT ratio 2 of 11000 / 0 is no value the meter's register holds";
    }
    void aValueRefusedWhenServedIsNotSentAndSaysWhy()
    {
        QFETCH(int, setting);
        QFETCH(QStringList, texts);
        QFETCH(QString, why);
        QStringList field{"100", "110"}; // the operator's field(s): good when asked for
        settings().Request(Setting(setting), [&field, setting] { return ValueFromTexts(Setting(setting), field); },
                           session().connection.Number());
        field = texts; // typed after the click, before the tick
        m_on->tick();
        QVERIFY(m_on->writes().isEmpty());
        QCOMPARE(m_on->lastOutcome(), "not sent: " + why);
        QCOMPARE(session().Status(), why + "; nothing was sent.");
    }

    // Under a locale whose point groups thousands, "2.000" means 2000 to the operator and 2 with
    // a decimal point: it is refused with both readings, never written as either.
    void aNumberWithTwoReadingsIsRefused()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const SourcedValue ct = ValueFromTexts(Setting::CtRatio, {"2.000"});
        QCOMPARE(ct.state, SourcedValue::State::Refused);
        QVERIFY2(ct.reason.contains("2000") && ct.reason.contains(" 2 "), qPrintable(ct.reason));
        QCOMPARE(ValueFromTexts(Setting::PtRatio1, {"1.500"}).state, SourcedValue::State::Refused);
        QCOMPARE(ValueFromTexts(Setting::PtRatio1, {"120,5"}).value.fields, QList<double>{120.5});
        request(Setting::CtRatio, {"2.000"});
        m_on->tick();
        QVERIFY(m_on->writes().isEmpty());
    }

    // A request belongs to its connection: made off line, or after the connection it was asked
    // on ended (off line and on line again), it is recorded as not sent and never sent later.
    void aRequestForAnEndedConnectionIsNeverSent()
    {
        const quint64 asked = session().connection.Number();
        session().ToggleOnLine("15");
        settings().Request(Setting::ClearKwh);
        QCOMPARE(m_on->lastOutcome(), "not sent: the tool is off line");
        session().ToggleOnLine("15");
        session().connection.Timer1Sec.stop();
        settings().Request(Setting::ClearKwh, FixedValue({}), asked);
        QVERIFY(!settings().IsPending(Setting::ClearKwh));
        QVERIFY(m_on->lastOutcome().startsWith("not sent: the tool went off line after it was asked for"));
        m_on->tick();
        QVERIFY(m_on->writes().isEmpty());
    }

    // A meter that acknowledges and keeps its old value.
    void aWriteTheMeterDoesNotKeepIsNotConfirmed()
    {
        request(Setting::CtRatio, {"200"});
        m_on->tick();
        m_on->meter->setHolding(0x1022, 5);
        for (int i = 0; i < SettingsHistory::kConfirmTicks; ++i)
            m_on->tick();
        QCOMPARE(m_on->lastOutcome(), "not confirmed within 3 ticks");
        QCOMPARE(settings().history.Entries().last().from, "5");
        QCOMPARE(settings().history.Entries().last().to, "200");
    }

    // The meter refuses an address it cannot take: each attempt ends as a time-out and the
    // tool goes off line, naming the exception in the history. The clock written before it in
    // the same tick can no longer be confirmed.
    void aRefusedWriteNamesTheException()
    {
        settings().Request(Setting::Clock);
        request(Setting::Address, {"248"});
        m_on->tick();
        QVERIFY(!session().OnLine());
        const auto& entries = settings().history.Entries();
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].Text(), "not confirmed: the tool went off line");
        QCOMPARE(entries[1].Text(), "refused: exception 3 (Illegal Data Value)");
        QCOMPARE(entries[1].exception, quint8(3));
        QCOMPARE(int(m_on->meter->holding(0x1000)), 15);
    }

private:
    MeterSession& session() { return *m_on->session; }
    MeterSettings& settings() { return m_on->session->settings; }
    quint64 request(Setting setting, const QStringList& texts)
    {
        return settings().Request(setting, [setting, texts] { return ValueFromTexts(setting, texts); },
                                  session().connection.Number());
    }

    std::unique_ptr<SessionOnLine> m_on;
};

QTEST_GUILESS_MAIN(SettingCommandsTest)
#include "SettingCommandsTest.moc"
