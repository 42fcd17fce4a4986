#include "loadprofile/LpCsvFile.h"

#include "loadprofile/PlainFile.h"
#include "measure/FixedFormat.h"
#include "measure/FloatDecoding.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QStringList>

#include <fcntl.h>
#include <unistd.h>

namespace LpCsvFile {
namespace {

const QString kFolderName = QStringLiteral("LP Data");
constexpr int kStemFrom = 8; // the ninth character on
constexpr int kRecordHeader = 6;
const QByteArray kLineEnd = QByteArrayLiteral("\r\n");

const QStringList kChannelNames{
    QStringLiteral("Vln_avg(point)"),   QStringLiteral("I_avg(point)"),     QStringLiteral("kW_avg(interval)"),
    QStringLiteral("kVar_avg(interval)"), QStringLiteral("kVA_avg(interval)"), QStringLiteral("PF_avg"),
    QStringLiteral("kWh+(total)"),      QStringLiteral("kWh-(total)"),      QStringLiteral("kvarh+(total)"),
    QStringLiteral("kvarh-(total)"),    QStringLiteral("kVAh(total)"),      QStringLiteral("kWh(interval)"),
    QStringLiteral("kvarh(interval)"),  QStringLiteral("kVAh(interval)"),
};

// Names no Windows file may carry, whatever follows them.
const QStringList kReservedNames{
    QStringLiteral("CON"), QStringLiteral("PRN"), QStringLiteral("AUX"), QStringLiteral("NUL"),
    QStringLiteral("COM1"), QStringLiteral("COM2"), QStringLiteral("COM3"), QStringLiteral("COM4"),
    QStringLiteral("COM5"), QStringLiteral("COM6"), QStringLiteral("COM7"), QStringLiteral("COM8"),
    QStringLiteral("COM9"), QStringLiteral("LPT1"), QStringLiteral("LPT2"), QStringLiteral("LPT3"),
    QStringLiteral("LPT4"), QStringLiteral("LPT5"), QStringLiteral("LPT6"), QStringLiteral("LPT7"),
    QStringLiteral("LPT8"), QStringLiteral("LPT9"),
};

constexpr QChar kSafe = u'_';

// Latin-1 has a second block of control characters, 0x80 to 0x9F.
bool Unsafe(QChar c)
{
    return c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() <= 0x9F) || QStringLiteral("/\\:*?\"<>|").contains(c);
}

std::optional<QString> UsableFolder(const QString& parent)
{
    if (parent.isEmpty())
        return std::nullopt;
    const QString path = QDir(parent).filePath(kFolderName);
    // A folder planted under the name, as a link or by another user, is not the download's.
    const QFileInfo info(path);
    if (info.isSymLink() || (info.exists() && info.ownerId() != ::geteuid()))
        return std::nullopt;
    if (!QDir().mkpath(path) || !QFileInfo(path).isWritable())
        return std::nullopt;
    return path;
}

QString Number(int value)
{
    return QString::number(value);
}

} // namespace

std::optional<Folder> ChooseFolder(const QString& programFolder, const QString& documentsFolder)
{
    if (const auto beside = UsableFolder(programFolder))
        return Folder{*beside, true};
    if (const auto documents = UsableFolder(documentsFolder))
        return Folder{*documents, false};
    return std::nullopt;
}

// The meter sends bytes: path separators, "..", control characters and NUL, characters that
// some file system refuses, reserved device names and trailing dots or blanks would each make
// the name leave the folder or fail. Each such character becomes "_"; the rest is kept, so the
// name stays recognisable. Trailing NULs and blanks are the text's padding and are dropped.
QString MeterStem(const QByteArray& identification)
{
    QString stem = QString::fromLatin1(identification.mid(kStemFrom));
    while (!stem.isEmpty() && (stem.back() == QChar(0) || stem.back() == u' '))
        stem.chop(1);
    for (QChar& c : stem) {
        if (Unsafe(c))
            c = kSafe;
    }
    stem.replace(QStringLiteral(".."), QStringLiteral("__"));
    if (stem.startsWith(u'.'))
        stem[0] = kSafe;
    for (qsizetype i = stem.size() - 1; i >= 0 && (stem[i] == u'.' || stem[i] == u' '); --i)
        stem[i] = kSafe;
    if (kReservedNames.contains(stem, Qt::CaseInsensitive))
        stem.prepend(kSafe);
    return stem.isEmpty() ? QStringLiteral("test_") : stem;
}

