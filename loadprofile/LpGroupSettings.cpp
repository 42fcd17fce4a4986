#include "loadprofile/LpGroupSettings.h"

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "connection/TextNumbers.h"
#include "link/RtuFrames.h"
#include "ports/OperatorChoices.h"
#include "ports/OperatorPrompts.h"
#include "ports/Screen.h"

namespace {

// Where each group's configuration lives in the meter.
struct GroupRegisters {
    quint16 clear;    // the clear command register
    quint16 settings; // channel count, interval, then one code per channel
    int channels;     // channel code registers
    const char* lists;
    PendingCommands::Flag send;
    PendingCommands::Flag clearFlag;
};

constexpr GroupRegisters kGroups[] = {
    {0x1033, 0x1034, 12, "Combo_G1_Setting", &PendingCommands::bPendingLpG1Set, &PendingCommands::bPendingLpG1Clear},
    {0x1042, 0x1043, 8, "Combo_G2_Setting", &PendingCommands::bPendingLpG2Set, &PendingCommands::bPendingLpG2Clear},
};

constexpr quint16 kClearGroupCommand = 0x33;
const QString kConfirmCaption = QStringLiteral("Load Profile");

} // namespace

LpGroupSettings::LpGroupSettings(Connection& connection, PollCycle& poll, const SessionPorts& ports, QObject* parent)
    : QObject(parent), m_connection(connection), m_poll(poll), m_ports(ports)
{
    for (int group : {0, 1}) {
        m_poll.SetRoutine(kGroups[group].send, [this, group] { SendLpGroupSetting(group); });
        m_poll.SetRoutine(kGroups[group].clearFlag, [this, group] { ClearLpGroupData(group); });
    }
}

// Only the channel count is compared: a new interval or channel code keeps the records. Before
// the meter was first read there is no count to compare with, so the operator is asked.
void LpGroupSettings::AskToSend(int group)
{
    const GroupRegisters& g = kGroups[group];
    const MeterReading& reading = m_poll.Reading();
    const QString reported = reading.Has(MeterReading::RealTimeImage)
        ? QString::number(reading.loadProfile[std::size_t(group)].channelCount)
        : QString();
    const QString chosen = m_ports.choices.Text(Element(g.lists, 0));
    if (chosen == reported || m_ports.prompts.Confirm(kConfirmCaption, QStringLiteral("Warning : You will delete Load Profile Data ")))
        m_poll.pending.*g.send = kTrue;
}

void LpGroupSettings::AskToClear(int group)
{
    const QString question = group == 0 ? QStringLiteral("Clear Group1 Data？") : QStringLiteral("Clear Group2 Data？");
    if (m_ports.prompts.Confirm(kConfirmCaption, question))
        m_poll.pending.*kGroups[group].clearFlag = kTrue;
}

// All channel codes of the group are written, whatever the channel count chosen. The lists
// offer only numbers; a text that is none would be no setting at all, so nothing is sent.
void LpGroupSettings::SendLpGroupSetting(int group)
{
    const GroupRegisters& g = kGroups[group];
    const int values = 2 + g.channels;
    QList<quint16> data;
    for (int i = 0; i < values; ++i) {
        const auto value = WholeNumberOf(m_ports.choices.Text(Element(g.lists, i)));
        if (!value)
            return;
        data.append(quint16(*value));
    }
    RegisterLink& link = m_connection.link;
    link.WriteRegisters(link.ModbusAddress, g.settings, quint16(values), Rtu::RegisterData(data));
}

void LpGroupSettings::ClearLpGroupData(int group)
{
    RegisterLink& link = m_connection.link;
    link.WriteRegisters(link.ModbusAddress, kGroups[group].clear, 1, Rtu::RegisterData({kClearGroupCommand}));
}
