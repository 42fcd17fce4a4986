#include "measure/TextNumbers.h"

#include <QRegularExpression>

double LeadingValue(const QString& text)
{
    static const QRegularExpression number(
        QStringLiteral("^\\s*[+-]?(\\d+\\.?\\d*|\\.\\d+)([eE][+-]?\\d+)?"));
    const QRegularExpressionMatch match = number.match(text);
    return match.hasMatch() ? match.captured(0).trimmed().toDouble() : 0.0;
}

std::optional<qint32> WholeNumber(const QString& text)
{
    bool ok = false;
    const qint32 value = text.trimmed().toInt(&ok);
    return ok ? std::optional<qint32>(value) : std::nullopt;
}
