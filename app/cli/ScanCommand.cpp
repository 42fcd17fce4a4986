// scan: which address and baud rate a meter answers at, when nobody wrote it down.
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/Commands.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/ReadingFormat.h"
#include "connection/PortTransport.h"
#include "link/RegisterLink.h"
#include "link/RtuFrames.h"
#include "link/WatchedFlag.h"
#include "measure/ReadingFields.h"
#include "ports/MeterChoices.h"
#include "sim/SimulatedMeterHost.h"
#include "ports/TerminationSignals.h"

#include <QTextStream>

#include <memory>
#include <unistd.h>

namespace {

// The first three settings registers (address, baud-rate and stop-bit codes): a short reply,
// 11 bytes, that any QX-5820 gives whatever its configuration.
constexpr quint16 kSettingsStart = 0x1000;
constexpr quint16 kSettingsCount = 3;
// The meter's 16-character identification text, for the report.
constexpr quint16 kIdentificationStart = 0x100C;
constexpr quint16 kIdentificationCount = 8;

struct Answer {
    int address;
    QString where; // "19200 baud, 1 stop bit", or the network address
    QString identification;
};

class Scanner {
public:
    Scanner(const LineOptions& line, QTextStream& out) : m_line(line), m_out(out), m_link(m_port, m_onLine)
    {
        QObject::connect(&m_termination, &TerminationSignals::received, [this] {
            m_interrupted = true;
            m_onLine.set(false); // ends the wait under way
        });
    }

    bool Interrupted() const { return m_interrupted; }

    // Tries every address of [first, last] at `baudRate`; false when the port cannot be used.
    bool Sweep(const QString& device, const QString& baudRate, int first, int last, bool all, QList<Answer>& found, QString* error)
    {
        const auto settings = LineSettings::Parse(baudRate + QStringLiteral(",n,8,") + m_line.stopBits);
        if (!settings || !m_port.open(device, *settings, error))
            return false;
        m_onLine.set(true);
        m_link.BuildCrcTables();
        for (int address = first; address <= last && !m_interrupted; ++address) {
            if (m_progress)
                QTextStream(stderr) << "\rscanning " << baudRate << " baud, address " << address << "   " << Qt::flush;
            if (Probe(address)) {
                found.append({address, Where(device, baudRate), Identification()});
                Report(found.last());
                if (!all)
                    break;
            }
        }
        m_onLine.set(false);
        m_port.close();
        return true;
    }

private:
    bool Probe(int address)
    {
        m_link.ModbusAddress = qint16(address);
        m_link.attempts = 1;
        m_link.replyTimeoutMs = m_line.replyTimeoutMs;
        m_link.ResetRxData();
        return m_link.ReadRegisters(m_link.ModbusAddress, Rtu::kReadHolding, kSettingsStart, kSettingsCount).good();
    }

    // The identification, asked with the ordinary patience now that the meter is known to be there.
    QString Identification()
    {
        m_link.attempts = 2;
        m_link.replyTimeoutMs = RegisterLink::kReplyTimeoutMs;
        m_link.ResetRxData();
        if (!m_link.ReadRegisters(m_link.ModbusAddress, Rtu::kReadInput, kIdentificationStart, kIdentificationCount).good())
            return QStringLiteral("(no identification)");
        return VisibleText(IdentificationText(m_link.RxData.left(2 * kIdentificationCount)));
    }

    QString Where(const QString& device, const QString& baudRate) const
    {
        if (TcpTransport::IsAddress(device))
            return device;
        return QStringLiteral("%1 baud, %2 stop bit%3").arg(baudRate, m_line.stopBits,
                                                            m_line.stopBits == QLatin1String("1") ? QString() : QStringLiteral("s"));
    }

    void Report(const Answer& answer)
    {
        if (m_progress)
            QTextStream(stderr) << "\r\033[K" << Qt::flush;
        m_out << "address " << answer.address << " at " << answer.where << ": " << answer.identification << Qt::endl;
    }

    LineOptions m_line;
    QTextStream& m_out;
    PortTransport m_port;
    WatchedFlag m_onLine;
    RegisterLink m_link;
    TerminationSignals m_termination;
    bool m_interrupted = false;
    const bool m_progress = isatty(STDERR_FILENO) != 0;
};

} // namespace

int RunScan(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("scan"),
                     QStringLiteral("Looks for a meter on the port: tries each address at each baud rate once, with a short "
                                    "time-out (--timeout, default 0.1 s), and reports what answered. Both baud rates are "
                                    "tried unless --baud is given; a network port is tried once."), true);
    const QString lowest = QString::number(kLowestAddress);
    const QString highest = QString::number(kHighestAddress);
    const QCommandLineOption from(QStringLiteral("from"), QStringLiteral("First address to try (default %1).").arg(lowest),
                                  QStringLiteral("N"), lowest);
    const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("Last address to try (default %1).").arg(highest),
                                QStringLiteral("N"), highest);
    const QCommandLineOption all(QStringLiteral("all"), QStringLiteral("Go on after the first meter that answers."));
    line.Add(from);
    line.Add(to);
    line.Add(all);
    if (const auto status = line.Parse(arguments))
        return *status;
    std::optional<LineOptions> options = line.Line();
    if (!options)
        return kExitBadArguments;
    bool ok = false;
    bool ok2 = false;
    const int first = line.Value(from).toInt(&ok);
    const int last = line.Value(to).toInt(&ok2);
    if (!ok || !ok2 || first < kLowestAddress || last > kHighestAddress || first > last)
        return Fail(kExitBadArguments, QStringLiteral("--from and --to must be addresses %1 to %2, --from not above --to")
                                           .arg(lowest, highest));
    if (!line.LineOptionSet(QStringLiteral("timeout")))
        options->replyTimeoutMs = 100;

    const std::optional<ChosenPort> port = ChoosePortOption(options->port);
    if (!port)
        return kExitBadArguments;
    QString device = port->entry().device;
    std::unique_ptr<sim::SimulatedMeterHost> simulator;
    if (port->entry().simulated) {
        simulator = NewSimulatedMeter();
        device = simulator->start().path;
    }

    QStringList rates{options->baudRate};
    if (!line.LineOptionSet(QStringLiteral("baud")) && !TcpTransport::IsAddress(device))
        rates = QStringList{QStringLiteral("19200"), QStringLiteral("9600")};
    QTextStream out(stdout);
    Scanner scanner(*options, out);
    QList<Answer> found;
    QString error;
    for (const QString& rate : rates) {
        if (!scanner.Sweep(device, rate, first, last, line.IsSet(all), found, &error))
            return Fail(kExitPortUnusable, QStringLiteral("Comm Port Error: %1: %2").arg(device, error));
        if (scanner.Interrupted())
            return Fail(kExitInterrupted, QStringLiteral("interrupted"));
        if (!found.isEmpty() && !line.IsSet(all))
            break;
    }
    if (found.isEmpty())
        return Fail(kExitNoAnswer, QStringLiteral("no meter answered on %1 at addresses %2-%3 (%4 baud)")
                                       .arg(options->port).arg(first).arg(last).arg(rates.join(QStringLiteral(" and "))));
    return kExitOk;
}
