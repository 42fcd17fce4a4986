#include "ports/MeterChoices.h"

QStringList NumberTexts(int first, int last)
{
    QStringList texts;
    for (int n = first; n <= last; ++n)
        texts.append(QString::number(n));
    return texts;
}

QStringList BaudRateTexts()
{
    return {QStringLiteral("9600"), QStringLiteral("19200")};
}

QStringList StopBitTexts()
{
    return {QStringLiteral("1"), QStringLiteral("2")};
}

QStringList AddressTexts()
{
    return NumberTexts(1, 247);
}

QStringList WiringTexts()
{
    return {QStringLiteral("Auto"), QStringLiteral("1P2W"), QStringLiteral("1P3W"),
            QStringLiteral("3P3W 2CT"), QStringLiteral("3P3W 3CT"), QStringLiteral("3P4W")};
}

QStringList ScrollTimeTexts()
{
    return NumberTexts(3, 15);
}

QStringList DisplayPositionTexts()
{
    return NumberTexts(1, 50);
}

QStringList DisplayItemTexts()
{
    return NumberTexts(0, 10) + QStringList{QStringLiteral("12")} + NumberTexts(101, 140);
}

QStringList LpIntervalTexts()
{
    return {QStringLiteral("1"), QStringLiteral("5"), QStringLiteral("10"),
            QStringLiteral("15"), QStringLiteral("30"), QStringLiteral("60")};
}

QStringList LpChannelCodeTexts()
{
    return NumberTexts(1, 14);
}
