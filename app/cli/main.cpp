// qx5820: the meter's set-up and read-out from a shell or a script. The same session as the
// window, without one: the same lists, checks, messages and pacing.
#include "app/cli/Commands.h"
#include "app/cli/ExitCodes.h"
#include "ports/MeterChoices.h"
#include "ports/TerminationSignals.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTextStream>

#include <iterator>
#include <memory>

namespace {

// The addresses --address takes and scan covers.
const QString kAddresses = QStringLiteral("%1-%2").arg(kLowestAddress).arg(kHighestAddress);

struct Command {
    const char* name;
    QString summary;
    int (*run)(const QStringList& arguments);
};

const Command kCommands[] = {
    {"ports", QStringLiteral("list the serial ports of this machine, with their --port numbers"), RunPorts},
    {"read", QStringLiteral("read every measurement and setting once (--format table|json|csv)"), RunRead},
    {"watch", QStringLiteral("poll continuously, one CSV or JSON line a tick (--count, --output)"), RunWatch},
    {"lp", QStringLiteral("lp download: a load-profile group's intervals into its CSV file; lp report FILE: its gaps, flaws"), RunLp},
    {"set", QStringLiteral("write one setting and confirm it from the readings (set --help lists them)"), RunSet},
    {"config", QStringLiteral("config save|diff|apply FILE: the meter's configuration as a file, compared, written"), RunConfig},
    {"scan", QStringLiteral("look for a meter over addresses %1 and both baud rates").arg(kAddresses), RunScan},
    {"report", QStringLiteral("the commissioning report: meter, settings, measurements, phasors, wiring (--output FILE.pdf)"), RunReport},
    {"wiring", QStringLiteral("the verdict on the meter's wiring from a reading, a finding a line (--watch)"), RunWiring},
};

QString Overview()
{
    QString text = QStringLiteral(
        "Usage: qx5820 COMMAND [options]\n"
        "Set-up and read-out of a QX-5820 three-phase meter over Modbus RTU.\n\nCommands:\n");
    for (const Command& command : kCommands)
        text += QStringLiteral("  %1%2\n").arg(QString::fromLatin1(command.name).leftJustified(14), command.summary);
    text += QStringLiteral(
        "\nThe meter is reached with --port PORT (a device path, a port number, sim, or tcp://host:port;\n"
        "without it the QX5820_PORT environment variable), -b/--baud 9600|19200, --stop-bits 1|2,\n"
        "-a/--address %1 and -t/--timeout SECONDS; -v/--verbose prints each frame to stderr.\n"
        "\"qx5820 COMMAND --help\" lists the options each command takes.\n\n"
        "Exit status: 0 done; 1 something to check was found (wiring, lp report); 2 bad arguments;\n"
        "3 the port could not be opened; 4 the meter did not answer or the line was lost; 5 a value\n"
        "was refused or not confirmed; 6 a file could not be written; 130 interrupted.\n").arg(kAddresses);
    return text;
}

} // namespace

int main(int argc, char* argv[])
{
    // Before any thread starts: Ctrl-C then reaches the event loop, and a command stops in order.
    TerminationSignals::block();
    // Only the report draws (fonts, a painter): it needs Qt Gui, on the offscreen platform unless
    // told otherwise, so that it runs without a display as every other command does.
    const bool draws = argc > 1 && qstrcmp(argv[1], "report") == 0;
    if (draws && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::unique_ptr<QCoreApplication> app =
        draws ? std::make_unique<QGuiApplication>(argc, argv) : std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qx5820"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));

    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        QTextStream(stderr) << Overview();
        return kExitBadArguments;
    }
    const QString name = arguments.takeFirst();
    if (name == QLatin1String("-h") || name == QLatin1String("--help") || name == QLatin1String("help")) {
        QTextStream(stdout) << Overview();
        return kExitOk;
    }
    if (name == QLatin1String("--version")) {
        QTextStream(stdout) << "qx5820 " << QCoreApplication::applicationVersion() << Qt::endl;
        return kExitOk;
    }
    for (const Command& command : kCommands) {
        if (name == QLatin1String(command.name))
            return command.run(arguments);
    }
    QTextStream(stderr) << "qx5820: unknown command \"" << name << "\"\n\n" << Overview();
    return kExitBadArguments;
}
