// lp report: what a downloaded load-profile file holds and what is wrong with it, as the
// window's load-profile tab reports it.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ExitCodes.h"
#include "loadprofile/LpFileReportJob.h"
#include "ports/TerminationSignals.h"

#include <QEventLoop>
#include <QTextStream>

#include <optional>

const QString kLpReportDescription = QStringLiteral(
    "Reports on a load-profile CSV file written by \"lp download\" or the window: its download blocks, the span\n"
    "of its intervals, the intervals missing between rows, rows written twice, values that cannot be right and\n"
    "lines the download never writes, each by line number. --interval gives the recording interval; without it\n"
    "the most common spacing between rows is taken.\n\n"
    "Exit status: 0 when nothing was found, 1 when anything was (a file without intervals too), 2 for bad\n"
    "arguments and a file that cannot be read, 130 interrupted.");

int RunLpReport(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("lp report"), kLpReportDescription, std::nullopt);
    line.AddPositional(QStringLiteral("FILE"), QStringLiteral("The load-profile CSV file."));
    const QCommandLineOption interval(QStringLiteral("interval"), QStringLiteral("The recording interval in minutes."),
                                      QStringLiteral("MIN"));
    line.Add(interval);
    if (const auto status = line.Parse(arguments))
        return *status;
    const QStringList files = line.Positional();
    if (files.size() != 1)
        return Fail(kExitBadArguments, files.isEmpty() ? QStringLiteral("no file given: lp report FILE")
                                                       : QStringLiteral("lp report takes one file, not %1").arg(files.size()));
    qint64 minutes = 0; // inferred from the rows
    if (line.IsSet(interval)) {
        bool ok = false;
        minutes = line.Value(interval).toLongLong(&ok);
        if (!ok || minutes < 1 || minutes > 24 * 60)
            return Fail(kExitBadArguments, QStringLiteral("--interval must be 1 to 1440 minutes, not \"%1\"").arg(line.Value(interval)));
    }

    // Read in slices from the event loop, so that Ctrl-C stops a long file.
    std::optional<LpFileReport::Report> report;
    QEventLoop loop;
    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &loop, &QEventLoop::quit);
    LpFileReportJob job(files.first(), minutes * 60);
    QObject::connect(&job, &LpFileReportJob::done, &loop, [&](const LpFileReport::Report& done) {
        report = done;
        loop.quit();
    });
    loop.exec();
    if (!report)
        return Fail(kExitInterrupted, QStringLiteral("interrupted"));
    if (!report->error.isEmpty())
        return Fail(kExitBadArguments, report->error);
    QTextStream(stdout) << LpFileReport::Text(*report);
    const bool found = report->intervals == 0 || report->gapCount > 0 || report->duplicateCount > 0
                    || report->malformedCount > 0 || report->implausibleCount > 0;
    return found ? kExitFound : kExitOk;
}
