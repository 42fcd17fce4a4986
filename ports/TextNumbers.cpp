#include "ports/TextNumbers.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>

double LeadingValue(const QString& text)
{
    static const QRegularExpression number(
        QStringLiteral("^\\s*[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?"));
    const QRegularExpressionMatch match = number.match(text);
    return match.hasMatch() ? match.captured(0).trimmed().toDouble() : 0.0;
}

std::optional<double> NumericValue(const QString& text)
{
    const QString trimmed = text.trimmed();
    for (QLocale locale : {QLocale(), QLocale::c()}) {
        locale.setNumberOptions(QLocale::RejectGroupSeparator);
        bool ok = false;
        const double value = locale.toDouble(trimmed, &ok);
        if (ok)
            return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
    }
    return std::nullopt;
}

QString AmbiguousReading(const QString& text)
{
    const QString trimmed = text.trimmed();
    const QLocale pc;
    bool grouped = false;
    const double pcValue = pc.toDouble(trimmed, &grouped);
    const std::optional<double> taken = NumericValue(trimmed);
    if (!grouped || !taken || pcValue == *taken)
        return QString();
    return QStringLiteral("\"%1\" reads %2 in this PC's number format (%3) but %4 with a decimal point: "
                          "type the number without a thousands separator")
        .arg(trimmed, QLocale::c().toString(pcValue, 'g', 15), pc.name(), QLocale::c().toString(*taken, 'g', 15));
}

std::optional<qint16> WholeNumber16(double value)
{
    // nearbyint rounds in the default mode, to nearest with halves to even.
    const double whole = std::nearbyint(value);
    if (!(whole >= -32768.0 && whole <= 32767.0))
        return std::nullopt;
    return qint16(whole);
}

std::optional<qint16> WholeNumberOf(const QString& text)
{
    const auto value = NumericValue(text);
    return value ? WholeNumber16(*value) : std::nullopt;
}

std::optional<qint32> WholeNumber32Of(const QString& text)
{
    const auto value = NumericValue(text);
    const double whole = value ? std::nearbyint(*value) : 0.0;
    if (!value || !(whole >= -2147483648.0 && whole <= 2147483647.0))
        return std::nullopt;
    return qint32(whole);
}
