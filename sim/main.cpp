// qx5820-sim: a simulated QX-5820 meter, or several sharing one RS-485 line, on a
// pseudo-terminal or behind a simulated device server on a TCP port. Prints the device or address to open as its first line, then answers
// Modbus RTU requests until SIGINT or SIGTERM.

#include "sim/MeterRegisters.h"
#include "sim/SimulatedMeterHost.h"
#include "ports/TerminationSignals.h"
#include "sim/BusMeters.h"
#include "sim/WiringFault.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr uint kLastAddress = 247;

struct Options {
    QList<quint8> addresses; // of the meters on the line, in order
    QList<quint8> silent;    // of those that never answer
    quint64 seed = 1;
    bool pacing = true;
    int turnaroundMs = 3;
    std::optional<int> history; // intervals each load-profile group holds at power-on
    std::optional<sim::LoadCharacter> load; // a balanced load instead of the seed's own
    sim::WiringFault wiring;
    std::optional<quint16> tcpPort; // listen on this TCP port instead of a pseudo-terminal
    int slowEvery = 0;  // one request in this many answered late
    int slowMs = 2050;
    int noiseBurstMs = 0;
    int noiseQuietMs = 0;
};

// A whole number of at least `least` from option `name`, or the reason it is not.
std::optional<int> wholeNumber(const QCommandLineParser& parser, const QCommandLineOption& option, int least, QString& error)
{
    bool ok = true;
    const int value = parser.value(option).toInt(&ok);
    if (ok && value >= least)
        return value;
    error = QStringLiteral("--%1 must be a whole number of at least %2").arg(option.names().constFirst()).arg(least);
    return std::nullopt;
}

// Addresses of 1 to 247 from a list such as "1,2,5-9", each once; nothing when it is not one.
std::optional<QList<quint8>> addressList(const QString& text)
{
    QList<quint8> addresses;
    for (const QString& item : text.split(u',')) {
        const QStringList ends = item.split(u'-');
        bool firstOk = false;
        bool lastOk = false;
        const uint first = ends.constFirst().trimmed().toUInt(&firstOk);
        const uint last = ends.constLast().trimmed().toUInt(&lastOk);
        if (ends.size() > 2 || !firstOk || !lastOk || first < 1 || first > last || last > kLastAddress)
            return std::nullopt;
        for (uint address = first; address <= last; ++address) {
            if (addresses.contains(quint8(address)))
                return std::nullopt;
            addresses.append(quint8(address));
        }
    }
    return addresses;
}

