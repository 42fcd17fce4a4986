#pragma once

#include <QDateTime>
#include <QList>
#include <QPointF>
#include <QString>

#include <memory>
#include <optional>

class QFile;
class QIODevice;

// What a load-profile CSV file written by the download holds, and what is wrong with it: the
// intervals it has, the ones missing between them, the ones written twice and the values that
// cannot be right. The file is read line by line, so a file of any size can be checked; a
// line the download would never write is reported with its number and skipped.
namespace LpFileReport {

// A line, by its number from 1, and what is wrong with it.
struct Finding {
    qint64 line = 0;
    QString what;
};

// Intervals missing between two rows that follow each other in time.
struct Gap {
    QDateTime after;
    QDateTime before;
    qint64 missing = 0;
};

// A row whose time stamp an earlier row already had.
struct Duplicate {
    QDateTime time;
    qint64 line = 0;
};

// One column over time: x is the interval's time in ms since the epoch (the PC's time zone),
// y the value. Columns of the same name in several blocks make one channel.
struct Channel {
    QString name;
    QList<QPointF> points;
};

struct Report {
    QString error; // the file could not be read at all
    int blocks = 0;          // column headers, one per download
    qint64 intervals = 0;    // rows with a valid time stamp and the header's column count
    QDateTime first;
    QDateTime last;
    qint64 intervalSeconds = 0; // given, or the most common spacing between rows
    bool intervalInferred = false;

    // Each list keeps its first kListed entries; the count says how many there were.
    QList<Gap> gaps;
    qint64 gapCount = 0;
    qint64 missingIntervals = 0;
    QList<Duplicate> duplicates;
    qint64 duplicateCount = 0;
    QList<Finding> malformed;   // lines that are not a header or a row of the header's shape
    qint64 malformedCount = 0;
    QList<Finding> implausible; // NaN or infinite values, totals going back or below zero
    qint64 implausibleCount = 0;

    QList<Channel> channels;    // the first kPlottedRows rows, in time order
    bool plotTruncated = false;
};

constexpr int kListed = 50;
constexpr qint64 kPlottedRows = 200000;
// Characters of a line without its line end. Longer lines are no line the download writes
// (14 channels take under 200 characters).
constexpr qint64 kMaxLineLength = 64 * 1024;

class Reader;

// Reads a device into a report a slice at a time, so that the window's thread can serve the
// line between slices. `intervalSeconds` 0 infers the interval from the rows.
class Scan {
public:
    Scan(QIODevice& device, qint64 intervalSeconds);
    ~Scan();
    Scan(const Scan&) = delete;
    Scan& operator=(const Scan&) = delete;

    // Reads whole lines until about `bytes` more bytes are read. False once the device is read
    // to its end or cannot be read further.
    bool Next(qint64 bytes);
    Report Finish();

private:
    void TakeLine(const QByteArray& text);

    QIODevice& m_device;
    std::unique_ptr<Reader> m_reader;
    qint64 m_line = 1;
    bool m_overlong = false; // the rest of an overlong line is being skipped, not held
    QString m_error;
};

Report Read(QIODevice& device, qint64 intervalSeconds = 0);
Report ReadFile(const QString& path, qint64 intervalSeconds = 0);
// Opens `file` for reading; when it cannot be, a report naming it and the reason. Only a plain
// file is read: a pipe or a device could block the window or never end.
std::optional<Report> Open(QFile& file);

// The report as lines of text, for the window and a command line.
QString Text(const Report& report);

} // namespace LpFileReport
