#include "loadprofile/LpDownload.h"

LpDownload::LpDownload(QObject* parent) : QObject(parent)
{
    Timer_RS_Lpf.setInterval(kStepIntervalMs);
}

bool LpDownload::StopForOffLine()
{
    if (!Timer_RS_Lpf.isActive())
        return false;
    Timer_RS_Lpf.stop();
    return bLpDownloadActive != kFalse && LpStopIndex > LpCurrentIndex;
}
