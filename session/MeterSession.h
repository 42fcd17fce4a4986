#pragma once

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "connection/ReadingFreshness.h"
#include "connection/TrafficLog.h"
#include "loadprofile/LpDownload.h"
#include "loadprofile/LpNumberLists.h"
#include "ports/SessionPorts.h"
#include "settings/MeterSettings.h"

#include <QObject>

// The whole conversation with the meter, without a widget: the connection and its choices,
// the poll cycle, the meter's settings with their requests and outcomes, the load-profile
// download, and the rule of going off line. Front ends drive it with typed calls and follow it
// through its state and signals: the window binds its controls to it, the command-line tool
// runs the same session under QCoreApplication.
class MeterSession : public QObject {
    Q_OBJECT
public:
    explicit MeterSession(const SessionPorts& ports, QObject* parent = nullptr);

    // The operator's choices. The port is an entry of the list given to SetPortEntries.
    void SetPortEntries(const QList<PortEntry>& entries) { connection.SetPortEntries(entries); }
    void ChoosePort(int listIndex) { connection.ChoosePortIndex(listIndex); }
    void ChooseLine(const QString& baudRate, const QString& stopBits) { connection.ChooseLine(baudRate, stopBits); }
    // The address every request goes to: the whole number of the picked text.
    void ChooseAddress(const QString& addressText) { connection.ChooseAddress(addressText); }
    // Goes on line at the address `addressText` names, or off line when on line.
    void ToggleOnLine(const QString& addressText) { connection.ToggleOnLine(addressText); }
    void ShowFrames(bool on) { connection.link.bShowFrames = toBool16(on); }

    // The state the session talks at now.
    bool OnLine() const { return connection.bOnLine.isTrue(); }
    int Address() const { return connection.Address(); }
    QString BaudRate() const { return connection.BaudRate(); }
    QString StopBits() const { return connection.StopBits(); }
    // The status line's text.
    const QString& Status() const { return connection.status.Text(); }
    // Why the tool went off line, when the operator did not ask for it, and which commands
    // were dropped with it; empty while on line and until then.
    const QString& OffLineReason() const { return m_offLineReason; }
    const MeterReading& Reading() const { return poll.Reading(); }

    // A setting command on the connection of the moment, or on `connection` (see
    // Connection::Number): a question asked before the request keeps the number it was asked
    // on, so that an answer given after the line changed sends nothing.
    quint64 Request(Setting setting, const SettingValue& value = {}) { return settings.Request(setting, value); }
    quint64 Request(Setting setting, ValueSource source, quint64 connectionNumber)
    {
        return settings.Request(setting, std::move(source), connectionNumber);
    }

    // Stops both timers: the window's start and its end.
    void StopTimers();
    // The window closes: the timers stop and every wait ends, so the program ends at once.
    void Form_Unload();

    Connection connection;
    PollCycle poll;
    MeterSettings settings;
    LpNumberLists numberLists;
    LpDownload download;
    // The frames on the line and their counters, for the traffic monitor.
    TrafficLog traffic;
    ReadingFreshness freshness;

signals:
    // After the connection changed state and the session has followed.
    void onLineChanged(bool onLine);
    void statusChanged(const QString& text);
    // The request echo, one frame at a time, while frames are shown.
    void requestEcho(const QString& text);

private:
    void WentOffLine(const QString& reason);

    QString m_offLineReason;
};
