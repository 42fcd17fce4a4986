#include "measure/Screen.h"

#include "measure/TextNumbers.h"

QString FormatFixed(double value, int decimals)
{
    QString text = QString::number(value, 'f', decimals);
    if (text.startsWith(QLatin1Char('-')) && text.toDouble() == 0.0)
        text.remove(0, 1);
    return text;
}

int DownloadGroupElement(const Screen& screen)
{
    return LeadingValue(screen.Text(QStringLiteral("Combo_LP_Read_Group_Sel"))) == 1 ? 0 : 1;
}
