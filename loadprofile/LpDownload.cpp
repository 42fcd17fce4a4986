#include "loadprofile/LpDownload.h"

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "connection/TextNumbers.h"
#include "loadprofile/LpCsvFile.h"
#include "loadprofile/LpNumberLists.h"
#include "link/RtuFrames.h"
#include "ports/Clock.h"
#include "ports/OperatorChoices.h"
#include "ports/OperatorPrompts.h"
#include "ports/Screen.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace {

constexpr quint16 kNextInterval = 0x104D;
constexpr quint16 kRecordArea = 0x2000; // group 1; group 2 follows 0x100 further
constexpr int kRecordHeaderRegisters = 3;
constexpr int kMaxChannels[] = {12, 8};

const QString kText6 = QStringLiteral("Text6");
const QString kReadAndSave = QStringLiteral("Read And Save");

} // namespace

LpDownload::LpDownload(Connection& connection, PollCycle& poll, const SessionPorts& ports, QObject* parent)
    : QObject(parent),
      programFolder(QCoreApplication::applicationDirPath()),
      documentsFolder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)),
      m_connection(connection),
      m_poll(poll),
      m_ports(ports)
{
    Timer_RS_Lpf.setInterval(kStepIntervalMs);
    connect(&Timer_RS_Lpf, &QTimer::timeout, this, &LpDownload::Timer_RS_Lpf_Timer);
}

void LpDownload::Command8_Click()
{
    const auto start = WholeNumber32Of(m_ports.choices.Text(QStringLiteral("Combo_LP_Start_No")));
    const auto stop = WholeNumber32Of(m_ports.choices.Text(QStringLiteral("Combo_LP_Stop_No")));
    if (!start || !stop || *start < 1) {
        m_ports.prompts.Critical(QStringLiteral("Choose the first and the last interval to download."));
        return;
    }
    if (*start > *stop) {
        m_ports.prompts.Critical(QStringLiteral("Interval starting number must less than final number！"));
        return;
    }
    if (bLpTickBusy != kFalse)
        return;
    if (!m_connection.bOnLine.isTrue()) {
        m_ports.screen.SetText(kText6, QStringLiteral("Communication Failure"));
        bLpCommFailed = kTrue;
        return;
    }
    if (bLpDownloadActive != kFalse && Remaining()) {
        if (m_ports.prompts.AskYesNo(QStringLiteral("Continue Data saving before communication failure ? Yes : Continue；No : from begining！"))) {
            TakeTheLine();
            emit faceChanged(Face::Reading, QStringLiteral("Reading"));
            return;
        }
        bLpDownloadActive = kFalse;
        GiveTheLineBack();
    }

    const int group = DownloadGroupIndex(m_ports.screen);
    const MeterReading& reading = m_poll.Reading();
    const int channels = reading.loadProfile[std::size_t(group)].channelCount;
    if (channels < 1 || channels > kMaxChannels[group]) {
        m_ports.screen.SetText(kText6, QStringLiteral("The meter reports %1 channels for group %2: nothing to download.")
                                     .arg(channels).arg(group + 1));
        return;
    }
    if (!StartFile(group))
        return;
    m_group = group;
    m_channels = channels;
    emit faceChanged(Face::Reading, QStringLiteral("Reading"));
    LpCurrentIndex = *start - 1;
    LpStopIndex = *stop - 1;
    const QList<int> codes = reading.loadProfile[std::size_t(group)].channelCodes.mid(0, channels);
    if (const auto error = LpCsvFile::Append(LpFilePath, LpCsvFile::ColumnLine(codes))) {
        m_ports.screen.SetText(kText6, *error);
        emit faceChanged(Face::Normal, kReadAndSave);
        return;
    }
    bLpDownloadActive = kTrue;
    TakeTheLine();
}

