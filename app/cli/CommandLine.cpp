#include "app/cli/CommandLine.h"

#include "app/cli/ExitCodes.h"
#include "ports/MeterChoices.h"

#include <QFile>
#include <QTextStream>

namespace {

// The environment's port, for a shell that always talks to the same meter.
const char kPortVariable[] = "QX5820_PORT";

const QString kPort = QStringLiteral("port");
const QString kBaud = QStringLiteral("baud");
const QString kStopBits = QStringLiteral("stop-bits");
const QString kAddress = QStringLiteral("address");
const QString kTimeout = QStringLiteral("timeout");
const QString kVerbose = QStringLiteral("verbose");

// The line options of a command as its declaration says: the short names are mbpoll's.
QList<QCommandLineOption> LineOptionsOf(const MeterLine& meterLine)
{
    QList<QCommandLineOption> options{
        {{kPort}, QStringLiteral("The meter's line: a device path (/dev/ttyUSB0), a port number as the window's list "
                                 "counts them (1 = /dev/ttyS0 ...), \"sim\" for the built-in simulated meter, or "
                                 "tcp://host:port for a serial device server (default: the %1 environment variable).")
                      .arg(QLatin1String(kPortVariable)), QStringLiteral("PORT")},
        {{QStringLiteral("b"), kBaud}, QStringLiteral("Baud rate of the line: %1 (default %2).")
                                           .arg(BaudRateTexts().join(QStringLiteral(" or ")), meterLine.baudDefault),
         QStringLiteral("RATE"), QStringLiteral("19200")},
        {{kStopBits}, QStringLiteral("Stop bits: 1 or 2 (default 1)."), QStringLiteral("N"), QStringLiteral("1")},
        {{QStringLiteral("t"), kTimeout},
         (meterLine.attempts == 1 ? QStringLiteral("Seconds each request waits for its reply")
                                  : QStringLiteral("Seconds each of the %1 attempts of a request waits for the reply").arg(meterLine.attempts))
             + QStringLiteral(", 0.05 to 60 (default %1).").arg(meterLine.timeoutDefault),
         QStringLiteral("SECONDS"), QString::number(meterLine.timeoutDefault)},
    };
    if (meterLine.addresses != MeterLine::NoAddress)
        options.append({{QStringLiteral("a"), kAddress},
                        QStringLiteral("The meter's Modbus address, %1 to %2 (default 15)%3.")
                            .arg(kLowestAddress).arg(kHighestAddress)
                            .arg(meterLine.addresses == MeterLine::AddressList
                                     ? QStringLiteral(", or a list of the meters on one line, such as 1,3,5-9: each is "
                                                      "read in turn")
                                     : QString()),
                        QStringLiteral("N"), QStringLiteral("15")});
    if (meterLine.frames)
        options.append({{QStringLiteral("v"), kVerbose},
                        QStringLiteral("Print each frame on the line to stderr, as the window's traffic monitor shows it.")});
    return options;
}

// "1,3,5-9": each address once, in the order given; nothing when the text is not such a list.
std::optional<QList<int>> AddressList(const QString& text)
{
    QList<int> addresses;
    for (const QString& item : text.split(QLatin1Char(','))) {
        const QStringList ends = item.split(QLatin1Char('-'));
        bool firstOk = false;
        bool lastOk = false;
        const int first = ends.first().toInt(&firstOk);
        const int last = ends.last().toInt(&lastOk);
        if (ends.size() > 2 || !firstOk || !lastOk || first < kLowestAddress || first > last || last > kHighestAddress)
            return std::nullopt;
        for (int address = first; address <= last; ++address) {
            if (addresses.contains(address))
                return std::nullopt;
            addresses.append(address);
        }
    }
    return addresses;
}

} // namespace

const QCommandLineOption kTickCount(QStringLiteral("count"),
    QStringLiteral("Stop after N ticks (N rounds of the meters of an --address list)."), QStringLiteral("N"));

std::optional<qint64> TickCount(const CommandLine& line)
{
    if (!line.IsSet(kTickCount))
        return -1;
    bool ok = false;
    const qint64 ticks = line.Value(kTickCount).toLongLong(&ok);
    if (ok && ticks >= 1)
        return ticks;
    Fail(kExitBadArguments, QStringLiteral("--count must be 1 or more, not \"%1\"").arg(line.Value(kTickCount)));
    return std::nullopt;
}

int Fail(int status, const QString& message)
{
    QTextStream(stderr) << "qx5820: " << message << Qt::endl;
    return status;
}

