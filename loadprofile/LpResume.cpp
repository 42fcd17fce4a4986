#include "loadprofile/LpResume.h"

#include "loadprofile/LpCsvFile.h"
#include "loadprofile/LpDownload.h"
#include "loadprofile/PlainFile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

#include <fcntl.h>

namespace {

// A step writes at most four rows; no row of 14 channels comes near 1 KiB.
constexpr qint64 kMaxStepBytes = 4 * 1024;

QString CodesText(const QList<int>& codes)
{
    QStringList texts;
    for (int code : codes)
        texts.append(QString::number(code));
    return texts.join(u',');
}

// Rows a single step appended: whole lines, no more than a step reads, no block's start.
bool RowsOfAStep(const QByteArray& tail)
{
    return tail.endsWith("\r\n") && tail.count('\n') <= LpDownload::kRecordsPerStep && !tail.startsWith("Date")
        && !tail.contains("\nDate");
}

std::optional<QString> MatchRecordedLength(const QString& path, qint64 size)
{
    const QString shown = QDir::toNativeSeparators(path);
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink())
        return QStringLiteral("the file of the interrupted download, %1, is gone").arg(shown);
    PlainFile file(path);
    if (!file.Open(O_RDWR))
        return QStringLiteral("cannot open %1: %2").arg(shown, file.Reason());
    const qint64 length = file.Size();
    if (length == size)
        return std::nullopt;
    if (length > size && length - size <= kMaxStepBytes && RowsOfAStep(file.Read(size, length - size))
        && file.Truncate(size) && file.Sync())
        return std::nullopt;
    return QStringLiteral("%1 is %2 bytes long where the interrupted download left %3: it was changed since, and "
                          "rows appended now would not follow the ones before")
        .arg(shown).arg(length).arg(size);
}

} // namespace

std::optional<QString> PrepareLpResume(const LpProgressRecord& record, const QString& folder,
                                       const MeterReading::LoadProfileGroup& group)
{
    const QList<int> codes = group.channelCodes.mid(0, group.channelCount);
    if (group.channelCount != record.channels || codes != record.codes) {
        return QStringLiteral("group %1 of the meter now records %2 channels (codes %3), the interrupted download %4 "
                              "(codes %5): the rows would not match the file's columns")
            .arg(record.group).arg(group.channelCount).arg(CodesText(codes)).arg(record.channels).arg(CodesText(record.codes));
    }
    if (group.validIntervals < record.last) {
        return QStringLiteral("the meter holds %1 intervals of group %2, fewer than the interrupted download's last, %3: "
                              "the group was cleared since")
            .arg(group.validIntervals).arg(record.group).arg(record.last);
    }
    return MatchRecordedLength(QDir(folder).filePath(record.file), record.size);
}

std::optional<QDateTime> LpNextRowTime(const LpProgressRecord& record, const QString& folder, int intervalMinutes)
{
    PlainFile file(QDir(folder).filePath(record.file));
    if (record.next == record.first || intervalMinutes < 1 || !file.Open(O_RDONLY))
        return std::nullopt;
    const qint64 from = std::max<qint64>(0, record.size - kMaxStepBytes);
    QList<QByteArray> lines = file.Read(from, record.size - from).split('\n');
    lines.removeLast(); // after the last line end
    const std::optional<QDateTime> last = lines.isEmpty() ? std::nullopt : LpCsvFile::RowTime(lines.last());
    return last ? std::optional(last->addSecs(60 * qint64(intervalMinutes))) : std::nullopt;
}
