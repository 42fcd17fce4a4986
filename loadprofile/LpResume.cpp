#include "loadprofile/LpResume.h"

#include "loadprofile/LpDownload.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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
    if (!QFileInfo(path).isFile())
        return QStringLiteral("the file of the interrupted download, %1, is gone").arg(QDir::toNativeSeparators(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        return QStringLiteral("cannot open %1: %2").arg(QDir::toNativeSeparators(path), file.errorString());
    if (file.size() == size)
        return std::nullopt;
    if (file.size() > size && file.size() - size <= kMaxStepBytes && file.seek(size) && RowsOfAStep(file.readAll())
        && file.resize(size))
        return std::nullopt;
    return QStringLiteral("%1 is %2 bytes long where the interrupted download left %3: it was changed since, and "
                          "rows appended now would not follow the ones before")
        .arg(QDir::toNativeSeparators(path)).arg(file.size()).arg(size);
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
