#include "app/cli/ReadingFormat.h"

#include "measure/ReadingFields.h"
#include "ports/TimeText.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QList<ReadingField> Fields(const MeterReading& reading, std::optional<int> address)
{
    QList<ReadingField> fields;
    if (address)
        fields.append({QStringLiteral("address"), *address, {}, {}});
    fields.append({QStringLiteral("time"), IsoTimeWithOffset(reading.takenAt), {}, {}});
    fields += FieldsOf(reading);
    return fields;
}

// JSON needs only C0 escaped, as QJsonDocument does; DEL and C1 are escaped too, so that the
// object is as harmless on a terminal as the table. The same string still reads back.
QByteArray JsonEscaped(const QByteArray& json)
{
    QString text = QString::fromUtf8(json);
    for (qsizetype i = text.size() - 1; i >= 0; --i) {
        if (text[i].category() == QChar::Other_Control && text[i].unicode() >= 0x7F)
            text.replace(i, 1, QStringLiteral("\\u%1").arg(text[i].unicode(), 4, 16, QLatin1Char('0')));
    }
    return text.toUtf8();
}

QByteArray Json(const QList<ReadingField>& fields, QJsonDocument::JsonFormat layout)
{
    // A QJsonObject would sort its keys; the fields' own order reads better, so the object is
    // written pair by pair.
    QByteArray text = "{";
    const QByteArray separator = layout == QJsonDocument::Indented ? ",\n    " : ",";
    text += layout == QJsonDocument::Indented ? "\n    " : "";
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (i > 0)
            text += separator;
        const QByteArray pair = QJsonDocument(QJsonObject{{fields[i].Key(), fields[i].value}}).toJson(QJsonDocument::Compact);
        text += pair.mid(1, pair.size() - 2); // "name":value without the braces
    }
    text += layout == QJsonDocument::Indented ? "\n}\n" : "}\n";
    return JsonEscaped(text);
}

// A CSV cell: quoted when it holds a comma or a quote. Line breaks from the meter are shown
// as "\x0d" and "\x0a", as every control character is, so a row stays one line.
QString Cell(const QString& field)
{
    const QString text = VisibleText(field);
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')))
        return text;
    return QLatin1Char('"') + QString(text).replace(QLatin1String("\""), QLatin1String("\"\"")) + QLatin1Char('"');
}

QByteArray CsvHeader(const QList<ReadingField>& fields)
{
    QStringList names;
    for (const ReadingField& field : fields)
        names.append(field.Key());
    return names.join(QLatin1Char(',')).toUtf8() + '\n';
}

QByteArray CsvRow(const QList<ReadingField>& fields)
{
    QStringList cells;
    for (const ReadingField& field : fields)
        cells.append(Cell(FieldText(field.value)));
    return cells.join(QLatin1Char(',')).toUtf8() + '\n';
}

QByteArray Table(const QList<ReadingField>& fields)
{
    qsizetype width = 0;
    for (const ReadingField& field : fields)
        width = std::max(width, field.name.size());
    QString text;
    for (const ReadingField& field : fields) {
        const QString value = VisibleText(FieldText(field.value));
        text += field.name.leftJustified(width + 2) + value
              + (field.unit.isEmpty() || value.isEmpty() ? QString() : QLatin1Char(' ') + field.unit) + QLatin1Char('\n');
    }
    return text.toUtf8();
}

} // namespace

QString VisibleText(const QString& text)
{
    QString visible;
    visible.reserve(text.size());
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control)
            visible += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            visible += c;
    }
    return visible;
}

std::optional<ReadingFormat> ParseReadingFormat(const QString& text)
{
    if (text == QLatin1String("table"))
        return ReadingFormat::Table;
    if (text == QLatin1String("json"))
        return ReadingFormat::Json;
    if (text == QLatin1String("csv"))
        return ReadingFormat::Csv;
    return std::nullopt;
}

QByteArray Printed(const MeterReading& reading, ReadingFormat format, std::optional<int> address)
{
    switch (format) {
    case ReadingFormat::Table: return Table(Fields(reading, address));
    case ReadingFormat::Json: return Json(Fields(reading, address), QJsonDocument::Indented);
    case ReadingFormat::Csv: return LogLine(reading, format, true, address);
    }
    return {};
}

QByteArray LogLine(const MeterReading& reading, ReadingFormat format, bool withHeader, std::optional<int> address)
{
    const QList<ReadingField> fields = Fields(reading, address);
    if (format == ReadingFormat::Json)
        return Json(fields, QJsonDocument::Compact);
    return (withHeader ? CsvHeader(fields) : QByteArray()) + CsvRow(fields);
}
