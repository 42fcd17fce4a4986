#include "ports/TimeText.h"

#include <QTime>

#include <cstdlib>

QString IsoTimeWithOffset(const QDateTime& time)
{
    const int offset = time.offsetFromUtc();
    return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")) + (offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
         + QTime::fromMSecsSinceStartOfDay(std::abs(offset) * 1000).toString(QStringLiteral("HH:mm"));
}
