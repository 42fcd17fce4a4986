#include "connection/PortCatalog.h"

#include <QSerialPortInfo>

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
