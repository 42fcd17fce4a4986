#include "connection/Connection.h"

#include "connection/LineSettings.h"
#include "ports/TextNumbers.h"
#include "ports/OperatorPrompts.h"

namespace {

QString UnusableSettings(const QString& settings)
{
    return QStringLiteral("settings \"%1\" cannot be applied").arg(settings);
}

QString PortErrorReason(const QString& detail)
{
    return QStringLiteral("Comm Port Error: ") + detail;
}

} // namespace

QString SettingsString(const QString& baudRate, const QString& stopBits)
{
    return baudRate + QStringLiteral(",n,8,") + stopBits;
}

Connection::Connection(OperatorPrompts& prompts, QObject* parent)
    : QObject(parent), link(port, bOnLine), m_prompts(prompts)
{
    Timer1Sec.setInterval(kPollIntervalMs);
    Timer1Sec.setTimerType(Qt::PreciseTimer);
    connect(&link, &RegisterLink::statusText, &status, &StatusLine::Set);
    connect(&link, &RegisterLink::gaveUp, this, [this](const QString& reason, const TransactionResult& last) {
        GoOffLine(reason + QStringLiteral(" — ") + WhatToCheck(last) + QLatin1Char('.'));
    });
    connect(&port, &Transport::lost, this, [this](const QString& reason) {
        // The waits end first, so that nothing stays blocked behind the message.
        GoOffLine(PortErrorReason(port.Device() + QStringLiteral(": ") + reason));
        m_prompts.Critical(QStringLiteral("Comm Port Error！"));
    });
}

QString Connection::WhatToCheck(const TransactionResult& last)
{
    switch (last.kind) {
    case TransactionResult::TimedOut:
        return QStringLiteral("nothing came back: check the meter's power, the port, the address, the A/B wiring");
    case TransactionResult::Garbled:
    case TransactionResult::CrcError:
        return QStringLiteral("bytes came but never a valid frame: check the baud rate and stop bits, "
                              "the A/B wiring (swapped?) and termination");
    case TransactionResult::AddressError:
        return QStringLiteral("a meter at another address answered: check the address (Find meter…)");
    case TransactionResult::BusyLine:
        return QStringLiteral("check for another master on the line, the termination and the bias");
    case TransactionResult::Exception:
        return QStringLiteral("the meter refused the request: check the value sent");
    case TransactionResult::WrongReply:
        return QStringLiteral("replies to other requests: check for another master on the line");
    case TransactionResult::Good:
    case TransactionResult::Abandoned:
        break;
    }
    return QString();
}

void Connection::SetSettings(const QString& settings)
{
    m_settings = settings;
    if (!port.isOpen())
        return;
    QString error = UnusableSettings(settings);
    const auto parsed = LineSettings::Parse(settings);
    if (!parsed || !port.apply(*parsed, &error)) {
        port.close();
        PortError(error);
    }
}

void Connection::ToggleOnLine(const QString& addressText)
{
    if (addressText.isEmpty()) {
        m_prompts.Critical(QStringLiteral("No Address！"));
        return;
    }
    if (bOnLine.isTrue()) {
        GoOffLine();
        return;
    }
    bOnLine.set(true);
    const quint64 attempt = ++m_onLineAttempts;
    QString error;
    const bool opened = OpenPort(&error);
    // Reaching a network address yields to the event loop: meanwhile the operator may have
    // gone off line, or off and on line again. Whoever did so has taken over.
    if (attempt != m_onLineAttempts || !bOnLine.isTrue())
        return;
    if (!opened) {
        PortError(error);
        return;
    }
    port.discardInput();
    link.BuildCrcTables();
    ++m_number;
    Timer1Sec.start();
    emit onLineChanged(true, QString());
}

void Connection::GoOffLine(const QString& reason)
{
    port.close();
    OffLineTail(reason);
}

bool Connection::OpenPort(QString* error)
{
    const auto settings = LineSettings::Parse(m_settings);
    if (!settings) {
        *error = UnusableSettings(m_settings);
        return false;
    }
    const QString device = DeviceFor(m_portNumber, error);
    if (device.isEmpty())
        return false;
    if (port.open(device, *settings, error))
        return true;
    *error = QStringLiteral("%1: %2").arg(device, *error);
    return false;
}

QString Connection::DeviceFor(int number, QString* error) const
{
    if (number < 1 || number > m_entries.size())
        return PortCatalog::NumberedDevice(number);
    const PortEntry& entry = m_entries.at(number - 1);
    if (!entry.simulated)
        return entry.device;
    if (!simulatedMeterDevice) {
        *error = QStringLiteral("no simulated meter in this build");
        return QString();
    }
    return simulatedMeterDevice(error);
}

void Connection::OffLineTail(const QString& reason)
{
    ++m_number;
    bOnLine.set(false);
    port.discardInput();
    link.BuildCrcTables();
    Timer1Sec.stop();
    emit onLineChanged(false, reason);
}

void Connection::PortError(const QString& detail)
{
    // Off line first, then the message: while the box waits for the operator, no timer may
    // go on using a port that failed.
    OffLineTail(PortErrorReason(detail));
    m_prompts.Critical(QStringLiteral("Comm Port Error！"));
}

void Connection::ChooseAddress(const QString& addressText)
{
    if (const auto address = WholeNumberOf(addressText))
        link.ModbusAddress = *address;
}
