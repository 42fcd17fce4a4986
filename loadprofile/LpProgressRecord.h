#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// Where a download of the command line stands, kept beside its CSV file so that a later run
// can go on with it (lp download --continue) after Ctrl-C, a lost line or a meter that
// stopped answering. The rows carry no interval number: the record says which interval comes
// next, and how long the file was once the rows before it were in.
//
// A JSON object, rewritten whole (write a new file, then rename it over the old one) after
// every step that appended rows, and removed once the range is done:
//   {"file": "SN004217_20261121_Group1.csv", "group": 1, "channels": 8,
//    "codes": [1, 2, 3, 4, 5, 7, 9, 11], "first": 1, "next": 25, "last": 40, "size": 2113}
struct LpProgressRecord {
    QString file;      // the CSV file's name, in the record's own folder
    int group = 1;     // 1 or 2
    int channels = 0;  // the group's channel count when the download started
    QList<int> codes;  // and its channel codes, one per channel: the file's columns
    qint32 first = 1;  // the range, counted from 1
    qint32 next = 1;   // the first interval not yet in the file
    qint32 last = 1;
    qint64 size = 0;   // the file's length with the rows of intervals first..next-1

    // "<meter>_Group<n>.progress.json": one record per meter and group, whatever the date, so
    // that a download continued on a later day still appends to the file it began.
    static QString FileName(const QByteArray& identification, int group);

    // Writes the record to `path` so that it is either the old one or the new one, never a
    // part, and is on the disk when this returns. A link or another user's file at `path` is
    // refused. The error names the file and the reason.
    std::optional<QString> Save(const QString& path) const;
    // The record at `path`; nothing, with the reason in `error`, when it is missing, a link,
    // or is not one this program wrote (its file must be named in its own folder).
    static std::optional<LpProgressRecord> Load(const QString& path, QString* error);

private:
    // The record as its file holds it.
    QByteArray Json() const;
};
