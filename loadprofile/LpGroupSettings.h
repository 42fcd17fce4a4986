#pragma once

#include "connection/SessionPorts.h"

#include <QObject>

class Connection;
class PollCycle;

// The two load-profile groups' configuration: the "Setting" and "Clear Group Data" buttons and
// the writes the poll cycle sends for them. Changing a group's channel count makes the meter
// discard that group's records, so the operator confirms it first, and every clear.
class LpGroupSettings : public QObject {
    Q_OBJECT
public:
    LpGroupSettings(Connection& connection, PollCycle& poll, const SessionPorts& ports, QObject* parent = nullptr);

    void Comm_LP_G1_Set_Click() { AskToSend(0); }
    void Comm_LP_G2_Set_Click() { AskToSend(1); }
    void Comm_Clr_G1_Data_Click() { AskToClear(0); }
    void Comm_Clr_G2_Data_Click() { AskToClear(1); }

private:
    void AskToSend(int group);
    void AskToClear(int group);
    // SendLpGroup1Setting and SendLpGroup2Setting: the channel count, the interval and every
    // channel code of the group's lists, in one write.
    void SendLpGroupSetting(int group);
    // ClearLpGroup1Data and ClearLpGroup2Data.
    void ClearLpGroupData(int group);

    Connection& m_connection;
    PollCycle& m_poll;
    const SessionPorts m_ports;
};
