// read: one poll of the meter, printed. watch: a line a tick until stopped. Either goes
// through several meters of one line in turn, each line or block naming its meter.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/MeterRound.h"
#include "app/cli/ReadingFormat.h"

#include <QFile>

namespace {

// What read's and watch's help say of their output.
const QString kOutputNote = QStringLiteral(
    "\n\nThe table gives each value with its unit; JSON and CSV keys end in theirs (voltage_an_v, frequency_hz, "
    "energy_delivered_total_kwh). \"time\" is the PC's clock in ISO 8601 with its UTC offset "
    "(2026-11-24T09:05:00.125+01:00); \"meter_clock\" is the meter's in ISO 8601 without an offset, as the meter "
    "keeps no zone. pt_ratio_2 is the register (primary ÷ secondary), pt_ratio_2_primary_v the primary volts "
    "(PT ratio 1 × the register).");

// "table, json or csv".
QString Choices(const QStringList& formats)
{
    return formats.mid(0, formats.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" or ") + formats.last();
}

// The formats a command prints, its default first: the option's help and its check both say them.
QCommandLineOption FormatOption(const QStringList& formats)
{
    return QCommandLineOption(QStringLiteral("format"),
                              QStringLiteral("%1 (default %2).").arg(Choices(formats), formats.first()),
                              QStringLiteral("FORMAT"), formats.first());
}

std::optional<ReadingFormat> FormatOf(const CommandLine& line, const QCommandLineOption& option, const QStringList& formats)
{
    const QString text = line.Value(option);
    if (!formats.contains(text)) {
        Fail(kExitBadArguments, QStringLiteral("--format must be %1, not \"%2\"").arg(Choices(formats), text));
        return std::nullopt;
    }
    return ParseReadingFormat(text);
}

// Where the lines of a watch go: stdout, or a file that is appended to, each line written
// through at once so that an interruption loses none.
class LineSink {
public:
    bool Open(const QString& path)
    {
        m_file.setFileName(path);
        if (path.isEmpty())
            return m_file.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered);
        const bool opened = m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
        m_cutBack = opened && !m_file.isSequential();
        return opened;
    }
    // A line is written whole or not at all: one cut short by a full disk is taken back out.
    bool Write(const QByteArray& line)
    {
        const qint64 before = m_cutBack ? m_file.size() : 0;
        const qint64 written = m_file.write(line);
        if (written == line.size())
            return true;
        // A short write leaves no reason; the rest, tried again, fails with the system's.
        if (written > 0)
            m_file.write(line.mid(written));
        m_reason = m_file.errorString(); // before the resize clears it
        if (m_cutBack)
            m_file.resize(before);
        return false;
    }
    bool Empty() const { return m_file.size() == 0; }
    QString Error() const
    {
        return m_file.fileName() + QStringLiteral(": ") + (m_reason.isEmpty() ? m_file.errorString() : m_reason);
    }

private:
    QFile m_file;
    bool m_cutBack = false; // stdout, a pipe or a device cannot be cut back
    QString m_reason;
};

} // namespace

int RunRead(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("read"), QStringLiteral("Reads every measurement and setting of the meter once and prints them.") + kOutputNote,
                     MeterLine{.addresses = MeterLine::AddressList});
    const QStringList formats{QStringLiteral("table"), QStringLiteral("json"), QStringLiteral("csv")};
    const QCommandLineOption formatOption = FormatOption(formats);
    line.Add(formatOption);
    if (const auto status = line.Parse(arguments))
        return *status;
    const auto format = FormatOf(line, formatOption, formats);
    const auto options = line.Line();
    if (!format || !options)
        return kExitBadArguments;

    ConsoleSession console(*options);
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    // Several meters: JSON lines, one CSV header, table blocks apart.
    const bool several = options->addresses.size() > 1;
    bool first = true;
    MeterRound round(console);
    round.Run([&] {
        const std::optional<MeterReading> reading = console.NextReading();
        if (!reading)
            return console.Ended();
        const int address = console.session().Address();
        const QByteArray text = !several ? Printed(*reading, *format)
            : *format == ReadingFormat::Table ? (first ? QByteArray() : QByteArray("\n")) + Printed(*reading, *format, address)
                                              : LogLine(*reading, *format, first, address);
        first = false;
        return PrintOut(text);
    });
    return round.Finish();
}

int RunWatch(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("watch"),
                     QStringLiteral("Polls the meter as the window does and prints one line a tick (CSV or JSON lines) "
                                    "until interrupted or for --count ticks.") + kOutputNote, MeterLine{.addresses = MeterLine::AddressList});
    const QStringList formats{QStringLiteral("csv"), QStringLiteral("json")};
    const QCommandLineOption formatOption = FormatOption(formats);
    line.Add(formatOption);
    const QCommandLineOption output(QStringLiteral("output"),
        QStringLiteral("Append the lines to FILE instead of printing them (a CSV header only when FILE is new or empty)."),
        QStringLiteral("FILE"));
    line.Add(kTickCount);
    line.Add(output);
    if (const auto status = line.Parse(arguments))
        return *status;
    const auto format = FormatOf(line, formatOption, formats);
    const auto options = line.Line();
    const std::optional<qint64> ticks = TickCount(line);
    if (!format || !options || !ticks)
        return kExitBadArguments;
    LineSink sink;
    if (!sink.Open(line.Value(output)))
        return Fail(kExitFileError, sink.Error());

    ConsoleSession console(*options);
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    bool header = sink.Empty() || !line.IsSet(output);
    std::optional<int> address; // named on each line when the line has several meters
    MeterRound round(console);
    const auto tick = [&] {
        const std::optional<MeterReading> reading = console.NextReading();
        if (!reading)
            return console.Ended();
        if (options->addresses.size() > 1)
            address = console.session().Address();
        if (!sink.Write(LogLine(*reading, *format, header, address)))
            return Fail(kExitFileError, sink.Error());
        header = false;
        return int(kExitOk);
    };
    for (qint64 rounds = 0; *ticks < 0 || rounds < *ticks; ++rounds) {
        if (!round.Run(tick))
            break;
    }
    return round.Finish();
}
