#pragma once

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "connection/ReadingFreshness.h"
#include "connection/SessionPorts.h"
#include "connection/TrafficLog.h"
#include "loadprofile/LpDownload.h"
#include "loadprofile/LpGroupSettings.h"
#include "settings/MeterSettings.h"

#include <QObject>

// The whole conversation with the meter, without a widget: the connection and its choices,
// the poll cycle with the pending commands, the meter's settings, the load-profile download, and
// the rule of going off line. The window drives it through the operator's actions below and
// follows it through the ports and the signals; a command-line front end can drive the same
// session under QCoreApplication.
class MeterSession : public QObject {
    Q_OBJECT
public:
    explicit MeterSession(const SessionPorts& ports, QObject* parent = nullptr);

    // The operator's choices. The port is an entry of the list given to SetPortEntries.
    void SetPortEntries(const QList<PortEntry>& entries) { connection.SetPortEntries(entries); }
    void ChoosePort(int listIndex) { connection.Combo_CommPort_Click(listIndex); }
    void ChooseLine(const QString& baudRate, const QString& stopBits) { connection.ChooseLine(baudRate, stopBits); }
    // The address every request goes to: the whole number of the picked text.
    void ChooseAddress(const QString& addressText) { connection.ChooseAddress(addressText); }
    void On_Line_Click(const QString& addressText) { connection.On_Line_Click(addressText); }
    void ShowFrames(bool on) { connection.link.bShowFrames = toBool16(on); }

    // Stops both timers: the window's start and its end.
    void StopTimers();
    // The window closes: the timers stop and every wait ends, so the program ends at once.
    void Form_Unload();

    Connection connection;
    PollCycle poll;
    MeterSettings settings;
    LpGroupSettings lpGroups;
    LpDownload download;
    // The frames on the line and their counters, for the traffic monitor.
    TrafficLog traffic;
    ReadingFreshness freshness;

signals:
    // After the connection changed state and the session has followed.
    void onLineChanged(bool onLine);
    // The request echo, one frame at a time, while frames are shown.
    void requestEcho(const QString& text);

private:
    void WentOffLine(const QString& reason);

    Screen& m_screen;
};
