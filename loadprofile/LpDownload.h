#pragma once

#include "link/Bool16.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

class Clock;
class Connection;
class OperatorPrompts;
class PollCycle;

// How a request to start a download ended.
enum class LpStart {
    Started,       // a new download: its header is in the file, its first step follows
    Continued,     // the interrupted download goes on from its next interval
    NoRange,       // the first interval is no number of 1 or more, or the last is none
    RangeReversed, // the first interval comes after the last
    Busy,          // a step is running
    OffLine,       // "Communication Failure"
    NoChannels,    // the meter reports no channels the group can have
    FileError,     // the folder or the file could not be written; the status line says why
};
// The message of a refused range, as the window shows it in a box: "Interval starting number
// must less than final number！". Empty for the other results.
QString LpStartMessage(LpStart start);

// How a download that ran ended.
enum class LpEnd {
    Finished,    // every interval of the range is in the file
    Interrupted, // off line, or the meter stopped answering: it can be continued
    FileError,   // the file could not take the rows: it can be continued once it can
    Stopped,     // the operator stopped it between steps: it can be continued
    Jumped,      // the meter's next interval does not follow the file's last row: nothing appended
};

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

    LpDownload(Connection& connection, PollCycle& poll, OperatorPrompts& prompts, const Clock& clock,
               QObject* parent = nullptr);

    // Starts a download of intervals `first` to `last` (counted from 1) of `group` (0 or 1), or
    // offers to continue one that was interrupted (the operator's Yes continues it, No starts
    // this one anew).
    LpStart Start(int group, qint32 first, qint32 last);
    // Stops a running download after the step under way; it stays resumable.
    void Stop();
    bool Running() const { return Timer_RS_Lpf.isActive(); }
    // The number of valid intervals the latest reading reports for `group`.
    qint32 ValidIntervals(int group) const;
    // The recording interval in minutes the latest reading reports for the group downloaded
    // last; 0 when unknown.
    int IntervalMinutes() const;

    // The tool went off line: stops the download timer. A download that was running and still
    // has intervals to read shows that it can be continued.
    void StopForOffLine();
    // A download interrupted in an earlier run of the program, as a record of it kept: the next
    // Start offers to continue it into `filePath` from `currentIndex` to `stopIndex`,
    // reading records of `channels` channels of `group` (0 or 1). When `firstRowAt` is known,
    // the first record read must carry that time stamp, or the download ends Jumped.
    void RestoreInterrupted(int group, int channels, const QString& filePath, qint32 currentIndex, qint32 stopIndex,
                            const std::optional<QDateTime>& firstRowAt);

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
    // A download that ran has ended, for `end`; `why` in words (the status line's text).
    void finished(LpEnd end, const QString& why);

private:
    void Timer_RS_Lpf_Timer();
    void ReadLpBlockAndSave();
    bool StartFile(int group);
    void TakeTheLine();
    void GiveTheLineBack();
    bool Remaining() const;
    std::optional<QString> Jump(const QByteArray& records) const;
    void Finish();
    void Interrupt(LpEnd end, const QString& why);
    void SetStatus(const QString& text);

    Connection& m_connection;
    PollCycle& m_poll;
    OperatorPrompts& m_prompts;
    const Clock& m_clock;
    int m_group = 0;    // the group being downloaded, fixed at its start
    int m_channels = 0; // its channel count then: the length of its records
    std::optional<QDateTime> m_firstRowAt; // what the next record must be stamped, when known
};
