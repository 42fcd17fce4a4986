#pragma once

#include "connection/PortCatalog.h"
#include "connection/PortTransport.h"
#include "connection/StatusLine.h"
#include "link/RegisterLink.h"
#include "link/WatchedFlag.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

class OperatorPrompts;

// The settings string of the PC's port: baud rate, ",n,8,", stop bits ("19200,n,8,1").
QString SettingsString(const QString& baudRate, const QString& stopBits);

// The tool's one connection to the meter: the port, the on-line state and the poll timer.
// Going on line opens the port with the chosen number and settings string (a serial device,
// or a device server at "tcp://host:port"), rebuilds the CRC tables and starts `Timer1Sec`;
// going off line closes the port and stops it again. Its owner follows through
// `onLineChanged`.
class Connection : public QObject {
    Q_OBJECT
public:
    // A tick's nine reads carry 753 bytes, 392 ms of wire time at 19200 baud (10 bits per
    // character), so at the meter's speeds ticks follow each other as fast as the line allows.
    // The interval only caps the rate on a faster line: 201 ms, just under five ticks a second.
    static constexpr int kPollIntervalMs = 201;

    explicit Connection(OperatorPrompts& prompts, QObject* parent = nullptr);

    // The entries of the port list, in list order; port number n is entry n - 1.
    void SetPortEntries(const QList<PortEntry>& entries) { m_entries = entries; }
    const QList<PortEntry>& PortEntries() const { return m_entries; }

    // Port number := list index + 1.
    void ChoosePortIndex(int listIndex) { m_portNumber = listIndex + 1; }
    int PortNumber() const { return m_portNumber; }

    // The settings string built by the baud-rate and stop-bit lists. Kept as it stands and
    // applied at once when the port is open.
    void SetSettings(const QString& settings);
    const QString& Settings() const { return m_settings; }
    // The settings string of the baud rate and stop bits picked.
    void ChooseLine(const QString& baudRate, const QString& stopBits) { SetSettings(SettingsString(baudRate, stopBits)); }
    // The baud rate and stop bits of the settings string: "19200" and "1".
    QString BaudRate() const { return m_settings.section(QLatin1Char(','), 0, 0); }
    QString StopBits() const { return m_settings.section(QLatin1Char(','), 3, 3); }
    // The address every request goes to: the whole number of the picked text; a text without
    // one leaves it as it was.
    void ChooseAddress(const QString& addressText);
    // The address every request goes to.
    int Address() const { return link.ModbusAddress; }

    // The number of the connection: it changes whenever the tool goes on line or off line, so
    // that a command asked for on one connection is recognised on any later one.
    quint64 Number() const { return m_number; }

    // Toggles the connection. `addressText` is the text of the address list: an empty one is
    // refused before anything else happens. Reaching a network address yields to the event
    // loop; a click meanwhile goes off line and abandons the attempt.
    void ToggleOnLine(const QString& addressText);
    // Closes the port and takes the off-line state, for `reason` (empty when the operator
    // asked for it).
    void GoOffLine(const QString& reason = QString());
    // What the operator should look at when transactions gave up the way `last` failed: the
    // second half of the off-line reason.
    static QString WhatToCheck(const TransactionResult& last);

    // The device of the chosen port ("/dev/ttyUSB0", "tcp://host:port", the simulated meter's
    // path, started if need be), or an empty string with the reason in `error`.
    QString ChosenDevice(QString* error) const { return DeviceFor(m_portNumber, error); }

    // Starts the simulated meter when its entry is chosen and gives its device path, or an
    // empty string with the reason in `error`.
    std::function<QString(QString* error)> simulatedMeterDevice;

    WatchedFlag bOnLine;
    PortTransport port;
    RegisterLink link;
    QTimer Timer1Sec;
    StatusLine status;

signals:
    // Emitted after every change of state, also after a failed attempt to go on line. Off
    // line, `reason` says why when the operator did not ask for it: the port failed, or the
    // meter stopped answering.
    void onLineChanged(bool onLine, const QString& reason);

private:
    bool OpenPort(QString* error);
    QString DeviceFor(int number, QString* error) const;
    void OffLineTail(const QString& reason);
    void PortError(const QString& detail);

    OperatorPrompts& m_prompts;
    QList<PortEntry> m_entries;
    int m_portNumber = 1;
    QString m_settings;
    quint64 m_onLineAttempts = 0;
    quint64 m_number = 0;
};
