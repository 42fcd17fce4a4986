// scan: which address and baud rate a meter answers at, when nobody wrote it down.
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/Commands.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/ReadingFormat.h"
#include "connection/MeterScan.h"
#include "connection/TcpTransport.h"
#include "ports/MeterChoices.h"
#include "sim/SimulatedMeterHost.h"
#include "ports/TerminationSignals.h"

#include <QTextStream>

#include <memory>
#include <unistd.h>

namespace {

QString Where(const QString& device, const QString& baudRate, const QString& stopBits)
{
    if (TcpTransport::IsAddress(device))
        return device;
    return QStringLiteral("%1 baud, %2 stop bit%3").arg(baudRate, stopBits, stopBits == QLatin1String("1") ? QString() : QStringLiteral("s"));
}

} // namespace

int RunScan(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("scan"),
                     QStringLiteral("Looks for a meter on the port: tries each address at each baud rate once, with a short "
                                    "time-out, and reports what answered. Both baud rates are tried unless --baud is "
                                    "given; a network port is tried once."),
                     MeterLine{MeterLine::NoAddress, QStringLiteral("both, 19200 first"), MeterScan::kProbeTimeoutMs / 1000.0, false, 1});
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
        options->replyTimeoutMs = MeterScan::kProbeTimeoutMs;

    const std::optional<ChosenPort> port = ChoosePortOption(options->port);
    if (!port)
        return kExitBadArguments;
    QString device = port->entry().device;
    std::unique_ptr<sim::SimulatedMeterHost> simulator;
    if (port->entry().simulated) {
        simulator = NewSimulatedMeter();
        device = simulator->start().path;
    }

    MeterScan::Plan plan{.device = device, .stopBits = options->stopBits, .first = first, .last = last,
                         .all = line.IsSet(all), .replyTimeoutMs = options->replyTimeoutMs};
    if (line.LineOptionSet(QStringLiteral("baud")))
        plan.baudRates = {options->baudRate};
    MeterScan scan;
    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &scan, &MeterScan::Stop);
    const bool progress = isatty(STDERR_FILENO) != 0;
    if (progress)
        QObject::connect(&scan, &MeterScan::trying, [](int address, const QString& rate) {
            QTextStream(stderr) << "\rscanning " << rate << " baud, address " << address << "   " << Qt::flush;
        });
    QTextStream out(stdout);
    QObject::connect(&scan, &MeterScan::found, [&](const MeterScan::Found& meter) {
        if (progress)
            QTextStream(stderr) << "\r\033[K" << Qt::flush;
        const QString identification = meter.identification.isEmpty() ? QStringLiteral("(no identification)")
                                                                       : VisibleText(meter.identification);
        out << "address " << meter.address << " at " << Where(device, meter.baudRate, plan.stopBits) << ": "
            << identification << Qt::endl;
    });
    QString error;
    if (!scan.Run(plan, &error))
        return Fail(kExitPortUnusable, QStringLiteral("Comm Port Error: %1: %2").arg(device, error));
    if (scan.Stopped())
        return Fail(kExitInterrupted, QStringLiteral("interrupted"));
    if (scan.Results().isEmpty())
        return Fail(kExitNoAnswer, QStringLiteral("no meter answered on %1 at addresses %2-%3 (%4 baud)")
                                       .arg(options->port).arg(first).arg(last).arg(plan.baudRates.join(QStringLiteral(" and "))));
    return kExitOk;
}
