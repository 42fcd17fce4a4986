#include "session/MeterSession.h"

MeterSession::MeterSession(const SessionPorts& ports, QObject* parent)
    : QObject(parent),
      connection(ports.prompts),
      poll(connection, ports.clock),
      settings(connection, poll, ports.clock),
      numberLists(ports.intervalLists, connection.status),
      download(connection, poll, ports.prompts, ports.clock),
      traffic(ports.clock),
      freshness(connection, poll)
{
    connect(&connection.status, &StatusLine::changed, this, &MeterSession::statusChanged);
    connect(&connection.link, &RegisterLink::requestEcho, this, &MeterSession::requestEcho);
    connect(&connection.link, &RegisterLink::frame, &traffic, &TrafficLog::Add);
    connect(&poll, &PollCycle::tickEnded, &traffic, &TrafficLog::NoteTick);
    // The interval lists follow each new count of valid intervals, and warn just before.
    connect(&poll, &PollCycle::blockRead, &numberLists, [this](MeterReading::Block block, const MeterReading& reading) {
        if (block == MeterReading::RealTimeImage)
            numberLists.WarnIfListsWillChange(reading);
    });
    connect(&poll, &PollCycle::intervalCountsDue, &numberLists, &LpNumberLists::RefreshLpNumberLists);
    connect(&connection, &Connection::onLineChanged, this, [this](bool onLine, const QString& reason) {
        if (onLine)
            m_offLineReason.clear();
        else
            WentOffLine(reason);
        emit onLineChanged(onLine);
    });
}

void MeterSession::WentOffLine(const QString& reason)
{
    download.StopForOffLine();
    QString why = reason;
    if (const int dropped = settings.WentOffLine(); dropped > 0) {
        why += (why.isEmpty() ? QString() : QStringLiteral(" "))
            + (dropped == 1 ? QStringLiteral("1 pending command was dropped, not sent.")
                            : QStringLiteral("%1 pending commands were dropped, not sent.").arg(dropped));
    }
    // Kept beside the connection state until the next "On Line": the status line is the poll
    // cycle's and may be cleared by the tick that was interrupted.
    m_offLineReason = why;
    if (!why.isEmpty())
        connection.status.Set(why);
}

void MeterSession::StopTimers()
{
    connection.Timer1Sec.stop();
    download.Timer_RS_Lpf.stop();
}

void MeterSession::Form_Unload()
{
    StopTimers();
    if (connection.bOnLine.isTrue())
        connection.GoOffLine();
}
