// lp download: a range of a load-profile group's intervals into its CSV file, through the
// window's own download (the same checks, steps, file and messages), resumable across runs.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "app/cli/LpProgress.h"
#include "loadprofile/LpProgressRecord.h"
#include "loadprofile/LpCsvFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>
#include <memory>

namespace {

const QString kGroupList = QStringLiteral("Combo_LP_Read_Group_Sel");
const QString kStartList = QStringLiteral("Combo_LP_Start_No");
const QString kStopList = QStringLiteral("Combo_LP_Stop_No");

// A step writes at most four rows; no row of 14 channels comes near 1 KiB.
constexpr qint64 kMaxStepBytes = 4 * 1024;

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

// The file of the interrupted download must end where its record says. A run killed between a
// step's rows and its record leaves those rows behind that point: they are cut off, to be read
// again. Anything else (a shorter file, another download's block) is refused.
std::optional<QString> MatchRecordedLength(const QString& path, qint64 size)
{
    if (!QFileInfo(path).isFile())
        return QStringLiteral("the file of the interrupted download, %1, is gone").arg(QDir::toNativeSeparators(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        return QStringLiteral("cannot open %1: %2").arg(QDir::toNativeSeparators(path), file.errorString());
    if (file.size() == size)
        return std::nullopt;
    if (file.size() > size && file.size() - size <= kMaxStepBytes && file.seek(size)) {
        const QByteArray tail = file.readAll();
        const bool rowsOfAStep = tail.endsWith("\r\n") && tail.count('\n') <= LpDownload::kRecordsPerStep
            && !tail.startsWith("Date") && !tail.contains("\nDate");
        if (rowsOfAStep && file.resize(size))
            return std::nullopt;
    }
    return QStringLiteral("%1 is %2 bytes long where the interrupted download left %3: it was changed since, and "
                          "rows appended now would not follow the ones before")
        .arg(QDir::toNativeSeparators(path)).arg(file.size()).arg(size);
}

QString CodesText(const QList<int>& codes)
{
    QStringList texts;
    for (int code : codes)
        texts.append(QString::number(code));
    return texts.join(u',');
}

// One run of the command: on line, the download started or continued, followed to its end.
class LpDownloadRun {
public:
    LpDownloadRun(const Request& request, const LineOptions& line) : m_request(request), m_console(line) {}

    int Run();

private:
    LpDownload& download() { return m_console.session().download; }
    // Each gives the exit status when the download did not start.
    std::optional<int> Start(const MeterReading::LoadProfileGroup& group);
    std::optional<int> Continue(const MeterReading::LoadProfileGroup& group);
    std::optional<int> Click(qint32 first, qint32 last);
    int NotStarted();
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
};

int LpDownloadRun::Run()
{
    if (const int status = m_console.GoOnLine(); status != kExitOk)
        return status;
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
        return Fail(kExitFileError, m_request.folder.isEmpty()
            ? QStringLiteral("cannot create the folder \"LP Data\" beside the program (%1) or in %2")
                  .arg(QDir::toNativeSeparators(lp.programFolder), QDir::toNativeSeparators(lp.documentsFolder))
            : QStringLiteral("cannot create the folder \"LP Data\" in %1").arg(QDir::toNativeSeparators(m_request.folder)));
    }
    m_folder = folder->path;
    m_recordPath = QDir(m_folder).filePath(LpProgressRecord::FileName(reading->identification, m_request.group));
    TextScreen& screen = m_console.screen;
    screen.Select(kGroupList, int(screen.entries.value(kGroupList).indexOf(QString::number(m_request.group))));
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
    m_console.screen.SetText(kStartList, QString::number(first));
    m_console.screen.SetText(kStopList, QString::number(last));
    LpDownload& lp = download();
    // The lists' own checks as they lose the focus.
    lp.Combo_LP_Start_No_Validate();
    lp.Combo_LP_Stop_No_Validate();
    if (!m_console.prompts.errors.isEmpty()) {
        return Fail(kExitBadArguments, QStringLiteral("%1 (group %2 holds %3 valid intervals)")
                                           .arg(m_console.prompts.errors.first()).arg(m_request.group).arg(group.validIntervals));
    }
    m_record.group = m_request.group;
    m_record.channels = group.channelCount;
    m_record.codes = group.channelCodes.mid(0, group.channelCount);
    m_record.first = first;
    m_record.last = last;
    return Click(first, last);
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
    const QList<int> codes = group.channelCodes.mid(0, group.channelCount);
    if (group.channelCount != record->channels || codes != record->codes) {
        return Fail(kExitRefused, QStringLiteral("--continue: group %1 of the meter now records %2 channels (codes %3), the "
                                                 "interrupted download %4 (codes %5): the rows would not match the file's "
                                                 "columns. Start over without --continue.")
                                      .arg(m_request.group).arg(group.channelCount).arg(CodesText(codes))
                                      .arg(record->channels).arg(CodesText(record->codes)));
    }
    if (group.validIntervals < record->last) {
        return Fail(kExitRefused, QStringLiteral("--continue: the meter holds %1 intervals of group %2, fewer than the "
                                                 "interrupted download's last, %3: the group was cleared since. Start over "
                                                 "without --continue.")
                                      .arg(group.validIntervals).arg(m_request.group).arg(record->last));
    }
    const QString path = QDir(m_folder).filePath(record->file);
    if (const auto mismatch = MatchRecordedLength(path, record->size))
        return Fail(kExitRefused, QStringLiteral("--continue: ") + *mismatch + QStringLiteral(". Start over without --continue."));
    m_record = *record;
    download().RestoreInterrupted(m_request.group - 1, record->channels, path, record->next - 1, record->last - 1);
    // The window's question, "Continue Data saving before communication failure ?", answered Yes.
    m_console.prompts.answer = true;
    return Click(record->next, record->last);
}

// "Read and Save" with the range in the start and stop lists.
std::optional<int> LpDownloadRun::Click(qint32 first, qint32 last)
{
    m_console.screen.SetText(kStartList, QString::number(first));
    m_console.screen.SetText(kStopList, QString::number(last));
    m_firstHere = first;
    LpDownload& lp = download();
    lp.Command8_Click();
    if (!m_console.prompts.errors.isEmpty())
        return Fail(kExitBadArguments, m_console.prompts.errors.first());
    if (!lp.Timer_RS_Lpf.isActive())
        return NotStarted();
    m_record.file = QFileInfo(lp.LpFilePath).fileName();
    m_record.next = first;
    m_record.size = QFileInfo(lp.LpFilePath).size();
    if (const auto error = m_record.Save(m_recordPath)) {
        lp.Timer_RS_Lpf.stop();
        return Fail(kExitFileError, *error);
    }
    return std::nullopt;
}

int LpDownloadRun::NotStarted()
{
    const QString status = m_console.screen.Text(QStringLiteral("Text6"));
    if (!m_console.session().connection.bOnLine.isTrue())
        return Fail(kExitNoAnswer, m_console.OffLineReason());
    // Before the file is chosen only the group's configuration stops a download.
    return Fail(download().LpFilePath.isEmpty() ? kExitRefused : kExitFileError, status);
}

int LpDownloadRun::Follow()
{
    LpDownload& lp = download();
    m_progress = std::make_unique<LpProgress>(m_record.last - m_record.first + 1, m_record.next - m_record.first);
    QObject::connect(&lp, &LpDownload::rowsSaved, [this] { RowsSaved(); });
    QObject::connect(&lp, &LpDownload::faceChanged, [this] { m_console.Wake(); });
    m_console.Await([&lp] { return !lp.Timer_RS_Lpf.isActive(); });
    lp.Timer_RS_Lpf.stop();
    m_progress->End();
    return Outcome();
}

// After each step: the record follows the file, or goes once the range is done.
void LpDownloadRun::RowsSaved()
{
    LpDownload& lp = download();
    const qint32 next = NextInterval();
    if (next > m_record.last) {
        QFile::remove(m_recordPath);
    } else {
        m_record.next = next;
        m_record.size = QFileInfo(lp.LpFilePath).size();
        m_recordError = m_record.Save(m_recordPath);
    }
    m_progress->Update(next - m_record.first);
    // Ctrl-C stops the download after the step it came in.
    if (m_recordError || m_console.Interrupted())
        lp.Timer_RS_Lpf.stop();
    m_console.Wake();
}

int LpDownloadRun::Outcome()
{
    LpDownload& lp = download();
    const qint32 next = NextInterval();
    if (lp.bLpDownloadActive == kFalse) {
        QTextStream(stdout) << QStringLiteral("%1: %2 intervals written (%3 to %4 of group %5)")
                                   .arg(QDir::toNativeSeparators(lp.LpFilePath)).arg(next - m_firstHere)
                                   .arg(m_firstHere).arg(m_record.last).arg(m_request.group)
                            << Qt::endl;
        return kExitOk;
    }
    if (m_recordError)
        return Fail(kExitFileError, *m_recordError + QStringLiteral("; ") + WhereItStopped());
    if (m_console.Interrupted())
        return Fail(kExitInterrupted, QStringLiteral("interrupted; ") + WhereItStopped());
    if (!m_console.session().connection.bOnLine.isTrue())
        return Fail(kExitNoAnswer, m_console.OffLineReason() + QStringLiteral("; ") + WhereItStopped());
    return Fail(kExitFileError, m_console.screen.Text(QStringLiteral("Text6")) + QStringLiteral("; ") + WhereItStopped());
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
    CommandLine line(QStringLiteral("lp download"), kDescription, true);
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
    if (word == QLatin1String("-h") || word == QLatin1String("--help")) {
        QTextStream(stdout) << "Usage: qx5820 lp download [options]\n" << kDescription << "\n\nqx5820 lp download --help lists the options.\n";
        return kExitOk;
    }
    return Fail(kExitBadArguments, word.isEmpty() ? QStringLiteral("lp needs a sub-command: download (see qx5820 lp download --help)")
                                                  : QStringLiteral("unknown lp sub-command \"%1\": there is download").arg(word));
}
