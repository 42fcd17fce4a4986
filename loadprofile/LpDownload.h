#pragma once

#include "link/Bool16.h"

#include <QObject>
#include <QString>
#include <QTimer>

// The state of a load-profile download. While a download runs, `Timer_RS_Lpf` owns the
// line and the poll timer is stopped; an interrupted download keeps its place so that it can
// be resumed within the same run.
class LpDownload : public QObject {
    Q_OBJECT
public:
    static constexpr int kStepIntervalMs = 11;

    explicit LpDownload(QObject* parent = nullptr);

    // The tool went off line: stops the download timer. True when a download was running
    // and still has intervals to read, so that the window can mark it as resumable.
    bool StopForOffLine();

    QTimer Timer_RS_Lpf;
    Bool16 bLpDownloadActive = kFalse;
    qint32 LpCurrentIndex = 0;
    qint32 LpStopIndex = 0;
    QString LpFilePath;
    Bool16 bLpCommFailed = kFalse;
    Bool16 bLpTickBusy = kFalse;
};
