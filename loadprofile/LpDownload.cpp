#include "loadprofile/LpDownload.h"

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "loadprofile/LpCsvFile.h"
#include "link/RtuFrames.h"
#include "ports/Clock.h"
#include "ports/OperatorPrompts.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace {

constexpr quint16 kNextInterval = 0x104D;
constexpr quint16 kRecordArea = 0x2000; // group 1; group 2 follows 0x100 further
constexpr int kRecordHeaderRegisters = 3;
constexpr int kMaxChannels[] = {12, 8};

const QString kReadAndSave = QStringLiteral("Read And Save");

// Where "LP Data" goes first: beside the program, as the tool always kept it, unless the
// program was installed into the system's folders, which belong to the package manager whoever
// may write them (root included); then the documents folder.
QString ProgramFolder()
{
    const QString folder = QCoreApplication::applicationDirPath();
    return folder.startsWith(QStringLiteral("/usr/")) ? QString() : folder;
}

} // namespace

QString LpStartMessage(LpStart start)
{
    if (start == LpStart::NoRange)
        return QStringLiteral("Choose the first and the last interval to download.");
    if (start == LpStart::RangeReversed)
        return QStringLiteral("Interval starting number must less than final number！");
    return QString();
}

LpDownload::LpDownload(Connection& connection, PollCycle& poll, OperatorPrompts& prompts, const Clock& clock,
                       QObject* parent)
    : QObject(parent),
      programFolder(ProgramFolder()),
      documentsFolder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)),
      m_connection(connection),
      m_poll(poll),
      m_prompts(prompts),
      m_clock(clock)
{
    Timer_RS_Lpf.setInterval(kStepIntervalMs);
    connect(&Timer_RS_Lpf, &QTimer::timeout, this, &LpDownload::Timer_RS_Lpf_Timer);
}

LpStart LpDownload::Start(int group, qint32 first, qint32 last)
{
    if (first < 1 || last < 1)
        return LpStart::NoRange;
    if (first > last)
        return LpStart::RangeReversed;
    if (bLpTickBusy != kFalse)
        return LpStart::Busy;
    if (!m_connection.bOnLine.isTrue()) {
        SetStatus(QStringLiteral("Communication Failure"));
        bLpCommFailed = kTrue;
        return LpStart::OffLine;
    }
    if (bLpDownloadActive != kFalse && Remaining()) {
        if (m_prompts.AskYesNo(QStringLiteral("Continue Data saving before communication failure ? Yes : Continue；No : from begining！"))) {
            TakeTheLine();
            emit faceChanged(Face::Reading, QStringLiteral("Reading"));
            return LpStart::Continued;
        }
        bLpDownloadActive = kFalse;
        GiveTheLineBack();
    }

    const MeterReading& reading = m_poll.Reading();
    const int channels = reading.loadProfile[std::size_t(group)].channelCount;
    if (channels < 1 || channels > kMaxChannels[group]) {
        SetStatus(QStringLiteral("The meter reports %1 channels for group %2: nothing to download.").arg(channels).arg(group + 1));
        return LpStart::NoChannels;
    }
    if (!StartFile(group))
        return LpStart::FileError;
    m_group = group;
    m_channels = channels;
    m_firstRowAt.reset();
    emit faceChanged(Face::Reading, QStringLiteral("Reading"));
    LpCurrentIndex = first - 1;
    LpStopIndex = last - 1;
    const QList<int> codes = reading.loadProfile[std::size_t(group)].channelCodes.mid(0, channels);
    if (const auto error = LpCsvFile::Append(LpFilePath, LpCsvFile::ColumnLine(codes))) {
        SetStatus(*error);
        emit faceChanged(Face::Normal, kReadAndSave);
        return LpStart::FileError;
    }
    bLpDownloadActive = kTrue;
    TakeTheLine();
    return LpStart::Started;
}

void LpDownload::Stop()
{
    if (!Running())
        return;
    Timer_RS_Lpf.stop();
    emit finished(LpEnd::Stopped, QString());
}

qint32 LpDownload::ValidIntervals(int group) const
{
    return m_poll.Reading().loadProfile[std::size_t(group)].validIntervals;
}

int LpDownload::IntervalMinutes() const
{
    return m_poll.Reading().loadProfile[std::size_t(m_group)].intervalMinutes;
}

void LpDownload::SetStatus(const QString& text)
{
    m_connection.status.Set(text);
}

// The folder, the day's file of the group, and the "Date : " line that opens a download's
// block in it.
bool LpDownload::StartFile(int group)
{
    const auto folder = LpCsvFile::ChooseFolder(programFolder, documentsFolder);
    if (!folder) {
        SetStatus(QStringLiteral("Cannot create the folder \"LP Data\" beside the program or in %1.")
                      .arg(QDir::toNativeSeparators(documentsFolder)));
        return false;
    }
    const QDateTime now = m_clock.Now();
    LpFilePath = QDir(folder->path).filePath(LpCsvFile::FileName(m_poll.Reading().identification, now.date(), group));
    if (const auto error = LpCsvFile::Append(LpFilePath, LpCsvFile::DateLine(now))) {
        SetStatus(*error);
        return false;
    }
    QString started = QStringLiteral("LoadProfile Data start download");
    if (!folder->beside)
        started += QStringLiteral("; the program's folder cannot be written, the file goes to %1")
                       .arg(QDir::toNativeSeparators(folder->path));
    SetStatus(started);
    return true;
}

