#pragma once

#include "connection/SessionPorts.h"
#include "link/Bool16.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

class Connection;
class PollCycle;

// The download of a range of recorded intervals of one load-profile group into the day's CSV
// file, a few intervals per tick of `Timer_RS_Lpf`. While it runs, that timer owns the line and
// the poll timer is stopped. Each step writes the number of its first interval, reads at most
// four records, appends their rows and only then moves on, so an interrupted download (off
// line, the adapter pulled, a full disk) loses no interval and writes none twice when it is
// continued.
class LpDownload : public QObject {
    Q_OBJECT
public:
    static constexpr int kStepIntervalMs = 11;
    static constexpr int kRecordsPerStep = 4;

    // How the download's button looks.
    enum class Face { Normal, Reading, Resumable };
    Q_ENUM(Face)

    LpDownload(Connection& connection, PollCycle& poll, const SessionPorts& ports, QObject* parent = nullptr);

    // "Read and Save": starts a download of the chosen range, or offers to continue one that
    // was interrupted.
    void Command8_Click();
    // The checks of the start and stop lists as they lose the focus: a number beyond the
    // chosen group's valid intervals is refused and the list set back to "1".
    void Combo_LP_Start_No_Validate() { CheckAgainstValid(QStringLiteral("Combo_LP_Start_No")); }
    void Combo_LP_Stop_No_Validate() { CheckAgainstValid(QStringLiteral("Combo_LP_Stop_No")); }

    // The tool went off line: stops the download timer. A download that was running and still
    // has intervals to read shows that it can be continued.
    void StopForOffLine();
    // A download interrupted in an earlier run of the program, as a record of it kept: the next
    // Command8_Click offers to continue it into `filePath` from `currentIndex` to `stopIndex`,
    // reading records of `channels` channels of `group` (0 or 1).
    void RestoreInterrupted(int group, int channels, const QString& filePath, qint32 currentIndex, qint32 stopIndex);

    // Where "LP Data" is made: beside the program, else in the documents folder.
    QString programFolder;
    QString documentsFolder;

    QTimer Timer_RS_Lpf;
    Bool16 bLpDownloadActive = kFalse;
    qint32 LpCurrentIndex = 0;
    qint32 LpStopIndex = 0;
    QString LpFilePath;
    Bool16 bLpCommFailed = kFalse;
    Bool16 bLpTickBusy = kFalse;

signals:
    void faceChanged(LpDownload::Face face, const QString& caption);
    // A step's rows are in the file and LpCurrentIndex has moved past them.
    void rowsSaved();

private:
    void Timer_RS_Lpf_Timer();
    void ReadLpBlockAndSave();
    bool StartFile(int group);
    void TakeTheLine();
    void GiveTheLineBack();
    bool Remaining() const;
    void Finish();
    void Interrupt(const QString& why);
    void CheckAgainstValid(const QString& list);

    Connection& m_connection;
    PollCycle& m_poll;
    const SessionPorts m_ports;
    int m_group = 0;    // the group being downloaded, fixed at its start
    int m_channels = 0; // its channel count then: the length of its records
};
