// lp download: a range of a load-profile group's intervals into its CSV file, through the
// window's own download (the same checks, steps, file and messages), resumable across runs.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/LpProgress.h"
#include "app/cli/MeterRound.h"
#include "loadprofile/LpCsvFile.h"
#include "loadprofile/LpProgressRecord.h"
#include "loadprofile/LpResume.h"
#include "loadprofile/PlainFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>
#include <memory>

namespace {

const QCommandLineOption kGroup(QStringLiteral("group"), QStringLiteral("The load-profile group: 1 or 2."), QStringLiteral("N"));
const QCommandLineOption kFrom(QStringLiteral("from"), QStringLiteral("The first interval, counted from 1 (default 1)."), QStringLiteral("N"));
const QCommandLineOption kTo(QStringLiteral("to"),
    QStringLiteral("The last interval (default: the last valid interval the meter reports for the group)."), QStringLiteral("N"));
const QCommandLineOption kContinue(QStringLiteral("continue"),
    QStringLiteral("Go on with the download of the group that an earlier run left unfinished, from its next interval "
                   "into the same file. Takes its range from the progress record, so not with --from or --to."));
const QCommandLineOption kFolder(QStringLiteral("folder"),
    QStringLiteral("Make the folder \"LP Data\" in DIR instead of beside the program, without falling back to the "
                   "documents folder. Give the same DIR with --continue."), QStringLiteral("DIR"));

const QString kDescription = QStringLiteral(
    "Downloads recorded intervals of a load-profile group into its CSV file, as the window's \"Read and Save\"\n"
    "does: \"<meter>_<yyyymmdd>_Group<n>.csv\" in the folder \"LP Data\" beside the program (in the documents\n"
    "folder when that one cannot be written), a \"Date : \" line and the column header, then a row per\n"
    "interval. The range defaults to every valid interval the meter reports for the group.\n\n"
    "Stopped early (Ctrl-C, a lost line, a meter that stopped answering), the download keeps its rows and a\n"
    "progress record \"<meter>_Group<n>.progress.json\" beside the file; --continue goes on from the next\n"
    "interval into the same file, also on a later day, as long as the group records the same channels.\n"
    "A download without --continue starts over and replaces that record.\n\n"
    "On a terminal a progress bar is drawn on stderr; at the end one line on stdout names the file and the\n"
    "intervals written.\n\n"
    "Exit status as \"qx5820 --help\" lists them; 2 also for a range the window refuses and when there is\n"
    "nothing to continue, 5 when the meter's group does not allow the download or its continuation.");

// What the command was asked for, checked.
struct Request {
    int group = 1;
    std::optional<qint32> from;
    std::optional<qint32> to;
    bool resume = false;
    QString folder; // the parent of "LP Data"; empty: beside the program
};

std::optional<qint32> WholeNumber(const CommandLine& line, const QCommandLineOption& option, bool* ok)
{
    if (!line.IsSet(option))
        return std::nullopt;
    const qint32 number = line.Value(option).toInt(ok);
    if (!*ok)
        Fail(kExitBadArguments, QStringLiteral("--%1 must be a whole number, not \"%2\"").arg(option.names().first(), line.Value(option)));
    return number;
}

std::optional<Request> RequestOf(const CommandLine& line)
{
    Request request;
    const QString group = line.Value(kGroup);
    if (group != QLatin1String("1") && group != QLatin1String("2")) {
        Fail(kExitBadArguments, group.isEmpty() ? QStringLiteral("no group given: --group 1 or --group 2")
                                                : QStringLiteral("--group must be 1 or 2, not \"%1\"").arg(group));
        return std::nullopt;
    }
    request.group = group.toInt();
    bool fromOk = true;
    bool toOk = true;
    request.from = WholeNumber(line, kFrom, &fromOk);
    request.to = WholeNumber(line, kTo, &toOk);
    if (!fromOk || !toOk)
        return std::nullopt;
    request.resume = line.IsSet(kContinue);
    if (request.resume && (request.from || request.to)) {
        Fail(kExitBadArguments, QStringLiteral("--continue goes on with the interrupted range: --from and --to do not go with it"));
        return std::nullopt;
    }
    request.folder = line.Value(kFolder);
    return request;
}

// One run of the command: on line, the download started or continued, followed to its end.
class LpDownloadRun {
public:
    LpDownloadRun(const Request& request, const LineOptions& line) : m_request(request), m_console(line)
    {
        // Only --continue goes on with a download broken off, never one of another meter of the line.
        m_console.prompts().continueDownload = request.resume;
    }

    // Each meter of the line in turn, into its own file.
    int Run();

private:
    int Download();
    LpDownload& download() { return m_console.session().download; }
    // Each gives the exit status when the download did not start.
    std::optional<int> Start(const MeterReading::LoadProfileGroup& group);
    std::optional<int> Continue(const MeterReading::LoadProfileGroup& group);
    std::optional<int> Begin(qint32 first, qint32 last);
    int NotStarted(LpStart result);
    int Follow();
    void RowsSaved();
    int Outcome();
    // The first interval not yet in the file, counted from 1.
    qint32 NextInterval();
    QString WhereItStopped() const;