// The folder, the day's file of the group, and the "Date : " line that opens a download's
// block in it.
bool LpDownload::StartFile(int group)
{
    const auto folder = LpCsvFile::ChooseFolder(programFolder, documentsFolder);
    if (!folder) {
        m_ports.screen.SetText(kText6, QStringLiteral("Cannot create the folder \"LP Data\" beside the program or in %1.")
                                     .arg(QDir::toNativeSeparators(documentsFolder)));
        return false;
    }
    const QDateTime now = m_ports.clock.Now();
    LpFilePath = QDir(folder->path).filePath(LpCsvFile::FileName(m_poll.Reading().identification, now.date(), group));
    if (const auto error = LpCsvFile::Append(LpFilePath, LpCsvFile::DateLine(now))) {
        m_ports.screen.SetText(kText6, *error);
        return false;
    }
    QString started = QStringLiteral("LoadProfile Data start download");
    if (!folder->beside)
        started += QStringLiteral("; the program's folder cannot be written, the file goes to %1")
                       .arg(QDir::toNativeSeparators(folder->path));
    m_ports.screen.SetText(kText6, started);
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
        bLpCommFailed = kFalse;
        Timer_RS_Lpf.stop();
        Command8_Click();
    }
}

void LpDownload::ReadLpBlockAndSave()
{
    RegisterLink& link = m_connection.link;
    const qint32 remaining = LpStopIndex - LpCurrentIndex + 1;
    const int records = remaining < kRecordsPerStep + 1 ? int(remaining) : kRecordsPerStep;
    const int recordRegisters = kRecordHeaderRegisters + 2 * m_channels;
    const TransactionOutcome pointed =
        link.WriteRegisters(link.ModbusAddress, kNextInterval, 1, Rtu::RegisterData({quint16(LpCurrentIndex + 1)}));
    if (pointed != TransactionOutcome::Good) {
        bLpCommFailed = kTrue;
        return;
    }
    link.ResetRxData();
    const TransactionOutcome read = link.ReadRegisters(link.ModbusAddress, Rtu::kReadInput,
                                                       quint16(kRecordArea + 0x100 * m_group),
                                                       quint16(records * recordRegisters));
    if (read != TransactionOutcome::Good || !m_connection.bOnLine.isTrue()) {
        bLpCommFailed = kTrue;
        return;
    }
    // The index moves on only once the rows are in the file.
    if (const auto error = LpCsvFile::Append(LpFilePath, LpCsvFile::Rows(link.RxData, records, m_channels))) {
        Interrupt(*error);
        return;
    }
    LpCurrentIndex += kRecordsPerStep; // also after a last, shorter step: that ends the download
    emit rowsSaved();
    if (Remaining())
        m_ports.screen.SetText(kText6, QStringLiteral("Current number of download interval : %1").arg(LpCurrentIndex));
    else
        Finish();
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
    m_ports.screen.SetText(kText6, QStringLiteral("Last number of download interval : %1，and finish download！").arg(LpStopIndex + 1));
    emit faceChanged(Face::Normal, kReadAndSave);
}

// The file could not take the rows: the download stops where it is and can be continued once
// the disk has room again; polling goes on meanwhile.
void LpDownload::Interrupt(const QString& why)
{
    GiveTheLineBack();
    m_ports.screen.SetText(kText6, why + QStringLiteral(" The download stopped at interval %1 and can be continued.").arg(LpCurrentIndex + 1));
    emit faceChanged(Face::Resumable, QStringLiteral("Reading"));
}

void LpDownload::StopForOffLine()
{
    if (!Timer_RS_Lpf.isActive())
        return;
    Timer_RS_Lpf.stop();
    if (bLpDownloadActive != kFalse && Remaining())
        emit faceChanged(Face::Resumable, QStringLiteral("Reading"));
}

void LpDownload::RestoreInterrupted(int group, int channels, const QString& filePath, qint32 currentIndex, qint32 stopIndex)
{
    m_group = group;
    m_channels = channels;
    LpFilePath = filePath;
    LpCurrentIndex = currentIndex;
    LpStopIndex = stopIndex;
    bLpDownloadActive = kTrue;
}

void LpDownload::CheckAgainstValid(const QString& list)
{
    const int group = DownloadGroupIndex(m_ports.screen);
    const qint32 valid = m_poll.Reading().loadProfile[std::size_t(group)].validIntervals;
    const auto number = WholeNumber32Of(m_ports.choices.Text(list));
    if (number && *number > valid) {
        m_ports.prompts.Critical(QStringLiteral("Over Interval Valid limit"));
        m_ports.choices.SetText(list, QStringLiteral("1"));
    }
}