// The options, or the reason they cannot be used.
std::optional<Options> parse(const QCoreApplication& app, QString& error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Simulated QX-5820 three-phase meter: a Modbus RTU slave on a pseudo-terminal, or on a TCP port\n"
        "as behind a device server. Prints the device path or tcp://127.0.0.1:PORT on its first line\n"
        "and runs until interrupted."));
    parser.addHelpOption();
    const QCommandLineOption address(QStringLiteral("address"), QStringLiteral("Slave address (1-247)."), QStringLiteral("N"), QStringLiteral("15"));
    const QCommandLineOption bus(QStringLiteral("bus"),
        QStringLiteral("Several meters on the one line instead, at these addresses (\"1,2,5-9\"), each with its own "
                       "serial number, load and settings: the n-th has the serial number and the seed of the first plus n-1."),
        QStringLiteral("LIST"));
    const QCommandLineOption silent(QStringLiteral("silent"),
        QStringLiteral("The meters at these addresses stay on the line but never answer, as if switched off."), QStringLiteral("LIST"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Seed of the simulated load."), QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption noPacing(QStringLiteral("no-pacing"), QStringLiteral("Answer without line timing, at any line speed."));
    const QCommandLineOption turnaround(QStringLiteral("turnaround"), QStringLiteral("Turnaround before each reply."), QStringLiteral("MS"), QStringLiteral("3"));
    const QCommandLineOption history(QStringLiteral("history"),
        QStringLiteral("Both load-profile groups start holding N recorded intervals (0-65535), their memory "
                       "enlarged to fit; without it, 1440 and 960."), QStringLiteral("N"));
    const QCommandLineOption wiringFault(QStringLiteral("wiring-fault"),
        QStringLiteral("The meter is wired to its load with this fault: %1.").arg(sim::WiringFault::names().join(QStringLiteral(", "))),
        QStringLiteral("NAME"), QStringLiteral("none"));
    const QCommandLineOption powerFactor(QStringLiteral("power-factor"),
        QStringLiteral("A balanced load at this power factor (0 to 1, lagging) instead of the seed's own."), QStringLiteral("PF"));
    const QCommandLineOption leading(QStringLiteral("leading"), QStringLiteral("The balanced load's power factor is leading (capacitive)."));
    const QCommandLineOption tcp(QStringLiteral("tcp"),
        QStringLiteral("Listen on TCP port PORT of 127.0.0.1 (0: any free port) instead of a pseudo-terminal, "
                       "serving one client at a time. Replies there are not paced."), QStringLiteral("PORT"));
    const QCommandLineOption slowEvery(QStringLiteral("slow-every"),
        QStringLiteral("One request in N is answered --slow-ms late; the requests that come meanwhile are all "
                       "answered, in order, each a turnaround after the reply before (a slow meter or a queueing gateway)."),
        QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption slowMs(QStringLiteral("slow-ms"), QStringLiteral("How late a slow reply is."), QStringLiteral("MS"), QStringLiteral("2050"));
    const QCommandLineOption noise(QStringLiteral("noise"),
        QStringLiteral("Noise on the line: a byte every millisecond in bursts of MS (0: none)."), QStringLiteral("MS"), QStringLiteral("0"));
    const QCommandLineOption quiet(QStringLiteral("quiet"),
        QStringLiteral("Quiet between the noise bursts (0: the line is never quiet, as with another master on it)."),
        QStringLiteral("MS"), QStringLiteral("0"));
    parser.addOptions({address, bus, silent, seed, noPacing, turnaround, history, wiringFault, powerFactor, leading, tcp, slowEvery, slowMs, noise, quiet});
    parser.process(app);

    Options options;
    bool ok = true;
    const uint addressValue = parser.value(address).toUInt(&ok);
    if (!ok || addressValue < 1 || addressValue > kLastAddress) {
        error = QStringLiteral("--address must be 1 to 247");
        return std::nullopt;
    }
    options.addresses = {quint8(addressValue)};
    if (parser.isSet(bus)) {
        const std::optional<QList<quint8>> addresses = addressList(parser.value(bus));
        if (!addresses || parser.isSet(address)) {
            error = QStringLiteral("--bus must list addresses of 1 to 247 (\"1,2,5-9\"), each once, without --address");
            return std::nullopt;
        }
        options.addresses = *addresses;
    }
    if (parser.isSet(silent)) {
        const std::optional<QList<quint8>> addresses = addressList(parser.value(silent));
        const bool served = addresses && std::all_of(addresses->cbegin(), addresses->cend(), [&](quint8 a) { return options.addresses.contains(a); });
        if (!served) {
            error = QStringLiteral("--silent must list addresses the simulator serves");
            return std::nullopt;
        }
        options.silent = *addresses;
    }
    options.seed = parser.value(seed).toULongLong(&ok);
    if (!ok) {
        error = QStringLiteral("--seed must be a whole number");
        return std::nullopt;
    }
    options.turnaroundMs = parser.value(turnaround).toInt(&ok);
    if (!ok || options.turnaroundMs < 0) {
        error = QStringLiteral("--turnaround must be 0 or more milliseconds");
        return std::nullopt;
    }
    options.pacing = !parser.isSet(noPacing);
    const std::optional<int> every = wholeNumber(parser, slowEvery, 0, error);
    const std::optional<int> late = every ? wholeNumber(parser, slowMs, 0, error) : std::nullopt;
    const std::optional<int> burst = late ? wholeNumber(parser, noise, 0, error) : std::nullopt;
    const std::optional<int> pause = burst ? wholeNumber(parser, quiet, 0, error) : std::nullopt;
    if (!pause)
        return std::nullopt;
    options.slowEvery = *every;
    options.slowMs = *late;
    options.noiseBurstMs = *burst;
    options.noiseQuietMs = *pause;
    if (parser.isSet(history)) {
        const uint intervals = parser.value(history).toUInt(&ok);
        if (!ok || intervals > 0xFFFF) {
            error = QStringLiteral("--history must be 0 to 65535 intervals");
            return std::nullopt;
        }
        options.history = int(intervals);
    }
    const std::optional<sim::WiringFault> fault = sim::WiringFault::parse(parser.value(wiringFault));
    if (!fault) {
        error = QStringLiteral("--wiring-fault must be one of: %1").arg(sim::WiringFault::names().join(QStringLiteral(", ")));
        return std::nullopt;
    }
    options.wiring = *fault;
    if (parser.isSet(tcp)) {
        const uint port = parser.value(tcp).toUInt(&ok);
        if (!ok || port > 0xFFFF) {
            error = QStringLiteral("--tcp must be a port number 0 to 65535");
            return std::nullopt;
        }
        options.tcpPort = quint16(port);
    }
    if (parser.isSet(powerFactor)) {
        const double pf = parser.value(powerFactor).toDouble(&ok);
        if (!ok || pf < 0 || pf > 1) {
            error = QStringLiteral("--power-factor must be 0 to 1");
            return std::nullopt;
        }
        options.load = sim::LoadCharacter{pf, parser.isSet(leading)};
    } else if (parser.isSet(leading)) {
        error = QStringLiteral("--leading needs --power-factor");
        return std::nullopt;
    }
    return options;
}

} // namespace

int main(int argc, char* argv[])
{
    TerminationSignals::block();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qx5820-sim"));
    QTextStream err(stderr);

    QString error;
    const std::optional<Options> options = parse(app, error);
    if (!options) {
        err << error << Qt::endl;
        return 2;
    }

    std::vector<sim::MeterModel> meters = sim::BusMeters(options->addresses, options->seed);
    for (sim::MeterModel& model : meters) {
        if (options->load)
            model.startWithLoad(*options->load);
        model.startWithWiring(options->wiring);
        if (options->history) {
            for (int group = 0; group < 2; ++group)
                model.startWithHistory(group, *options->history);
        }
    }
    sim::SimulatedMeterHost host(std::move(meters));
    for (quint8 address : options->silent)
        host.setSilent(address);
    host.setPacing(options->pacing);
    host.setTurnaround(options->turnaroundMs);
    host.setSlowReplies(options->slowEvery, options->slowMs);
    host.setNoise(options->noiseBurstMs, options->noiseQuietMs);
    const sim::SimulatedMeterHost::Started started = options->tcpPort ? host.listen(*options->tcpPort) : host.start();
    if (started.path.isEmpty()) {
        if (options->tcpPort)
            err << "cannot listen on TCP port " << *options->tcpPort << ": " << started.error << Qt::endl;
        else
            err << "cannot open a pseudo-terminal: " << started.error << Qt::endl;
        return 1;
    }
    QTextStream(stdout) << started.path << Qt::endl;

    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &app, &QCoreApplication::quit);
    return app.exec();
}