int PrintOut(const QByteArray& bytes)
{
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly) || out.write(bytes) < 0 || !out.flush())
        return Fail(kExitFileError, QStringLiteral("cannot write the output: ") + out.errorString());
    return kExitOk;
}

CommandLine::CommandLine(const QString& usage, const QString& description, const std::optional<MeterLine>& meterLine)
    : m_usage(usage), m_help(QStringList{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")),
      m_meterLine(meterLine)
{
    m_parser.setApplicationDescription(description);
    m_parser.addOption(m_help);
    if (meterLine)
        m_parser.addOptions(LineOptionsOf(*meterLine));
}

std::optional<int> CommandLine::Parse(const QStringList& arguments)
{
    // The parser skips the first argument, the program's name.
    if (!m_parser.parse(QStringList{QStringLiteral("qx5820")} + arguments))
        return Refused(m_parser.errorText());
    if (const std::optional<QString> unexpected = Unexpected(); unexpected && !m_parser.isSet(m_help))
        return Refused(*unexpected);
    if (m_parser.isSet(m_help)) {
        // The parser names the program by the path it was started with.
        QString help = m_parser.helpText();
        const qsizetype options = help.indexOf(QLatin1String(" [options]"));
        if (help.startsWith(QLatin1String("Usage: ")) && options > 0)
            help.replace(7, options - 7, QStringLiteral("qx5820 ") + m_usage);
        QTextStream(stdout) << help;
        return kExitOk;
    }
    return std::nullopt;
}

std::optional<int> CommandLine::Refused(const QString& message) const
{
    return Fail(kExitBadArguments, message + QStringLiteral(" (see qx5820 %1 --help)").arg(m_usage));
}

// What the parser lets through but the command cannot use: an empty value would silently
// stand for a default (--folder "" for beside the program, --output "" for stdout), and a
// stray word would be ignored.
std::optional<QString> CommandLine::Unexpected() const
{
    for (const QString& name : m_parser.optionNames()) {
        if (m_parser.values(name).contains(QString()))
            return QStringLiteral("--%1 needs a value, not an empty text").arg(name);
    }
    if (!m_takesWords && !m_parser.positionalArguments().isEmpty())
        return QStringLiteral("unexpected argument \"%1\": qx5820 %2 takes options only")
            .arg(m_parser.positionalArguments().first(), m_usage);
    return std::nullopt;
}

std::optional<LineOptions> CommandLine::Line() const
{
    LineOptions line;
    line.port = m_parser.isSet(kPort) ? m_parser.value(kPort) : qEnvironmentVariable(kPortVariable);
    if (line.port.isEmpty()) {
        Fail(kExitBadArguments, QStringLiteral("no port given: --port DEVICE, a port number, sim or tcp://host:port, "
                                               "or the %1 environment variable").arg(QLatin1String(kPortVariable)));
        return std::nullopt;
    }
    line.baudRate = m_parser.value(kBaud);
    if (!BaudRateTexts().contains(line.baudRate)) {
        Fail(kExitBadArguments, QStringLiteral("--baud must be 9600 or 19200, not \"%1\"").arg(line.baudRate));
        return std::nullopt;
    }
    line.stopBits = m_parser.value(kStopBits);
    if (!StopBitTexts().contains(line.stopBits)) {
        Fail(kExitBadArguments, QStringLiteral("--stop-bits must be 1 or 2, not \"%1\"").arg(line.stopBits));
        return std::nullopt;
    }
    bool ok = false;
    const double seconds = m_parser.value(kTimeout).toDouble(&ok);
    // Written so that "nan" fails it too.
    if (!ok || !(seconds >= 0.05 && seconds <= 60)) {
        Fail(kExitBadArguments, QStringLiteral("--timeout must be 0.05 to 60 seconds, not \"%1\"").arg(m_parser.value(kTimeout)));
        return std::nullopt;
    }
    line.replyTimeoutMs = int(seconds * 1000 + 0.5);
    line.verbose = m_meterLine->frames && m_parser.isSet(kVerbose);
    if (m_meterLine->addresses == MeterLine::NoAddress)
        return line;
    const bool addressList = m_meterLine->addresses == MeterLine::AddressList;
    const std::optional<QList<int>> addresses = AddressList(m_parser.value(kAddress));
    if (!addresses || (!addressList && addresses->size() > 1)) {
        Fail(kExitBadArguments, QStringLiteral("--address must be %1 to %2%3, not \"%4\"")
                                    .arg(kLowestAddress).arg(kHighestAddress)
                                    .arg(addressList ? QStringLiteral(" or a list of them (1,3,5-9), each once") : QString(),
                                         m_parser.value(kAddress)));
        return std::nullopt;
    }
    line.addresses = *addresses;
    return line;
}
