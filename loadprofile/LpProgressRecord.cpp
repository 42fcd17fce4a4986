#include "loadprofile/LpProgressRecord.h"

#include "loadprofile/LpCsvFile.h"
#include "loadprofile/PlainFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

// The record names a file of its own folder: no separator, no "." or "..".
bool NameInItsFolder(const QString& name)
{
    return !name.isEmpty() && !name.contains(u'/') && !name.contains(u'\\') && name != QLatin1String(".")
        && name != QLatin1String("..");
}

// The rename itself reaches the disk only with its folder.
void SyncFolder(const QString& path)
{
    const int folder = ::open(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    ::fsync(folder);
    ::close(folder);
}

} // namespace

QString LpProgressRecord::FileName(const QByteArray& identification, int group)
{
    return QStringLiteral("%1_Group%2.progress.json").arg(LpCsvFile::MeterStem(identification)).arg(group);
}

QByteArray LpProgressRecord::Json() const
{
    QJsonArray codeArray;
    for (int code : codes)
        codeArray.append(code);
    const QJsonObject object{
        {QStringLiteral("file"), file},   {QStringLiteral("group"), group}, {QStringLiteral("channels"), channels},
        {QStringLiteral("codes"), codeArray}, {QStringLiteral("first"), first}, {QStringLiteral("next"), next},
        {QStringLiteral("last"), last},   {QStringLiteral("size"), size},
    };
    return QJsonDocument(object).toJson();
}

// A new file beside the old record, written, synced and only then renamed over it: a full disk
// or a failed write leaves the old record as it was, never an empty or partial one. rename()
// replaces a link itself rather than its target, but a link or another user's file under the
// record's name is refused all the same, as the CSV file is.
std::optional<QString> LpProgressRecord::Save(const QString& path) const
{
    const auto failed = [&path](const QString& reason) {
        return QStringLiteral("cannot write %1: %2").arg(QDir::toNativeSeparators(path), reason);
    };
    if (const auto refused = PlainFile::Refusal(path))
        return failed(*refused);
    const QString temporary = path + QStringLiteral(".%1.new").arg(QRandomGenerator::global()->generate(), 8, 16, QChar(u'0'));
    PlainFile out(temporary);
    if (!out.Open(O_WRONLY | O_CREAT | O_EXCL))
        return failed(out.Reason());
    if (!out.Append(Json()) || !out.Sync() || !out.Close()) {
        const QString reason = out.Reason();
        ::unlink(QFile::encodeName(temporary).constData());
        return failed(reason);
    }
    if (::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()) != 0) {
        const QString reason = qt_error_string(errno);
        ::unlink(QFile::encodeName(temporary).constData());
        return failed(reason);
    }
    SyncFolder(path);
    return std::nullopt;
}

std::optional<LpProgressRecord> LpProgressRecord::Load(const QString& path, QString* error)
{
    PlainFile in(path);
    if (!in.Open(O_RDONLY)) {
        *error = QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), in.Reason());
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(in.Read(0, 64 * 1024)).object();
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
    const bool valid = NameInItsFolder(record.file) && (record.group == 1 || record.group == 2) && record.channels >= 1
        && record.channels == record.codes.size() && !record.codes.contains(-1) && record.first >= 1
        && record.first <= record.next && record.next <= record.last && record.size >= 0;
    if (!valid) {
        *error = QStringLiteral("%1 is not a progress record of this program").arg(QDir::toNativeSeparators(path));
        return std::nullopt;
    }
    return record;
}
