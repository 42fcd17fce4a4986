#include "loadprofile/LpPace.h"

std::optional<LpPace> LpPace::Of(qint64 doneHere, qint64 left, double seconds)
{
    if (doneHere <= 0 || seconds <= 0)
        return std::nullopt;
    const double perSecond = double(doneHere) / seconds;
    return LpPace{perSecond, qRound64(double(left) / perSecond)};
}

QString LpPace::TimeLeft() const
{
    const qint64 s = secondsLeft;
    return s >= 3600 ? QStringLiteral("%1:%2:%3").arg(s / 3600).arg(s / 60 % 60, 2, 10, QChar(u'0')).arg(s % 60, 2, 10, QChar(u'0'))
                     : QStringLiteral("%1:%2").arg(s / 60).arg(s % 60, 2, 10, QChar(u'0'));
}
