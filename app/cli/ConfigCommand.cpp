// config save|diff|apply FILE: a meter's configuration as a file. apply writes each setting
// that differs through the same request, dispatcher order and read-back as `set`. With several
// addresses each meter of the line in turn: save writes a file per meter into a folder.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/MeterRound.h"
#include "settings/MeterConfiguration.h"
#include "settings/SettingTable.h"
#include "settings/SettingsHistory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextStream>

#include <utility>

namespace {

const QCommandLineOption kWithCommunication(QStringLiteral("with-communication"),
    QStringLiteral("Include the address, baud rate and stop bits (left alone by default, so that one file serves many meters)."));
const QCommandLineOption kYes(QStringLiteral("yes"),
    QStringLiteral("apply: write a load-profile group whose channel count changes, deleting its records."));

const QString kDescription = QStringLiteral(
    "save FILE: reads the meter and writes its configuration to FILE; with several addresses FILE is a\n"
    "folder that gets one file per meter, named after its identification.\n"
    "diff FILE: the file's settings beside the meter's; exit 0 when they match, 1 when they differ.\n"
    "apply FILE: writes the settings that differ and waits for the meter to show each; exit 5 when\n"
    "one is refused or not confirmed.");

inline constexpr int kExitDiffers = 1;

struct Options {
    QString file;
    bool withCommunication = false;
    bool yes = false;
};

// Whether a setting is part of what diff and apply judge.
bool Judged(Setting setting, const Options& options)
{
    return options.withCommunication || !IsCommunication(setting);
}

// PT ratio 1 × PT ratio 2's primary ÷ secondary: the primary volts the window's real-time tab
// shows, which the file holds only as its two ratios.
QString PrimaryVolts(const MeterConfiguration& configuration)
{
    double volts = 1;
    for (const ConfiguredSetting& item : configuration.settings) {
        if (item.setting == Setting::PtRatio1)
            volts *= item.value.fields.value(0);
        else if (item.setting == Setting::PtRatio2)
            volts *= item.value.fields.value(0) / item.value.fields.value(1);
    }
    return QString::number(volts, 'f', 4);
}

// Nothing after a message on stderr and the exit status in `status`.
std::optional<MeterConfiguration> ReadFile(const QString& path, int* status)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *status = Fail(kExitBadArguments, QStringLiteral("cannot read %1: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
        return std::nullopt;
    }
    ParsedConfiguration parsed = ParseConfiguration(file.readAll());
    if (!parsed.configuration)
        *status = Fail(kExitBadArguments, QStringLiteral("%1 refused: %2").arg(QDir::toNativeSeparators(path), parsed.error));
    return parsed.configuration;
}

// A meter's file in the folder of a save from several: its identification as a file name, and
// its address too when an earlier meter of the run took that name.
QString FileOfMeter(const QString& folder, const QString& identification, int address, QStringList* taken)
{
    QString name = identification.trimmed();
    name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9.-]+")), QStringLiteral("_"));
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')) || taken->contains(name))
        name = QStringLiteral("%1address-%2").arg(name.isEmpty() ? QString() : name + QLatin1Char('_')).arg(address);
    taken->append(name);
    return QDir(folder).filePath(name + QStringLiteral(".json"));
}

