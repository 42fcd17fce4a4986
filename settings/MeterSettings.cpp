#include "settings/MeterSettings.h"

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "connection/TextNumbers.h"
#include "ports/Clock.h"
#include "ports/OperatorChoices.h"
#include "ports/OperatorPrompts.h"
#include "ports/Screen.h"
#include "settings/SettingReadback.h"

namespace {

using Flag = PendingCommands::Flag;

// The command each pending flag sends: SetMeterTime, SetModbusAddress, SetModbusBaudRate,
// SetModbusStopBit, SetCtRatio, SetPtRatio1, SetMfgSerialDisplay, SetScrollTime,
// SetDisplayItem, ClearTotalKwh, SetWiring and SetPtRatio2.
constexpr std::pair<Flag, Setting> kCommands[] = {
    {&PendingCommands::bPendingSetTime, Setting::Clock},
    {&PendingCommands::bPendingModbusAddr, Setting::Address},
    {&PendingCommands::bPendingBaudRate, Setting::BaudRate},
    {&PendingCommands::bPendingStopBit, Setting::StopBit},
    {&PendingCommands::bPendingCtRatio, Setting::CtRatio},
    {&PendingCommands::bPendingPtRatio, Setting::PtRatio1},
    {&PendingCommands::bPendingMfgSerial, Setting::SerialDisplay},
    {&PendingCommands::bPendingScrollTime, Setting::ScrollTime},
    {&PendingCommands::bPendingDisplayItem, Setting::DisplayItem},
    {&PendingCommands::bPendingClearKwh, Setting::ClearKwh},
    {&PendingCommands::bPendingWiring, Setting::Wiring},
    {&PendingCommands::bPendingPtRatio2, Setting::PtRatio2},
};

// The settings shown beside their choices on the tab.
constexpr Setting kReadBack[] = {
    Setting::Address, Setting::BaudRate, Setting::StopBit, Setting::Wiring, Setting::PtRatio1,
    Setting::PtRatio2, Setting::CtRatio, Setting::Clock, Setting::ScrollTime, Setting::DisplayItem,
};

// Addresses up to this one are the first entries of both address lists, in the same order.
constexpr int kListedAddresses = 60;

QString Control(const char* name)
{
    return QString::fromLatin1(name);
}

// The meter wants a short pause before this write. A counter run from 0 to 60000 in steps of
// 2: a busy loop of 30000 passes, 14 µs on a 2-core PC of 2026, far too short for the window
// to miss an event, so it needs no yielding wait. volatile keeps the compiler from dropping it.
void PauseBeforePtRatio2()
{
    for (volatile int pass = 0; pass <= 60000;)
        pass = pass + 2;
}

} // namespace

MeterSettings::MeterSettings(Connection& connection, PollCycle& poll, const SessionPorts& ports, QObject* parent)
    : QObject(parent),
      m_connection(connection),
      m_poll(poll),
      m_ports(ports)
{
    for (const auto& [flag, setting] : kCommands)
        m_poll.SetRoutine(flag, [this, setting = setting] { Serve(setting); });
    connect(&m_poll, &PollCycle::readingTaken, this, [this](const MeterReading& reading) {
        history.Observe(reading);
        emit readBackChanged();
    });
    connect(&m_connection, &Connection::onLineChanged, this, [this](bool onLine) {
        if (!onLine)
            history.WentOffLine();
    });
}

void MeterSettings::Request(Flag flag)
{
    m_poll.pending.*flag = kTrue;
}

void MeterSettings::RequestIfFilled(Flag flag, std::initializer_list<const char*> fields)
{
    for (const char* field : fields) {
        if (m_ports.choices.Text(Control(field)).isEmpty())
            return;
    }
    Request(flag);
}

void MeterSettings::cmd_Test_Modbus_Click() { RequestIfFilled(&PendingCommands::bPendingModbusAddr, {"Combo_Modbus_add"}); }
void MeterSettings::Cmd_Modbus_BaudRate_Click() { Request(&PendingCommands::bPendingBaudRate); }
void MeterSettings::Comm_Change_StopBit_Click() { Request(&PendingCommands::bPendingStopBit); }
void MeterSettings::Comm_ChangeWiring_Click() { Request(&PendingCommands::bPendingWiring); }
void MeterSettings::Cmd_PT_Ratio_Click() { RequestIfFilled(&PendingCommands::bPendingPtRatio, {"Combo_PT_Ratio"}); }
void MeterSettings::Comm_change_VT_Click() { RequestIfFilled(&PendingCommands::bPendingPtRatio2, {"txtPT1", "txtPT2"}); }
void MeterSettings::Cmd_CT_Ratio_Click() { RequestIfFilled(&PendingCommands::bPendingCtRatio, {"Combo_CT_Ratio"}); }
void MeterSettings::Comm_SetTime_Click() { Request(&PendingCommands::bPendingSetTime); }
void MeterSettings::Cmd_Dis_MFGSerial_Click() { Request(&PendingCommands::bPendingMfgSerial); }
void MeterSettings::Command5_Click() { Request(&PendingCommands::bPendingDisplayItem); }
void MeterSettings::Command6_Click() { Request(&PendingCommands::bPendingScrollTime); }