QString FileName(const QByteArray& identification, const QDate& date, int group)
{
    return QStringLiteral("%1_%2_Group%3.csv").arg(MeterStem(identification), date.toString(QStringLiteral("yyyyMMdd"))).arg(group + 1);
}

QByteArray DateLine(const QDateTime& now)
{
    const QLocale locale;
    return (QStringLiteral("Date : ") + locale.toString(now.date(), QLocale::ShortFormat) + QStringLiteral("  ")
            + locale.toString(now.time(), QLocale::ShortFormat))
               .toUtf8()
        + kLineEnd;
}

QString ChannelName(int code)
{
    return code >= 1 && code <= kChannelNames.size() ? kChannelNames[code - 1] : QStringLiteral("code %1").arg(code);
}

QByteArray ColumnLine(const QList<int>& channelCodes)
{
    QStringList columns{QStringLiteral("Date"), QStringLiteral("Time")};
    for (int code : channelCodes)
        columns.append(ChannelName(code));
    return columns.join(u',').toUtf8() + kLineEnd;
}

QDateTime RecordTime(const QByteArray& records, int index, int channels)
{
    const qsizetype at = index * (kRecordHeader + 4 * qsizetype(channels));
    const auto byte = [&records, at](int i) { return int(quint8(records.at(at + i))); };
    return QDateTime(QDate(2000 + byte(0), byte(1), byte(2)), QTime(byte(3), byte(4), byte(5)), Qt::UTC);
}

std::optional<QDateTime> RowTime(const QByteArray& row)
{
    const QList<QByteArray> fields = row.split(',');
    if (fields.size() < 2)
        return std::nullopt;
    const QDate date = QDate::fromString(QString::fromLatin1(fields[0]), QStringLiteral("yyyy/M/d"));
    const QTime time = QTime::fromString(QString::fromLatin1(fields[1]), QStringLiteral("H:m:s"));
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return QDateTime(date, time, Qt::UTC);
}

QString TimeText(const QDateTime& time)
{
    return time.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss"));
}

QByteArray Rows(const QByteArray& records, int count, int channels)
{
    const qsizetype length = kRecordHeader + 4 * qsizetype(channels);
    QByteArray rows;
    for (int r = 0; r < count; ++r) {
        const qsizetype at = r * length;
        const auto byte = [&records, at](int i) { return int(quint8(records.at(at + i))); };
        QString row = QStringLiteral("%1/%2/%3,%4:%5:%6")
                          .arg(Number(2000 + byte(0)), Number(byte(1)), Number(byte(2)), Number(byte(3)),
                               Number(byte(4)), Number(byte(5)));
        for (int k = 0; k < channels; ++k)
            row += u',' + FormatFixed(FloatAt(records, at + kRecordHeader + 4 * k), 4);
        rows += row.toUtf8() + kLineEnd;
    }
    return rows;
}

std::optional<QString> Append(const QString& path, const QByteArray& text)
{
    PlainFile file(path);
    if (!file.Open(O_WRONLY | O_APPEND | O_CREAT))
        return QStringLiteral("Cannot open %1: %2").arg(QDir::toNativeSeparators(path), file.Reason());
    const qint64 before = file.Size();
    // Synced before the caller moves on: after a power cut the file holds what the record claims.
    if (file.Append(text) && file.Sync() && file.Close())
        return std::nullopt;
    const QString error = QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), file.Reason());
    file.Truncate(before);
    return error;
}

} // namespace LpCsvFile
