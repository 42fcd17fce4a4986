#pragma once

#include "link/Bool16.h"
#include "settings/PendingCommands.h"
#include "settings/SettingOutcome.h"
#include "settings/SettingTable.h"
#include "settings/SettingsHistory.h"

#include <QList>
#include <QObject>

#include <functional>

class Clock;
class Connection;
class PollCycle;

// A setting as the meter holds it now, beside a value it could be written with.
struct SettingReadbackRow {
    Setting setting;
    QString meter; // empty until a reading holds it
    bool differs;  // the meter holds something other than the value
};

// The meter's settings: the commands that write them, asked for with a value and answered with
// a typed outcome.
//
// A request only marks its command as pending; the next tick that reads the meter cleanly
// sends it, taking its value from the request's source at that moment and checking it again.
// A request belongs to the connection it was made on: made off line, or served after the tool
// went off line since, it is not sent. After a write of the meter's address, baud rate or stop
// bits the tool follows the meter there at once, whether or not the meter acknowledged. Every
// write, and every command that could not be sent, goes into the history, where the following
// ticks' readings confirm it.
class MeterSettings : public QObject {
    Q_OBJECT
public:
    MeterSettings(Connection& connection, PollCycle& poll, const Clock& clock, QObject* parent = nullptr);

    // Asks for `setting` to be written with what `source` gives when the command is served, on
    // the connection numbered `connection` (see Connection::Number). The request's number, by
    // which the history and `settled` name its outcome.
    quint64 Request(Setting setting, ValueSource source, quint64 connection);
    // The same with a fixed value, on the connection of the moment.
    quint64 Request(Setting setting, const SettingValue& value = {});
    bool IsPending(Setting setting) const { return pending.IsPending(setting); }

    // The tool went off line: the commands still pending are dropped, and the writes still
    // waiting for a reading stay unconfirmed. How many commands were dropped.
    int WentOffLine();

    // What the meter holds of each of the tab's settings, against the value `chosen` gives
    // (a setting without a value, or an empty one, only shows the meter's).
    QList<SettingReadbackRow> ReadBack(const std::function<SourcedValue(Setting)>& chosen) const;

    // After a write of the address, baud rate or stop bits: moves the tool to the meter's new
    // setting. By default the connection takes the value written; the window moves its lists
    // the way its operator expects, and they choose the address and line.
    std::function<void(Setting setting, const SettingValue& written)> follow;

    SettingsHistory history;
    PendingCommands pending;
    // Whether the tool believes the meter shows its serial number. Nothing sets it, so the
    // command always asks to show it; the test keeps it ready to become a toggle.
    Bool16 bMfgSerialShown = kFalse;

signals:
    // A new reading came in: the read-back may have changed.
    void readBackChanged();
    // A display item was sent: the meter's list of items is to be shown once more.
    void displayItemSent();

private:
    void Serve(const PendingRequest& request);
    void Send(const PendingRequest& request, const RegisterWrite& write);
    void NotSent(const PendingRequest& request, SettingOutcome::Result result, const QString& why);
    void FollowDirectly(Setting setting, const SettingValue& written);

    Connection& m_connection;
    PollCycle& m_poll;
    const Clock& m_clock;
    quint64 m_lastRequest = 0;
};