void MeterSettings::Command1_Click()
{
    if (m_ports.prompts.Confirm(QStringLiteral("Clr kWh"), QStringLiteral("Clear all total kWh？")))
        Request(&PendingCommands::bPendingClearKwh);
}

bool MeterSettings::Validate(TypedField field, const char* control)
{
    const FieldCheck check = CheckTypedField(field, m_ports.choices.Text(Control(control)));
    if (!check.accepted) {
        m_ports.prompts.Critical(check.message);
        m_ports.choices.SetText(Control(control), QString());
    }
    return check.accepted;
}

void MeterSettings::Combo_Modbus_add_Validate() { Validate(TypedField::NewAddress, "Combo_Modbus_add"); }
void MeterSettings::Combo_CT_Ratio_Validate() { Validate(TypedField::CtRatio, "Combo_CT_Ratio"); }
void MeterSettings::Combo_PT_Ratio_Validate() { Validate(TypedField::PtRatio, "Combo_PT_Ratio"); }

void MeterSettings::Combo_Modbus_add_sel_Validate()
{
    if (Validate(TypedField::TalkAddress, "Combo_Modbus_add_sel"))
        m_connection.ChooseAddress(m_ports.choices.Text(QStringLiteral("Combo_Modbus_add_sel")));
}

bool MeterSettings::LeftEmpty(Setting setting) const
{
    const auto empty = [this](const char* field) { return m_ports.choices.Text(Control(field)).isEmpty(); };
    switch (setting) {
    case Setting::Address: return empty("Combo_Modbus_add");
    case Setting::PtRatio1: return empty("Combo_PT_Ratio");
    case Setting::CtRatio: return empty("Combo_CT_Ratio");
    case Setting::PtRatio2: return empty("txtPT1") || empty("txtPT2");
    default: return false;
    }
}

std::optional<RegisterWrite> MeterSettings::ChosenWrite(Setting setting) const
{
    namespace W = SettingWrites;
    namespace R = SettingRegister;
    const auto text = [this](const char* control) { return m_ports.choices.Text(Control(control)); };
    // A pick-only list always has a pick; without one there is no code to send.
    const auto listCode = [this](quint16 reg, const char* list, int firstCode) -> std::optional<RegisterWrite> {
        const int index = m_ports.choices.ListIndex(Control(list));
        return index < 0 ? std::nullopt : std::optional(W::ListCode(reg, index, firstCode));
    };
    switch (setting) {
    case Setting::Address: return W::WholeNumber(R::kAddress, text("Combo_Modbus_add"));
    case Setting::BaudRate: return listCode(R::kBaudRate, "Combo_Modbus_BaudRate", 1);
    case Setting::StopBit: return listCode(R::kStopBit, "Combo_SetStopBit", 1);
    case Setting::Wiring: return listCode(R::kWiring, "Combo_SetWiring", 0);
    case Setting::PtRatio1: return W::PtRatio1(text("Combo_PT_Ratio"));
    case Setting::PtRatio2: return W::PtRatio2(text("txtPT1"), text("txtPT2"));
    case Setting::CtRatio: return W::WholeNumber(R::kCtRatio, text("Combo_CT_Ratio"));
    case Setting::Clock: return W::Clock(m_ports.clock.Now());
    case Setting::ScrollTime: return listCode(R::kScrollTime, "Combo1", 3);
    case Setting::DisplayItem: {
        const int position = m_ports.choices.ListIndex(QStringLiteral("Combo_Display_Ser_sel"));
        return position < 0 ? std::nullopt : W::DisplayItem(position, text("Combo_Display_Item_sel"));
    }
    case Setting::SerialDisplay: return W::SerialDisplay(bMfgSerialShown != kFalse);
    case Setting::ClearKwh: return W::ClearKwh();
    }
    return std::nullopt;
}

void MeterSettings::Serve(Setting setting)
{
    if (LeftEmpty(setting))
        return;
    const std::optional<RegisterWrite> write = ChosenWrite(setting);
    if (!write) {
        NotSent(setting);
        return;
    }
    // What the tool follows is what was sent, even if the operator changes the lists while
    // the write waits for its reply.
    const QString addressText = m_ports.choices.Text(QStringLiteral("Combo_Modbus_add"));
    Send(setting, *write);
    if (setting == Setting::Address)
        FollowAddress(addressText, write->values[0]);
    else if (setting == Setting::BaudRate)
        FollowLine("Combo_BaudRate_Sel", write->values[0] - 1);
    else if (setting == Setting::StopBit)
        FollowLine("Combo_StopBit", write->values[0] - 1);
}

