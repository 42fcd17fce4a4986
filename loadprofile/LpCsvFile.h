#pragma once

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// The CSV files a load-profile download appends to: one a day per group and meter, in a
// folder "LP Data". Each download adds a header block; each step appends its rows.
namespace LpCsvFile {

// Where the files go: "LP Data" beside the program, or inside the user's documents folder
// when that one cannot be created or written (an installed program's folder is often
// read-only). Nothing when neither can.
struct Folder {
    QString path;
    bool beside = true; // false: the documents folder stood in
};
std::optional<Folder> ChooseFolder(const QString& programFolder, const QString& documentsFolder);

// The meter's part of a file name: its identification from the ninth character on, made safe
// for every file system (see LpCsvFile.cpp); "test_" when nothing is left of it.
QString MeterStem(const QByteArray& identification);
// "<stem>_<yyyymmdd>_Group<n>.csv" for the day `date`; group 0 is Group1.
QString FileName(const QByteArray& identification, const QDate& date, int group);

// "Date : " and the PC's date and time in the system's short forms.
QByteArray DateLine(const QDateTime& now);
// "Date,Time," and the names of the channel codes, comma-separated.
QByteArray ColumnLine(const QList<int>& channelCodes);
// The name of a channel code as the column header shows it.
QString ChannelName(int code);

// The rows of `count` records of `channels` channels each, as the meter sends them: a time
// stamp of six bytes (year - 2000, month, day, hour, minute, second), then one float per
// channel. year/month/day,hour:minute:second without leading zeros, four decimals a value.
QByteArray Rows(const QByteArray& records, int count, int channels);
// The time stamp of record `index` of such records, and of a row of the file (nothing when the
// line is no row), both as UTC: the meter's wall clock, compared and counted without the PC's
// time zone.
QDateTime RecordTime(const QByteArray& records, int index, int channels);
std::optional<QDateTime> RowTime(const QByteArray& row);
// A time stamp as messages show it: 2026/11/21 13:05:00.
QString TimeText(const QDateTime& time);

// Appends `text` to the file at `path`, creating it, waits until it is on the disk and releases
// the file. A link, another user's file or anything but a plain file is refused. A write that
// fails is undone: the file is cut back to its length before, so that no partial row stays to
// be written again. The error names the file and the reason.
std::optional<QString> Append(const QString& path, const QByteArray& text);

} // namespace LpCsvFile