// `taken` is null for a save from one meter into options.file.
int Save(ConsoleSession& console, const Options& options, QStringList* taken)
{
    const std::optional<MeterReading> reading = console.NextReading();
    if (!reading)
        return console.Ended();
    const ConfigurationSource source{QString::fromLatin1(reading->identification), reading->takenAt,
                                     QCoreApplication::applicationVersion()};
    const MeterConfiguration configuration = ConfigurationOf(*reading, source);
    const QString path = taken ? FileOfMeter(options.file, source.identification, console.session().Address(), taken) : options.file;
    // Written beside and renamed over: a failed write leaves the old file as it was.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(ConfigurationJson(configuration)) < 0 || !file.commit())
        return Fail(kExitFileError, QStringLiteral("cannot write %1: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
    QTextStream(stdout) << "Saved " << QDir::toNativeSeparators(path) << ": " << configuration.settings.size()
                        << " settings of the meter " << source.identification.trimmed() << Qt::endl;
    return kExitOk;
}

int Diff(ConsoleSession& console, const MeterConfiguration& configuration, const Options& options)
{
    const std::optional<MeterReading> reading = console.NextReading();
    if (!reading)
        return console.Ended();
    QTextStream out(stdout);
    bool differs = false;
    for (const SettingComparison& c : Compare(configuration, *reading)) {
        const bool judged = Judged(c.item.setting, options);
        differs = differs || (judged && c.differs);
        const QString mark = !c.differs ? QStringLiteral(" ") : judged ? QStringLiteral("≠") : QStringLiteral("~");
        out << mark << ' ' << SpecOf(c.item.setting).name << ": file " << c.file << ", meter " << c.meter << '\n';
    }
    // Follows from the two ratios above, so it is shown but not judged.
    out << "  PT ratio 2 × PT ratio 1: file " << PrimaryVolts(configuration) << " V, meter "
        << QString::number(reading->ptRatio2, 'f', 4) << " V\n";
    out << (differs ? "The meter differs from the file (≠)." : "The meter matches the file.");
    if (!options.withCommunication)
        out << " Communication settings (~) count only with --with-communication.";
    out << Qt::endl;
    return differs ? kExitDiffers : kExitOk;
}

// Waits for the outcome of write `id` and prints it; the status to end with, kExitOk when
// confirmed. `ended` when the wait ended first.
int Report(ConsoleSession& console, quint64 id, bool* ended)
{
    const std::optional<SettingOutcome> outcome = console.Outcome(id);
    if (!outcome) {
        *ended = true;
        return console.Ended();
    }
    const QString line = QStringLiteral("%1: %2 → %3: %4").arg(SettingName(outcome->setting), outcome->from, outcome->to, outcome->Text());
    if (outcome->result == SettingOutcome::Confirmed) {
        QTextStream(stdout) << line << Qt::endl;
        return kExitOk;
    }
    return Fail(kExitRefused, line);
}

int Apply(ConsoleSession& console, const MeterConfiguration& configuration, const Options& options)
{
    const std::optional<MeterReading> before = console.NextReading();
    if (!before)
        return console.Ended();
    int status = kExitOk;
    int written = 0;
    // Each write is asked for once the one before has gone, so that it goes with the tick that
    // confirms that one instead of a tick later; asked for sooner, a display item would take
    // the place of the one before it. A communication setting is settled before the next: the
    // tool follows it to the meter.
    quint64 unsettled = 0; // the write whose outcome is still to print; request numbers start at 1
    bool ended = false;
    const auto settle = [&] {
        if (const int result = Report(console, std::exchange(unsettled, 0), &ended); result != kExitOk)
            status = result;
        return !ended;
    };
    const SettingsHistory& history = console.session().settings.history;
    for (const SettingComparison& c : Compare(configuration, *before)) {
        if (!c.differs)
            continue;
        const SettingSpec& entry = SpecOf(c.item.setting);
        const QString change = QStringLiteral("%1: %2 → %3").arg(entry.name, c.meter, c.file);
        if (!Judged(c.item.setting, options)) {
            QTextStream(stdout) << change << ": left as it is (--with-communication writes it)" << Qt::endl;
            continue;
        }
        if (!options.yes && DeletesRecords(c.item.setting, c.item.value, console.session().Reading())) {
            status = Fail(kExitRefused, QStringLiteral("%1: not sent: %2: %3 Add --yes to confirm.").arg(change, entry.caption, entry.question.trimmed()));
            continue;
        }
        ++written;
        const quint64 id = console.session().Request(c.item.setting, c.item.value);
        if (unsettled != 0 && !settle())
            return status;
        if (!console.Await([&history, id] { return history.Find(id) != nullptr; }))
            return console.Ended();
        unsettled = id;
        if (IsCommunication(c.item.setting) && !settle())
            return status;
    }
    if (unsettled != 0 && !settle())
        return status;
    if (written == 0 && status == kExitOk)
        QTextStream(stdout) << "The meter matches the file: nothing was written." << Qt::endl;
    return status;
}

int RunSub(const QString& name, const QStringList& arguments)
{
    CommandLine line(QStringLiteral("config ") + name, kDescription, MeterLine{.addresses = MeterLine::AddressList});
    if (name != QLatin1String("save"))
        line.Add(kWithCommunication);
    if (name == QLatin1String("apply"))
        line.Add(kYes);
    line.AddPositional(QStringLiteral("FILE"), QStringLiteral("The configuration file (JSON)."));
    if (const auto status = line.Parse(arguments))
        return *status;
    if (line.Positional().size() != 1)
        return Fail(kExitBadArguments, QStringLiteral("usage: qx5820 config %1 FILE [options]").arg(name));
    const std::optional<LineOptions> lineOptions = line.Line();
    if (!lineOptions)
        return kExitBadArguments;
    const bool save = name == QLatin1String("save");
    const Options options{line.Positional().first(), !save && line.IsSet(kWithCommunication),
                          name == QLatin1String("apply") && line.IsSet(kYes)};

    // The file is checked whole before anything goes on line.
    std::optional<MeterConfiguration> configuration;
    if (!save) {
        int status = kExitOk;
        configuration = ReadFile(options.file, &status);
        if (!configuration)
            return status;
    }
    const bool several = lineOptions->addresses.size() > 1;
    if (save && several && !QDir().mkpath(options.file))
        return Fail(kExitFileError, QStringLiteral("cannot make the folder %1").arg(QDir::toNativeSeparators(options.file)));
    ConsoleSession console(*lineOptions);
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    QStringList taken;
    MeterRound round(console);
    round.Run([&] {
        if (save)
            return Save(console, options, several ? &taken : nullptr);
        if (several)
            QTextStream(stdout) << "address " << console.session().Address() << ":" << Qt::endl;
        if (name == QLatin1String("diff"))
            return Diff(console, *configuration, options);
        return Apply(console, *configuration, options);
    });
    return round.Finish();
}

} // namespace

int RunConfig(const QStringList& arguments)
{
    const QString word = arguments.value(0);
    if (word == QLatin1String("save") || word == QLatin1String("diff") || word == QLatin1String("apply"))
        return RunSub(word, arguments.mid(1));
    if (word == QLatin1String("-h") || word == QLatin1String("--help")) {
        QTextStream(stdout) << "Usage: qx5820 config save|diff|apply FILE [options]\n" << kDescription << '\n';
        return kExitOk;
    }
    return Fail(kExitBadArguments, word.isEmpty() ? QStringLiteral("config needs a sub-command: save, diff or apply")
                                                  : QStringLiteral("unknown config sub-command \"%1\": save, diff or apply").arg(word));
}