void LpDownload::TakeTheLine()
{
    bLpCommFailed = kFalse;
    m_connection.Timer1Sec.stop();
    Timer_RS_Lpf.start();
}

void LpDownload::GiveTheLineBack()
{
    Timer_RS_Lpf.stop();
    if (m_connection.bOnLine.isTrue())
        m_connection.Timer1Sec.start();
}

void LpDownload::Timer_RS_Lpf_Timer()
{
    if (bLpDownloadActive == kFalse || m_connection.link.bWaiting != kFalse)
        return;
    bLpTickBusy = kTrue;
    ReadLpBlockAndSave();
    bLpTickBusy = kFalse;
    if (bLpCommFailed != kFalse) {
        // As a click of "Read and Save" would: off line it reports the failure, on line it
        // offers to continue.
        bLpCommFailed = kFalse;
        Timer_RS_Lpf.stop();
        Start(m_group, LpCurrentIndex + 1, LpStopIndex + 1);
    }
}

void LpDownload::ReadLpBlockAndSave()
{
    RegisterLink& link = m_connection.link;
    const qint32 remaining = LpStopIndex - LpCurrentIndex + 1;
    const int records = remaining < kRecordsPerStep + 1 ? int(remaining) : kRecordsPerStep;
    const int recordRegisters = kRecordHeaderRegisters + 2 * m_channels;
    const TransactionResult pointed =
        link.WriteRegisters(link.ModbusAddress, kNextInterval, 1, Rtu::RegisterData({quint16(LpCurrentIndex + 1)}));
    if (!pointed.good()) {
        bLpCommFailed = kTrue;
        return;
    }
    link.ResetRxData();
    const TransactionResult read = link.ReadRegisters(link.ModbusAddress, Rtu::kReadInput,
                                                      quint16(kRecordArea + 0x100 * m_group),
                                                      quint16(records * recordRegisters));
    if (!read.good() || !m_connection.bOnLine.isTrue()) {
        bLpCommFailed = kTrue;
        return;
    }
    if (const auto jump = Jump(link.RxData)) {
        bLpDownloadActive = kFalse;
        GiveTheLineBack();
        SetStatus(*jump);
        emit faceChanged(Face::Normal, kReadAndSave);
        emit finished(LpEnd::Jumped, *jump);
        return;
    }
    m_firstRowAt.reset();
    // The index moves on only once the rows are in the file.
    if (const auto error = LpCsvFile::Append(LpFilePath, LpCsvFile::Rows(link.RxData, records, m_channels))) {
        Interrupt(LpEnd::FileError, *error);
        return;
    }
    LpCurrentIndex += kRecordsPerStep; // also after a last, shorter step: that ends the download
    emit rowsSaved();
    if (Remaining())
        SetStatus(QStringLiteral("Current number of download interval : %1").arg(LpCurrentIndex));
    else
        Finish();
}

std::optional<QString> LpDownload::Jump(const QByteArray& records) const
{
    const QDateTime first = LpCsvFile::RecordTime(records, 0, m_channels);
    if (!m_firstRowAt || first == *m_firstRowAt)
        return std::nullopt;
    return QStringLiteral("Interval %1 of the meter is stamped %2, where the row after the file's last one would be stamped %3: the "
                          "meter's intervals were numbered anew since (its memory rolled over, or was cleared and "
                          "filled again), and its rows would not follow the file's. Nothing was appended.")
        .arg(LpCurrentIndex + 1).arg(LpCsvFile::TimeText(first), LpCsvFile::TimeText(*m_firstRowAt));
}

// The interval at LpCurrentIndex is the next to read, the one at LpStopIndex the last: one is
// left when they are equal, so a range of 5 takes a step of 4 and a step of 1.
bool LpDownload::Remaining() const
{
    return LpCurrentIndex <= LpStopIndex;
}

void LpDownload::Finish()
{
    bLpDownloadActive = kFalse;
    GiveTheLineBack();
    SetStatus(QStringLiteral("Last number of download interval : %1，and finish download！").arg(LpStopIndex + 1));
    emit faceChanged(Face::Normal, kReadAndSave);
    emit finished(LpEnd::Finished, m_connection.status.Text());
}

// The file could not take the rows: the download stops where it is and can be continued once
// the disk has room again; polling goes on meanwhile.
void LpDownload::Interrupt(LpEnd end, const QString& why)
{
    GiveTheLineBack();
    SetStatus(why + QStringLiteral(" The download stopped at interval %1 and can be continued.").arg(LpCurrentIndex + 1));
    emit faceChanged(Face::Resumable, QStringLiteral("Reading"));
    emit finished(end, m_connection.status.Text());
}

void LpDownload::StopForOffLine()
{
    if (!Timer_RS_Lpf.isActive())
        return;
    Timer_RS_Lpf.stop();
    if (bLpDownloadActive != kFalse && Remaining())
        emit faceChanged(Face::Resumable, QStringLiteral("Reading"));
    emit finished(LpEnd::Interrupted, QString());
}

void LpDownload::RestoreInterrupted(int group, int channels, const QString& filePath, qint32 currentIndex, qint32 stopIndex,
                                     const std::optional<QDateTime>& firstRowAt)
{
    m_firstRowAt = firstRowAt;
    m_group = group;
    m_channels = channels;
    LpFilePath = filePath;
    LpCurrentIndex = currentIndex;
    LpStopIndex = stopIndex;
    bLpDownloadActive = kTrue;
}
