#include "connection/MeterSession.h"

#include "ports/Screen.h"

MeterSession::MeterSession(const SessionPorts& ports, QObject* parent)
    : QObject(parent),
      connection(ports.prompts),
      poll(connection, ports.screen, ports.intervalLists, ports.clock),
      settings(connection, poll, ports),
      lpGroups(connection, poll, ports),
      download(connection, poll, ports),
      traffic(ports.clock),
      freshness(connection, poll),
      m_screen(ports.screen)
{
    connect(&connection.link, &RegisterLink::statusText, this,
            [this](const QString& text) { m_screen.SetText(QStringLiteral("Text6"), text); });
    connect(&connection.link, &RegisterLink::requestEcho, this, &MeterSession::requestEcho);
    connect(&connection.link, &RegisterLink::frame, &traffic, &TrafficLog::Add);
    connect(&poll, &PollCycle::tickEnded, &traffic, &TrafficLog::NoteTick);
    connect(&connection, &Connection::onLineChanged, this, [this](bool onLine, const QString& reason) {
        if (onLine) {
            m_screen.SetText(QStringLiteral("txt_Online"), QStringLiteral("On Line"));
            m_screen.SetText(QStringLiteral("txt_OffLineReason"), QString());
        } else {
            WentOffLine(reason);
        }
        emit onLineChanged(onLine);
    });
}

void MeterSession::WentOffLine(const QString& reason)
{
    m_screen.SetText(QStringLiteral("txt_Online"), QStringLiteral("Off Line"));
    download.StopForOffLine();
    QString why = reason;
    if (const int dropped = poll.pending.DropAll(); dropped > 0) {
        why += (why.isEmpty() ? QString() : QStringLiteral(" "))
            + (dropped == 1 ? QStringLiteral("1 pending command was dropped, not sent.")
                            : QStringLiteral("%1 pending commands were dropped, not sent.").arg(dropped));
    }
    // Kept beside the connection state until the next "On Line": the status line is the poll
    // cycle's and may be cleared by the tick that was interrupted.
    m_screen.SetText(QStringLiteral("txt_OffLineReason"), why);
    if (!why.isEmpty())
        m_screen.SetText(QStringLiteral("Text6"), why);
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
