#include "measure/FixedFormat.h"

QString FormatFixed(double value, int decimals)
{
    QString text = QString::number(value, 'f', decimals);
    if (text.startsWith(QLatin1Char('-')) && text.toDouble() == 0.0)
        text.remove(0, 1);
    return text;
}
