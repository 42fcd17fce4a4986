// ports: the serial ports of this machine, numbered as the window's port list numbers them.
#include "app/cli/CommandLine.h"
#include "app/cli/Commands.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/ReadingFormat.h"
#include "connection/PortCatalog.h"

#include <QTextStream>

int RunPorts(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("ports"),
                     QStringLiteral("Lists the serial ports this machine has, with the adapter's description, maker and "
                                    "serial number, and the number to give --port for each."), std::nullopt);
    if (const auto status = line.Parse(arguments))
        return *status;

    const QList<FoundPort> found = PortCatalog::FoundPorts();
    const QList<PortEntry> entries = PortCatalog::Build(found);
    QList<QStringList> rows{{QStringLiteral("port"), QStringLiteral("device"), QStringLiteral("description"),
                             QStringLiteral("manufacturer"), QStringLiteral("serial number")}};
    for (const FoundPort& port : found) {
        const int index = PortCatalog::IndexOf(entries, PortEntry{QString(), port.device, false});
        // The adapter describes itself: its texts are shown, never obeyed by the terminal.
        rows.append({index < 0 ? QStringLiteral("-") : QString::number(index + 1), VisibleText(port.device),
                     VisibleText(port.description), VisibleText(port.manufacturer), VisibleText(port.serialNumber)});
    }
    QTextStream out(stdout);
    if (found.isEmpty()) {
        out << "No serial ports found.\n";
    } else {
        QList<qsizetype> widths(rows.first().size(), 0);
        for (const QStringList& row : rows)
            for (qsizetype c = 0; c < row.size(); ++c)
                widths[c] = std::max(widths[c], row[c].size());
        for (const QStringList& row : rows) {
            QString text;
            for (qsizetype c = 0; c < row.size(); ++c)
                text += c + 1 < row.size() ? row[c].leftJustified(widths[c] + 2) : row[c];
            out << text.trimmed() << '\n';
        }
    }
    out << "Port numbers 1 to " << PortCatalog::kNumberedPorts << " stand for " << PortCatalog::NumberedDevice(1) << " to "
        << PortCatalog::NumberedDevice(PortCatalog::kNumberedPorts)
        << "; --port also takes a device path, sim (the simulated meter) or tcp://host:port.\n";
    return kExitOk;
}
