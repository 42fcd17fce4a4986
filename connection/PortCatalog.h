#pragma once

#include <QList>
#include <QString>

#include <optional>

// The entries of the port list. Entries "1" to "15" come first and keep their numbers (port n
// is COMn on Windows, /dev/ttyS(n-1) elsewhere); after them come the serial ports found on the
// machine (USB adapters and the like), and last the simulated meter. The port number of an
// entry is its list index + 1.
struct PortEntry {
    QString label;    // text shown in the list
    QString device;   // device path or name; empty for the simulated meter
    bool simulated = false;
};

class PortCatalog {
public:
    static constexpr int kNumberedPorts = 15;

    // Numbered ports, then `found` (device paths, those already numbered are skipped), then the
    // simulated meter.
    static QList<PortEntry> Build(const QStringList& found);
    // Build() with the serial ports this machine has now.
    static QList<PortEntry> Scan();

    static QString NumberedDevice(int number);
    static QString SimulatedLabel();

    // The entry a `--port` option names, as an index of `entries`: "sim" for the simulated
    // meter, a port number as the window counts them (entry number - 1), or a device path or
    // "tcp://host:port", which is appended as an entry of its own when no entry has it yet.
    // Nothing, with the reason in `error`, for a number outside the list or a malformed address.
    static std::optional<int> Locate(QList<PortEntry>& entries, const QString& option, QString* error);
};
