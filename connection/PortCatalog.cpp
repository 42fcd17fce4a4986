#include "connection/PortCatalog.h"

#include "connection/TcpTransport.h"

#include <QSerialPortInfo>

#include <algorithm>

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

namespace {

// The number first, so that the list can be searched by typing it.
QString NumberedLabel(int number)
{
#ifdef Q_OS_WIN
    return QString::number(number);
#else
    return QStringLiteral("%1 — %2").arg(number).arg(PortCatalog::NumberedDevice(number));
#endif
}

QString FoundLabel(const FoundPort& port)
{
    const QString name = port.name.isEmpty() ? port.device : port.name;
    return port.description.isEmpty() ? name : QStringLiteral("%1 — %2").arg(name, port.description);
}

} // namespace

QList<FoundPort> PortCatalog::FoundPorts()
{
    QList<FoundPort> found;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        found.append({info.systemLocation(), info.portName(), info.description(), info.manufacturer(),
                      info.serialNumber()});
    return found;
}

QList<PortEntry> PortCatalog::Build(const QList<FoundPort>& found)
{
    QList<PortEntry> entries;
    for (int n = 1; n <= kNumberedPorts; ++n)
        entries.append({NumberedLabel(n), NumberedDevice(n), false});
    QList<FoundPort> extra;
    for (const FoundPort& port : found) {
        const auto sameDevice = [&port](const auto& other) { return other.device == port.device; };
        if (std::none_of(entries.cbegin(), entries.cend(), sameDevice)
            && std::none_of(extra.cbegin(), extra.cend(), sameDevice))
            extra.append(port);
    }
    std::sort(extra.begin(), extra.end(), [](const FoundPort& a, const FoundPort& b) { return a.device < b.device; });
    for (const FoundPort& port : extra)
        entries.append({FoundLabel(port), port.device, false});
    entries.append({SimulatedLabel(), QString(), true});
    return entries;
}

QList<PortEntry> PortCatalog::Scan()
{
    return Build(FoundPorts());
}

QList<PortEntry> PortCatalog::Refresh(const QList<PortEntry>& current, int chosen, const QList<FoundPort>& found)
{
    QList<PortEntry> entries = Build(found);
    const auto simulated = std::find_if(current.cbegin(), current.cend(), [](const PortEntry& e) { return e.simulated; });
    QList<PortEntry> kept(simulated == current.cend() ? current.cend() : simulated + 1, current.cend());
    if (chosen >= 0 && chosen < current.size())
        kept.prepend(current.at(chosen));
    for (const PortEntry& entry : kept) {
        if (IndexOf(entries, entry) < 0)
            entries.append(entry);
    }
    return entries;
}

int PortCatalog::IndexOf(const QList<PortEntry>& entries, const PortEntry& entry)
{
    for (int i = 0; i < entries.size(); ++i) {
        if (entries.at(i).simulated == entry.simulated && entries.at(i).device == entry.device)
            return i;
    }
    return -1;
}

std::optional<int> PortCatalog::Locate(QList<PortEntry>& entries, const QString& option, QString* error)
{
    if (option == QLatin1String("sim")) {
        if (const int index = IndexOf(entries, {SimulatedLabel(), QString(), true}); index >= 0)
            return index;
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
    if (option.startsWith(QLatin1String("tcp:"), Qt::CaseInsensitive) && !TcpTransport::AddressOf(option)) {
        *error = QStringLiteral("\"%1\" is not a network address of the form tcp://host:port").arg(option);
        return std::nullopt;
    }
    if (const int index = IndexOf(entries, {option, option, false}); index >= 0)
        return index;
    entries.append({option, option, false});
    return int(entries.size() - 1);
}
