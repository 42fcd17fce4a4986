#include "loadprofile/LpProgressRecord.h"

#include "loadprofile/LpCsvFile.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

QString LpProgressRecord::FileName(const QByteArray& identification, int group)
{
    return QStringLiteral("%1_Group%2.progress.json").arg(LpCsvFile::MeterStem(identification)).arg(group);
}

std::optional<QString> LpProgressRecord::Save(const QString& path) const
{
    QJsonArray codeArray;
    for (int code : codes)
        codeArray.append(code);
    const QJsonObject object{
        {QStringLiteral("file"), file},   {QStringLiteral("group"), group}, {QStringLiteral("channels"), channels},
        {QStringLiteral("codes"), codeArray}, {QStringLiteral("first"), first}, {QStringLiteral("next"), next},
        {QStringLiteral("last"), last},   {QStringLiteral("size"), size},
    };
    QSaveFile out(path);
    if (out.open(QIODevice::WriteOnly) && out.write(QJsonDocument(object).toJson()) >= 0 && out.commit())
        return std::nullopt;
    return QStringLiteral("cannot write %1: %2").arg(QDir::toNativeSeparators(path), out.errorString());
}

std::optional<LpProgressRecord> LpProgressRecord::Load(const QString& path, QString* error)
{
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), in.errorString());
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(in.read(64 * 1024)).object();
    const auto whole = [&object](const char* key) { return object.value(QLatin1String(key)).toInteger(-1); };
    LpProgressRecord record;
    record.file = object.value(QStringLiteral("file")).toString();
    record.group = int(whole("group"));
    record.channels = int(whole("channels"));
    for (const QJsonValue code : object.value(QStringLiteral("codes")).toArray())
        record.codes.append(code.toInt(-1));
    record.first = qint32(whole("first"));
    record.next = qint32(whole("next"));
    record.last = qint32(whole("last"));
    record.size = whole("size");
    // A name with a separator would lead out of the folder.
    const bool valid = !record.file.isEmpty() && !record.file.contains(u'/') && !record.file.contains(u'\\')
        && (record.group == 1 || record.group == 2) && record.channels >= 1 && record.channels == record.codes.size()
        && !record.codes.contains(-1) && record.first >= 1 && record.first <= record.next
        && record.next <= record.last && record.size >= 0;
    if (!valid) {
        *error = QStringLiteral("%1 is not a progress record of this program").arg(QDir::toNativeSeparators(path));
        return std::nullopt;
    }
    return record;
}
