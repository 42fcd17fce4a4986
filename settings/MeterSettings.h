#pragma once

#include "connection/PendingCommands.h"
#include "connection/SessionPorts.h"
#include "link/Bool16.h"
#include "settings/InputChecks.h"
#include "settings/Setting.h"
#include "settings/SettingWrites.h"
#include "settings/SettingsHistory.h"

#include <QList>
#include <QObject>

#include <optional>

class Connection;
class PollCycle;

// A setting on the "Meter Settig" tab as the meter holds it now, beside the operator's choice.
struct SettingReadbackRow {
    Setting setting;
    QString meter;      // empty until a reading holds it
    bool differs;       // the meter holds something other than what the button would write now
};

// The meter's settings: the buttons of the "Meter Settig" tab, the checks of its typed fields,
// and the writes the poll cycle sends for them.
//
// A button only asks for its command; the next tick that reads the meter cleanly sends it,
// reading the operator's choice at that moment. After a write of the meter's address, baud
// rate or stop bits the tool follows the meter there at once, whether or not the meter
// acknowledged. Every write, and every command that could not be sent, goes into the history,
// where the following ticks' readings confirm it.
class MeterSettings : public QObject {
    Q_OBJECT
public:
    MeterSettings(Connection& connection, PollCycle& poll, const SessionPorts& ports, QObject* parent = nullptr);

    // The buttons. Those of a typed value ask only while their field holds text.
    void cmd_Test_Modbus_Click();
    void Cmd_Modbus_BaudRate_Click();
    void Comm_Change_StopBit_Click();
    void Comm_ChangeWiring_Click();
    void Cmd_PT_Ratio_Click();
    void Comm_change_VT_Click();
    void Cmd_CT_Ratio_Click();
    void Comm_SetTime_Click();
    // Asks the operator first; clears the counters only on OK.
    void Command1_Click();
    void Cmd_Dis_MFGSerial_Click();
    void Command5_Click();
    void Command6_Click();

    // The checks as a typed field loses the focus: a refused value is reported and emptied.
    void Combo_Modbus_add_Validate();
    // A whole number accepted here becomes the address every request goes to.
    void Combo_Modbus_add_sel_Validate();
    void Combo_CT_Ratio_Validate();
    void Combo_PT_Ratio_Validate();

    // The tab's settings as the last reading reported them, against the choices made now.
    QList<SettingReadbackRow> ReadBack() const;

    SettingsHistory history;
    // Whether the tool believes the meter shows its serial number. Nothing sets it, so the
    // button always asks to show it; the test keeps it ready to become a toggle.
    Bool16 bMfgSerialShown = kFalse;

signals:
    // A new reading came in: the read-back may have changed.
    void readBackChanged();

private:
    void Request(PendingCommands::Flag flag);
    void RequestIfFilled(PendingCommands::Flag flag, std::initializer_list<const char*> fields);
    bool Validate(TypedField field, const char* control);

    void Serve(Setting setting);
    bool LeftEmpty(Setting setting) const;
    std::optional<RegisterWrite> ChosenWrite(Setting setting) const;
    void Send(Setting setting, const RegisterWrite& write);
    void FollowAddress(const QString& addressText, quint16 address);
    void FollowLine(const char* pcList, int listIndex);
    QString TypedText(Setting setting) const;
    void NotSent(Setting setting);

    Connection& m_connection;
    PollCycle& m_poll;
    const SessionPorts m_ports;
};
