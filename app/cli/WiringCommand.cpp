// wiring: the core's verdict on how the meter is wired to its load, from one reading or from
// each tick, in the words the window's phasor tab shows.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/MeterRound.h"
#include "measure/WiringVerdict.h"


int RunWiring(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("wiring"),
                     QStringLiteral("Judges from one reading whether the meter is wired to its load as it should be, and "
                                    "prints the findings one per line: what and where, then what to check.\n\n"
                                    "Exit status: 0 when every check passed, 1 when something is to be checked or a "
                                    "check had no ground to run on; with --watch the worst seen. Otherwise as "
                                    "\"qx5820 --help\" lists them."), MeterLine{.addresses = MeterLine::AddressList});
    const QCommandLineOption watch(QStringLiteral("watch"),
                                   QStringLiteral("Judge every tick until interrupted or for --count ticks."));
    line.Add(watch);
    line.Add(kTickCount);
    if (const auto status = line.Parse(arguments))
        return *status;
    const auto options = line.Line();
    const std::optional<qint64> ticks = TickCount(line);
    if (!options || !ticks)
        return kExitBadArguments;
    if (line.IsSet(kTickCount) && !line.IsSet(watch))
        return Fail(kExitBadArguments, QStringLiteral("--count goes with --watch"));

    ConsoleSession console(*options);
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    // Repeated or from several meters, each verdict is headed by its reading's time and meter.
    const bool headed = line.IsSet(watch) || options->addresses.size() > 1;
    bool first = true;
    MeterRound round(console);
    const auto judge = [&] {
        const std::optional<MeterReading> reading = console.NextReading();
        if (!reading)
            return console.Ended();
        const WiringVerdict verdict = JudgeWiring(*reading);
        QString text;
        if (headed) {
            text = QStringLiteral("%1Reading of %2").arg(first ? QString() : QStringLiteral("\n"),
                                                         reading->takenAt.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
            if (options->addresses.size() > 1)
                text += QStringLiteral(", address %1").arg(console.session().Address());
            text += u'\n';
        }
        first = false;
        text += verdict.Lines().join(u'\n') + u'\n';
        if (const int status = PrintOut(text.toUtf8()); status != kExitOk)
            return status;
        return int(verdict.Passed() ? kExitOk : kExitFound);
    };
    const qint64 rounds = line.IsSet(watch) ? *ticks : 1;
    for (qint64 done = 0; rounds < 0 || done < rounds; ++done) {
        if (!round.Run(judge))
            break;
    }
    return round.Finish();
}
