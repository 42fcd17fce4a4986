#include "loadprofile/LpFileReport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace LpFileReport {
namespace {

const QByteArray kDateLine = QByteArrayLiteral("Date :");
const QByteArray kColumnLine = QByteArrayLiteral("Date,Time,");
const QString kTotalMark = QStringLiteral("(total)");
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr qint64 kQuotedLength = 40;
constexpr qint64 kEpochJulianDay = 2440588;

// A time stamp as the download writes it, "2026/11/21,13:5:0". `seconds` counts the wall-clock
// time as if it were UTC, so that spacing is counted without the PC's daylight-saving steps.
struct RowTime {
    QDate day;
    QTime clock;
    qint64 seconds = 0;
};

// Three unsigned decimal numbers joined by `separator`, as the download writes them.
bool ThreeNumbers(const QByteArray& text, char separator, int (&numbers)[3])
{
    int part = 0;
    int digits = 0;
    numbers[0] = 0;
    for (const char c : text) {
        if (c == separator && digits > 0 && part < 2) {
            numbers[++part] = 0;
            digits = 0;
        } else if (c >= '0' && c <= '9' && digits < 6) {
            numbers[part] = numbers[part] * 10 + (c - '0');
            ++digits;
        } else {
            return false;
        }
    }
    return part == 2 && digits > 0;
}

std::optional<RowTime> ParseTime(const QByteArray& date, const QByteArray& time)
{
    int ymd[3];
    int hms[3];
    if (!ThreeNumbers(date, '/', ymd) || !ThreeNumbers(time, ':', hms))
        return std::nullopt;
    RowTime row{QDate(ymd[0], ymd[1], ymd[2]), QTime(hms[0], hms[1], hms[2])};
    if (!row.day.isValid() || !row.clock.isValid())
        return std::nullopt;
    row.seconds = (row.day.toJulianDay() - kEpochJulianDay) * 86400 + row.clock.msecsSinceStartOfDay() / 1000;
    return row;
}

QString Shown(const QDateTime& wallClock)
{
    return wallClock.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// The start of a text from the file in quotes, control characters written as \xNN, so that a
// finding shows what the line holds and no byte of it acts on a terminal.
QString Quoted(const QByteArray& text)
{
    QString shown;
    for (const QChar c : QString::fromUtf8(text.left(kQuotedLength))) {
        if (c.category() == QChar::Other_Control)
            shown += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            shown += c;
    }
    return u'"' + shown + (text.size() > kQuotedLength ? QStringLiteral("…\"") : QStringLiteral("\""));
}

QString Columns(qsizetype count)
{
    return count == 1 ? QStringLiteral("1 column") : QStringLiteral("%1 columns").arg(count);
}

QString Overlong()
{
    return QStringLiteral("a line longer than %1 characters").arg(kMaxLineLength);
}

} // namespace

// Collects a file's lines into a report.
class Reader {
public:
    explicit Reader(qint64 intervalSeconds) { m_report.intervalSeconds = intervalSeconds; }

    void Take(qint64 line, QByteArray text);
    void Refuse(qint64 line, const QString& what) { Note(m_report.malformed, m_report.malformedCount, line, what); }
    Report Finish();

private:
    void StartBlock(const QByteArray& text);
    void TakeRow(qint64 line, const QList<QByteArray>& fields);
    bool ReadValues(qint64 line, const QList<QByteArray>& fields);
    void CheckTotal(qint64 line, int column, double value);
    void Plot(const RowTime& time, int column, double value);
    void FindGapsAndDuplicates();
    void InferInterval(const std::map<qint64, qint64>& spacings);
    static void Note(QList<Finding>& list, qint64& count, qint64 line, const QString& what);

