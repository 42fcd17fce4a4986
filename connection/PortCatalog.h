#pragma once

#include <QList>
#include <QString>

#include <optional>

// The entries of the port list. Entries "1" to "15" come first and keep their numbers (port n
// is COMn on Windows, /dev/ttyS(n-1) elsewhere); after them come the serial ports found on the
// machine (USB adapters and the like), then the simulated meter, and last the ports named by
// hand (a device path or a serial device server's "tcp://host:port"). The port number of an
// entry is its list index + 1.
struct PortEntry {
    QString label;    // text shown in the list
    QString device;   // device path or name; empty for the simulated meter
    bool simulated = false;
};

// A serial port the system reports, with what it says about the adapter behind it.
struct FoundPort {
    QString device;        // "/dev/ttyUSB0", "COM4"
    QString name;          // "ttyUSB0", "COM4"
    QString description;   // "FT232R USB UART"; often empty for built-in ports
    QString manufacturer;
    QString serialNumber;
};

class PortCatalog {
public:
    static constexpr int kNumberedPorts = 15;

    // The serial ports this machine has now.
    static QList<FoundPort> FoundPorts();

    // Numbered ports, then `found` in device order (those already numbered are skipped), then
    // the simulated meter.
    static QList<PortEntry> Build(const QList<FoundPort>& found);
    // Build() with the serial ports this machine has now.
    static QList<PortEntry> Scan();
    // `current` built again on `found`. The ports named by hand stay, and so does entry `chosen`
    // when its device has gone (an adapter unplugged for a moment), so that refreshing the list
    // never changes the operator's choice.
    static QList<PortEntry> Refresh(const QList<PortEntry>& current, int chosen, const QList<FoundPort>& found);
    // The index of the entry for the same device as `entry` (or the simulated meter); -1 if none.
    static int IndexOf(const QList<PortEntry>& entries, const PortEntry& entry);

    static QString NumberedDevice(int number);
    static QString SimulatedLabel();

    // The entry a `--port` option names, as an index of `entries`: "sim" for the simulated
    // meter, a port number as the window counts them (entry number - 1), or a device path or
    // "tcp://host:port", which is appended as an entry of its own when no entry has it yet.
    // Nothing, with the reason in `error`, for a number outside the list or a malformed address.
    static std::optional<int> Locate(QList<PortEntry>& entries, const QString& option, QString* error);
};