    Request m_request;
    ConsoleSession m_console;
    QString m_folder;
    QString m_recordPath;
    LpProgressRecord m_record;
    qint32 m_firstHere = 0; // the first interval of this run
    std::optional<QString> m_recordError;
    std::unique_ptr<LpProgress> m_progress;
    std::optional<LpEnd> m_end;
    QString m_endWhy;
};

int LpDownloadRun::Run()
{
    if (const int status = m_console.GoOnLine(); status != kExitOk)
        return status;
    LpDownload& lp = download();
    QObject::connect(&lp, &LpDownload::rowsSaved, [this] { RowsSaved(); });
    QObject::connect(&lp, &LpDownload::finished, [this](LpEnd end, const QString& why) {
        m_end = end;
        m_endWhy = why;
        m_console.Wake();
    });
    MeterRound round(m_console);
    round.Run([this] { return Download(); });
    return round.Finish();
}

int LpDownloadRun::Download()
{
    m_record = LpProgressRecord();
    m_recordError.reset();
    m_end.reset();
    m_endWhy.clear();
    const std::optional<MeterReading> reading = m_console.NextReading();
    if (!reading)
        return m_console.Ended();
    LpDownload& lp = download();
    if (!m_request.folder.isEmpty()) {
        lp.programFolder = m_request.folder;
        lp.documentsFolder.clear();
    }
    const auto folder = LpCsvFile::ChooseFolder(lp.programFolder, lp.documentsFolder);
    if (!folder) {
        QStringList tried;
        for (const QString& parent : {lp.programFolder, lp.documentsFolder}) {
            if (!parent.isEmpty())
                tried << QDir::toNativeSeparators(parent);
        }
        return Fail(kExitFileError, QStringLiteral("cannot create the folder \"LP Data\" in %1").arg(tried.join(QStringLiteral(" or "))));
    }
    m_folder = folder->path;
    m_recordPath = QDir(m_folder).filePath(LpProgressRecord::FileName(reading->identification, m_request.group));
    // Refused before a row is written, so that a planted link leaves no block behind either.
    if (const std::optional<QString> refused = PlainFile::Refusal(m_recordPath))
        return Fail(kExitFileError, QStringLiteral("cannot write %1: %2").arg(QDir::toNativeSeparators(m_recordPath), *refused));
    const MeterReading::LoadProfileGroup& group = reading->loadProfile[std::size_t(m_request.group - 1)];
    if (const std::optional<int> status = m_request.resume ? Continue(group) : Start(group))
        return *status;
    return Follow();
}

std::optional<int> LpDownloadRun::Start(const MeterReading::LoadProfileGroup& group)
{
    if (group.validIntervals < 1 && !m_request.to) {
        QTextStream(stdout) << "group " << m_request.group << " holds no recorded interval: nothing to download" << Qt::endl;
        return kExitOk;
    }
    const qint32 first = m_request.from.value_or(1);
    const qint32 last = m_request.to.value_or(group.validIntervals);
    // As the window's start and stop lists refuse an interval the meter has not recorded.
    if (first > group.validIntervals || last > group.validIntervals) {
        return Fail(kExitBadArguments, QStringLiteral("Over Interval Valid limit (group %1 holds %2 valid intervals)")
                                           .arg(m_request.group).arg(group.validIntervals));
    }
    m_record.group = m_request.group;
    m_record.channels = group.channelCount;
    m_record.codes = group.channelCodes.mid(0, group.channelCount);
    m_record.first = first;
    m_record.last = last;
    return Begin(first, last);
}

std::optional<int> LpDownloadRun::Continue(const MeterReading::LoadProfileGroup& group)
{
    if (!QFileInfo::exists(m_recordPath)) {
        return Fail(kExitBadArguments, QStringLiteral("--continue: no interrupted download of group %1 to go on with (no %2)")
                                           .arg(m_request.group).arg(QDir::toNativeSeparators(m_recordPath)));
    }
    QString error;
    const std::optional<LpProgressRecord> record = LpProgressRecord::Load(m_recordPath, &error);
    if (!record)
        return Fail(kExitBadArguments, QStringLiteral("--continue: ") + error);
    if (const std::optional<QString> refused = PrepareLpResume(*record, m_folder, group))
        return Fail(kExitRefused, QStringLiteral("--continue: %1. Start over without --continue.").arg(*refused));
    m_record = *record;
    download().RestoreInterrupted(m_request.group - 1, record->channels, QDir(m_folder).filePath(record->file),
                                  record->next - 1, record->last - 1,
                                  LpNextRowTime(*record, m_folder, group.intervalMinutes));
    // The download asks whether to continue the one it holds: ConsolePrompts answers Yes.
    return Begin(record->next, record->last);
}

// The download of the range started, or the interrupted one continued, with its record beside it.
std::optional<int> LpDownloadRun::Begin(qint32 first, qint32 last)
{
    m_firstHere = first;
    LpDownload& lp = download();
    const LpStart started = lp.Start(m_request.group - 1, first, last);
    if (started != LpStart::Started && started != LpStart::Continued)
        return NotStarted(started);
    m_record.file = QFileInfo(lp.LpFilePath).fileName();
    m_record.next = first;
    m_record.size = QFileInfo(lp.LpFilePath).size();
    if (const auto error = m_record.Save(m_recordPath)) {
        lp.Stop();
        return Fail(kExitFileError, *error);
    }
    return std::nullopt;
}

int LpDownloadRun::NotStarted(LpStart result)
{
    if (result == LpStart::NoRange || result == LpStart::RangeReversed)
        return Fail(kExitBadArguments, LpStartMessage(result));
    if (result == LpStart::OffLine)
        return Fail(kExitNoAnswer, m_console.OffLineReason());
    // The status line says why: the folder or the file, or the group's set-up.
    return Fail(result == LpStart::FileError ? kExitFileError : kExitRefused, m_console.session().Status());
}

int LpDownloadRun::Follow()
{
    LpDownload& lp = download();
    m_progress = std::make_unique<LpProgress>(m_record.last - m_record.first + 1, m_record.next - m_record.first);
    // Ctrl-C between two steps: the wait ends, and the download with it.
    if (!m_console.Await([this] { return m_end.has_value(); }))
        lp.Stop();
    m_progress->End();
    return Outcome();
}

// After each step: the record follows the file, or goes once the range is done.
void LpDownloadRun::RowsSaved()
{
    const qint32 next = NextInterval();
    if (next > m_record.last) {
        QFile::remove(m_recordPath);
    } else {
        m_record.next = next;
        m_record.size = QFileInfo(download().LpFilePath).size();
        m_recordError = m_record.Save(m_recordPath);
    }
    m_progress->Update(next - m_record.first);
    // Ctrl-C stops the download after the step it came in; so does a record that cannot follow.
    if (m_recordError || m_console.Interrupted())
        download().Stop();
}

int LpDownloadRun::Outcome()
{
    if (m_end == LpEnd::Finished) {
        QTextStream(stdout) << QStringLiteral("%1: %2 intervals written (%3 to %4 of group %5)")
                                   .arg(QDir::toNativeSeparators(download().LpFilePath)).arg(NextInterval() - m_firstHere)
                                   .arg(m_firstHere).arg(m_record.last).arg(m_request.group)
                            << Qt::endl;
        return kExitOk;
    }
    if (m_recordError)
        return Fail(kExitFileError, *m_recordError + QStringLiteral("; ") + WhereItStopped());
    if (m_console.Interrupted())
        return Fail(kExitInterrupted, QStringLiteral("interrupted; ") + WhereItStopped());
    if (m_end == LpEnd::Jumped)
        return Fail(kExitRefused, QStringLiteral("--continue: %1 Start over without --continue.").arg(m_endWhy));
    if (m_end == LpEnd::FileError)
        return Fail(kExitFileError, m_endWhy + QStringLiteral("; ") + WhereItStopped());
    return Fail(kExitNoAnswer, m_console.OffLineReason() + QStringLiteral("; ") + WhereItStopped());
}

qint32 LpDownloadRun::NextInterval()
{
    // The last step of a range may read past its end; LpCurrentIndex is 0-based.
    const LpDownload& lp = download();
    return std::min(lp.LpCurrentIndex, lp.LpStopIndex + 1) + 1;
}

QString LpDownloadRun::WhereItStopped() const
{
    return QStringLiteral("the download of group %1 stopped before interval %2 of %3 to %4, the rows before it are in %5. "
                          "Run the same command with --continue in place of --from and --to to go on.")
        .arg(m_request.group).arg(m_record.next).arg(m_record.first).arg(m_record.last)
        .arg(QDir::toNativeSeparators(QDir(m_folder).filePath(m_record.file)));
}

int RunLpDownload(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("lp download"), kDescription, MeterLine{.addresses = MeterLine::AddressList});
    line.Add(kGroup);
    line.Add(kFrom);
    line.Add(kTo);
    line.Add(kContinue);
    line.Add(kFolder);
    if (const auto status = line.Parse(arguments))
        return *status;
    const std::optional<Request> request = RequestOf(line);
    const std::optional<LineOptions> options = line.Line();
    if (!request || !options)
        return kExitBadArguments;
    return LpDownloadRun(*request, *options).Run();
}

} // namespace

int RunLp(const QStringList& arguments)
{
    const QString word = arguments.value(0);
    if (word == QLatin1String("download"))
        return RunLpDownload(arguments.mid(1));
    if (word == QLatin1String("report"))
        return RunLpReport(arguments.mid(1));
    if (word == QLatin1String("-h") || word == QLatin1String("--help")) {
        // Both sub-commands' own help, options and all, so that it is the one their parsers give.
        RunLpDownload({word});
        QTextStream(stdout) << '\n';
        return RunLpReport({word});
    }
    return Fail(kExitBadArguments, word.isEmpty() ? QStringLiteral("lp needs a sub-command: download or report (see qx5820 lp --help)")
                                                  : QStringLiteral("unknown lp sub-command \"%1\": there are download and report").arg(word));
}