    Report m_report;
    bool m_headerSeen = false;
    QStringList m_columns;
    QList<int> m_channelOf;           // column → channel
    QList<double> m_previousTotal;    // column → last total of the block, or kNone
    QList<double> m_values;           // the values of the row being read
    std::vector<std::pair<qint64, qint64>> m_times; // (seconds, line) of every row
    QHash<QString, int> m_channelIndex;
};

void Reader::Note(QList<Finding>& list, qint64& count, qint64 line, const QString& what)
{
    if (list.size() < kListed)
        list.append({line, what});
    ++count;
}

void Reader::Take(qint64 line, QByteArray text)
{
    while (text.endsWith('\n') || text.endsWith('\r'))
        text.chop(1);
    if (text.size() > kMaxLineLength)
        return Refuse(line, Overlong());
    if (text.trimmed().isEmpty() || text.startsWith(kDateLine))
        return;
    if (text.startsWith(kColumnLine))
        return StartBlock(text);
    if (!m_headerSeen)
        return Refuse(line, QStringLiteral("a line before any column header: %1").arg(Quoted(text)));
    TakeRow(line, text.split(','));
}

void Reader::StartBlock(const QByteArray& text)
{
    ++m_report.blocks;
    m_headerSeen = true;
    m_columns = QString::fromUtf8(text).split(u',').mid(2);
    m_channelOf.clear();
    for (const QString& name : std::as_const(m_columns)) {
        auto found = m_channelIndex.constFind(name);
        if (found == m_channelIndex.cend()) {
            found = m_channelIndex.insert(name, int(m_report.channels.size()));
            m_report.channels.append({name, {}});
        }
        m_channelOf.append(*found);
    }
    m_previousTotal = QList<double>(m_columns.size(), kNone);
}

// A row is an interval read only when its time stamp and all its values can be read; else it
// is one line skipped, however many of its fields are wrong.
void Reader::TakeRow(qint64 line, const QList<QByteArray>& fields)
{
    if (fields.size() != m_columns.size() + 2)
        return Refuse(line, QStringLiteral("%1 where the header has %2: %3")
                                .arg(Columns(fields.size()), Columns(m_columns.size() + 2), Quoted(fields.join(','))));
    const auto time = ParseTime(fields[0], fields[1]);
    if (!time)
        return Refuse(line, QStringLiteral("no valid date and time: %1").arg(Quoted(fields[0] + ',' + fields[1])));
    if (!ReadValues(line, fields))
        return;
    ++m_report.intervals;
    m_times.emplace_back(time->seconds, line);
    for (int column = 0; column < m_columns.size(); ++column) {
        const double value = m_values[column];
        if (!std::isfinite(value)) {
            Note(m_report.implausible, m_report.implausibleCount, line,
                 QStringLiteral("%1 is %2").arg(m_columns[column], QString::fromUtf8(fields[column + 2].trimmed())));
        } else {
            CheckTotal(line, column, value);
            Plot(*time, column, value);
        }
    }
}

// Reads the row's values into m_values; a row with a value that is not a number is refused,
// naming the first such value and how many more there are.
bool Reader::ReadValues(qint64 line, const QList<QByteArray>& fields)
{
    m_values.resize(m_columns.size());
    int firstBad = -1;
    int bad = 0;
    for (int column = 0; column < m_columns.size(); ++column) {
        bool ok = false;
        m_values[column] = fields[column + 2].trimmed().toDouble(&ok);
        if (!ok && bad++ == 0)
            firstBad = column;
    }
    if (bad == 0)
        return true;
    QString what = QStringLiteral("%1 is not a number: %2").arg(m_columns[firstBad], Quoted(fields[firstBad + 2]));
    if (bad > 1)
        what += QStringLiteral(", and %1 more").arg(bad - 1);
    Refuse(line, what);
    return false;
}

// An energy total only ever grows, and never from below zero.
void Reader::CheckTotal(qint64 line, int column, double value)
{
    if (!m_columns[column].contains(kTotalMark))
        return;
    const double previous = m_previousTotal[column];
    if (value < 0)
        Note(m_report.implausible, m_report.implausibleCount, line,
             QStringLiteral("%1 is negative: %2").arg(m_columns[column]).arg(value, 0, 'f', 4));
    else if (!std::isnan(previous) && value < previous)
        Note(m_report.implausible, m_report.implausibleCount, line,
             QStringLiteral("%1 goes back from %2 to %3").arg(m_columns[column]).arg(previous, 0, 'f', 4).arg(value, 0, 'f', 4));
    m_previousTotal[column] = value;
}

void Reader::Plot(const RowTime& time, int column, double value)
{
    if (m_report.intervals > kPlottedRows) {
        m_report.plotTruncated = true;
        return;
    }
    const QDateTime local(time.day, time.clock);
    m_report.channels[m_channelOf[column]].points.append(QPointF(double(local.toMSecsSinceEpoch()), value));
}

Report Reader::Finish()
{
    FindGapsAndDuplicates();
    for (Channel& channel : m_report.channels)
        std::stable_sort(channel.points.begin(), channel.points.end(),
                         [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
    return std::move(m_report);
}

void Reader::FindGapsAndDuplicates()
{
    if (m_times.empty())
        return;
    std::sort(m_times.begin(), m_times.end());
    const auto wall = [](qint64 seconds) { return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC); };
    m_report.first = wall(m_times.front().first);
    m_report.last = wall(m_times.back().first);

    std::map<qint64, qint64> spacings; // seconds → how often
    for (size_t i = 1; i < m_times.size(); ++i) {
        const qint64 spacing = m_times[i].first - m_times[i - 1].first;
        if (spacing > 0) {
            ++spacings[spacing];
        } else {
            if (m_report.duplicates.size() < kListed)
                m_report.duplicates.append({wall(m_times[i].first), m_times[i].second});
            ++m_report.duplicateCount;
        }
    }
    InferInterval(spacings);
    const qint64 interval = m_report.intervalSeconds;
    if (interval <= 0)
        return;
    for (size_t i = 1; i < m_times.size(); ++i) {
        const qint64 missing = (m_times[i].first - m_times[i - 1].first) / interval - 1;
        if (missing < 1)
            continue;
        if (m_report.gaps.size() < kListed)
            m_report.gaps.append({wall(m_times[i - 1].first), wall(m_times[i].first), missing});
        ++m_report.gapCount;
        m_report.missingIntervals += missing;
    }
}

// The most common spacing between rows; of equally common ones the shortest.
void Reader::InferInterval(const std::map<qint64, qint64>& spacings)
{
    if (m_report.intervalSeconds > 0 || spacings.empty())
        return;
    const auto most = std::max_element(spacings.begin(), spacings.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    m_report.intervalSeconds = most->first;
    m_report.intervalInferred = true;
}

namespace {

QString Duration(qint64 seconds)
{
    if (seconds % 60 != 0)
        return QStringLiteral("%1 s").arg(seconds);
    return QStringLiteral("%1 min").arg(seconds / 60);
}

QString More(qsizetype listed, qint64 count)
{
    return count > listed ? QStringLiteral("  … and %1 more\n").arg(count - listed) : QString();
}

} // namespace

Scan::Scan(QIODevice& device, qint64 intervalSeconds)
    : m_device(device), m_reader(std::make_unique<Reader>(intervalSeconds))
{
}

Scan::~Scan() = default;

bool Scan::Next(qint64 bytes)
{
    for (qint64 read = 0; read < bytes;) {
        if (m_device.atEnd())
            return false;
        // The longest line taken whole, its "\r\n" included.
        const QByteArray text = m_device.readLine(kMaxLineLength + 3);
        if (text.isEmpty()) {
            m_error = QStringLiteral("Reading stopped at line %1: %2").arg(m_line).arg(m_device.errorString());
            return false;
        }
        read += text.size();
        TakeLine(text);
    }
    return !m_device.atEnd();
}

void Scan::TakeLine(const QByteArray& text)
{
    const bool ends = text.endsWith('\n') || m_device.atEnd();
    if (m_overlong) {
        m_overlong = !ends;
        m_line += ends ? 1 : 0;
    } else if (!ends) {
        m_reader->Refuse(m_line, Overlong());
        m_overlong = true;
    } else {
        m_reader->Take(m_line++, text);
    }
}

Report Scan::Finish()
{
    Report report = m_reader->Finish();
    report.error = m_error;
    return report;
}

Report Read(QIODevice& device, qint64 intervalSeconds)
{
    Scan scan(device, intervalSeconds);
    while (scan.Next(std::numeric_limits<qint64>::max())) {
    }
    return scan.Finish();
}

std::optional<Report> Open(QFile& file)
{
    const QFileInfo info(file.fileName());
    if (info.isFile() && file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Report report;
    report.error = QStringLiteral("Cannot open %1: %2").arg(QDir::toNativeSeparators(file.fileName()),
        info.isFile() ? file.errorString() : info.exists() ? QStringLiteral("not a plain file") : QStringLiteral("no such file"));
    return report;
}

Report ReadFile(const QString& path, qint64 intervalSeconds)
{
    QFile file(path);
    if (auto refused = Open(file))
        return *refused;
    return Read(file, intervalSeconds);
}

QString Text(const Report& report)
{
    QString text;
    if (!report.error.isEmpty())
        text += report.error + u'\n';
    if (report.intervals == 0) {
        text += QStringLiteral("No intervals: the file holds no row of a download.\n");
    } else {
        text += QStringLiteral("Downloads: %1, intervals read: %2\n").arg(report.blocks).arg(report.intervals);
        text += QStringLiteral("From %1 to %2\n").arg(Shown(report.first), Shown(report.last));
        if (report.intervalSeconds > 0)
            text += QStringLiteral("Interval: %1%2\n").arg(Duration(report.intervalSeconds),
                report.intervalInferred ? QStringLiteral(" (the most common spacing)") : QString());
    }
    text += QStringLiteral("Gaps: %1, %2 intervals missing\n").arg(report.gapCount).arg(report.missingIntervals);
    for (const Gap& gap : report.gaps)
        text += QStringLiteral("  %1 missing between %2 and %3\n").arg(gap.missing).arg(Shown(gap.after), Shown(gap.before));
    text += More(report.gaps.size(), report.gapCount);
    text += QStringLiteral("Duplicates: %1\n").arg(report.duplicateCount);
    for (const Duplicate& duplicate : report.duplicates)
        text += QStringLiteral("  %1 again at line %2\n").arg(Shown(duplicate.time)).arg(duplicate.line);
    text += More(report.duplicates.size(), report.duplicateCount);
    text += QStringLiteral("Values that cannot be right: %1\n").arg(report.implausibleCount);
    for (const Finding& finding : report.implausible)
        text += QStringLiteral("  line %1: %2\n").arg(finding.line).arg(finding.what);
    text += More(report.implausible.size(), report.implausibleCount);
    text += QStringLiteral("Lines skipped: %1\n").arg(report.malformedCount);
    for (const Finding& finding : report.malformed)
        text += QStringLiteral("  line %1: %2\n").arg(finding.line).arg(finding.what);
    text += More(report.malformed.size(), report.malformedCount);
    if (report.plotTruncated)
        text += QStringLiteral("The plot shows the first %1 intervals.\n").arg(kPlottedRows);
    return text;
}

} // namespace LpFileReport