void MeterSettings::Send(Setting setting, const RegisterWrite& write)
{
    using namespace SettingReadback;
    const MeterReading before = m_poll.Reading();
    SettingChange change{setting, ReportedText(before, setting, write), WrittenText(setting, write),
                         [setting, write, before](const MeterReading& r) { return Reports(r, setting, write, before); }};
    const QDateTime at = m_ports.clock.Now();
    RegisterLink& link = m_connection.link;
    TransactionOutcome outcome;
    if (setting == Setting::PtRatio2) {
        PauseBeforePtRatio2();
        // Four data bytes, and a zero byte beyond them that the register count leaves out.
        qint16 count = 4;
        outcome = link.WriteRegisters2(link.ModbusAddress, write.start, count, write.Data() + '\0');
    } else {
        outcome = link.WriteRegisters(link.ModbusAddress, write.start, quint16(write.values.size()), write.Data());
    }
    if (outcome == TransactionOutcome::Good)
        history.Written(at, std::move(change));
    else
        history.Ended(at, change, SettingsHistory::FailureText(outcome, link.LastException));
}

// Above the listed addresses the new one is appended, even if the list holds it already;
// up to them the entry of the same index is picked, which is none when the address was typed.
void MeterSettings::FollowAddress(const QString& addressText, quint16 address)
{
    const QString list = QStringLiteral("Combo_Modbus_add_sel");
    if (address > kListedAddresses) {
        m_ports.choices.Append(list, addressText);
        m_ports.choices.Select(list, m_ports.choices.Count(list) - 1);
    } else {
        m_ports.choices.Select(list, m_ports.choices.ListIndex(QStringLiteral("Combo_Modbus_add")));
    }
    if (m_ports.choices.ListIndex(list) >= 0)
        m_connection.ChooseAddress(m_ports.choices.Text(list));
}

// The PC's list holds the meter's entries in the same order: the port takes the same index.
void MeterSettings::FollowLine(const char* pcList, int listIndex)
{
    m_ports.choices.Select(Control(pcList), listIndex);
    m_connection.ChooseLine(m_ports.choices.Text(QStringLiteral("Combo_BaudRate_Sel")),
                            m_ports.choices.Text(QStringLiteral("Combo_StopBit")));
}

QString MeterSettings::TypedText(Setting setting) const
{
    const auto text = [this](const char* control) { return m_ports.choices.Text(Control(control)); };
    switch (setting) {
    case Setting::Address: return text("Combo_Modbus_add");
    case Setting::PtRatio1: return text("Combo_PT_Ratio");
    case Setting::CtRatio: return text("Combo_CT_Ratio");
    case Setting::PtRatio2: return text("txtPT1") + QStringLiteral(" / ") + text("txtPT2");
    default: return QString();
    }
}

// Only a typed value can fail to make a write: one the input check did not see (it runs when
// the field loses the focus), or a PT ratio 1 beyond its register.
void MeterSettings::NotSent(Setting setting)
{
    const QString typed = TypedText(setting);
    const auto value = NumericValue(typed);
    const QString why = setting == Setting::PtRatio1 && value && *value > SettingWrites::kPtRatio1Largest
        ? QStringLiteral("PT ratio 1 above %1 does not fit the meter's register").arg(SettingWrites::kPtRatio1Largest)
        : QStringLiteral("%1 \"%2\" is no value the meter's register holds").arg(SettingName(setting), typed);
    m_ports.screen.SetText(QStringLiteral("Text6"), why + QStringLiteral("; nothing was sent."));
    history.Ended(m_ports.clock.Now(), {setting, QString(), typed, {}}, QStringLiteral("not sent: ") + why);
}

QList<SettingReadbackRow> MeterSettings::ReadBack() const
{
    using namespace SettingReadback;
    const MeterReading& reading = m_poll.Reading();
    QList<SettingReadbackRow> rows;
    for (Setting setting : kReadBack) {
        // Only the display position is needed to name what the meter holds there.
        const std::optional<RegisterWrite> chosen = ChosenWrite(setting);
        const RegisterWrite where = chosen.value_or(RegisterWrite{SettingRegister::kDisplayItems, {}});
        const QString meter = ReportedText(reading, setting, where);
        const bool differs = !meter.isEmpty() && chosen && !Reports(reading, setting, *chosen, reading);
        rows.append({setting, meter, differs});
    }
    return rows;
}
