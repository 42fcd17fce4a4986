#include "connection/PortCatalog.h"

#include <QSerialPortInfo>
#include <QUrl>

QString PortCatalog::NumberedDevice(int number)
{
#ifdef Q_OS_WIN
    return QStringLiteral("COM%1").arg(number);
#else
    return QStringLiteral("/dev/ttyS%1").arg(number - 1);
#endif
}

QString PortCatalog::SimulatedLabel()
{
    return QStringLiteral("Simulated meter");
}

QList<PortEntry> PortCatalog::Build(const QStringList& found)
{
    QList<PortEntry> entries;
    QStringList numbered;
    for (int n = 1; n <= kNumberedPorts; ++n) {
        entries.append({QString::number(n), NumberedDevice(n), false});
        numbered.append(NumberedDevice(n));
    }
    QStringList extra;
    for (const QString& device : found) {
        if (!numbered.contains(device) && !extra.contains(device))
            extra.append(device);
    }
    extra.sort();
    for (const QString& device : extra)
        entries.append({device, device, false});
    entries.append({SimulatedLabel(), QString(), true});
    return entries;
}

QList<PortEntry> PortCatalog::Scan()
{
    QStringList found;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        found.append(info.systemLocation());
    return Build(found);
}

namespace {

// Checks "tcp://host:port": a host and a port number 1-65535, nothing else.
bool IsNetworkAddress(const QString& option, QString* error)
{
    const QUrl url(option, QUrl::StrictMode);
    const bool ok = url.isValid() && !url.host().isEmpty() && url.port() >= 1 && url.path().isEmpty()
        && !url.hasQuery() && !url.hasFragment() && url.userInfo().isEmpty();
    if (!ok)
        *error = QStringLiteral("\"%1\" is not a network address of the form tcp://host:port").arg(option);
    return ok;
}

} // namespace

std::optional<int> PortCatalog::Locate(QList<PortEntry>& entries, const QString& option, QString* error)
{
    if (option == QLatin1String("sim")) {
        for (int i = 0; i < entries.size(); ++i) {
            if (entries.at(i).simulated)
                return i;
        }
        *error = QStringLiteral("no simulated meter in the port list");
        return std::nullopt;
    }
    bool isNumber = false;
    const int number = option.toInt(&isNumber);
    if (isNumber) {
        if (number >= 1 && number <= entries.size())
            return number - 1;
        *error = QStringLiteral("port number %1 is not in the list: 1 to %2").arg(option).arg(entries.size());
        return std::nullopt;
    }
    if (option.isEmpty()) {
        *error = QStringLiteral("no port given");
        return std::nullopt;
    }
    if (option.startsWith(QLatin1String("tcp:"), Qt::CaseInsensitive) && !IsNetworkAddress(option, error))
        return std::nullopt;
    for (int i = 0; i < entries.size(); ++i) {
        if (!entries.at(i).simulated && entries.at(i).device == option)
            return i;
    }
    entries.append({option, option, false});
    return int(entries.size() - 1);
}
