#include "loadprofile/LpFileReport.h"

#include <QDir>
#include <QFile>
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

// A time stamp as the download writes it, "2026/11/21,13:5:0". Kept as wall-clock time in UTC,
// so that spacing is counted without the PC's daylight-saving steps.
std::optional<QDateTime> ParseTime(const QByteArray& date, const QByteArray& time)
{
    const QList<QByteArray> parts = date.split('/') + time.split(':');
    if (parts.size() != 6)
        return std::nullopt;
    int numbers[6];
    for (int i = 0; i < 6; ++i) {
        bool ok = false;
        numbers[i] = parts[i].toInt(&ok);
        if (!ok)
            return std::nullopt;
    }
    const QDate day(numbers[0], numbers[1], numbers[2]);
    const QTime clock(numbers[3], numbers[4], numbers[5]);
    if (!day.isValid() || !clock.isValid())
        return std::nullopt;
    return QDateTime(day, clock, Qt::UTC);
}

QString Shown(const QDateTime& wallClock)
{
    return wallClock.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

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
    void CheckTotal(qint64 line, int column, double value);
    void Plot(const QDateTime& time, int column, double value);
    void FindGapsAndDuplicates();
    void InferInterval(const std::map<qint64, qint64>& spacings);
    static void Note(QList<Finding>& list, qint64& count, qint64 line, const QString& what);

    Report m_report;
    bool m_headerSeen = false;
    QStringList m_columns;
    QList<int> m_channelOf;           // column → channel
    QList<double> m_previousTotal;    // column → last total of the block, or kNone
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
    if (text.trimmed().isEmpty() || text.startsWith(kDateLine))
        return;
    if (text.startsWith(kColumnLine))
        return StartBlock(text);
    if (!m_headerSeen)
        return Refuse(line, QStringLiteral("a line before any column header"));
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

void Reader::TakeRow(qint64 line, const QList<QByteArray>& fields)
{
    if (fields.size() != m_columns.size() + 2)
        return Refuse(line, QStringLiteral("%1 values where the header names %2 channels")
                                .arg(fields.size() - 2).arg(m_columns.size()));
    const auto time = ParseTime(fields[0], fields[1]);
    if (!time)
        return Refuse(line, QStringLiteral("no valid date and time: \"%1,%2\"")
                                .arg(QString::fromUtf8(fields[0].left(40)), QString::fromUtf8(fields[1].left(40))));
    ++m_report.intervals;
    m_times.emplace_back(time->toSecsSinceEpoch(), line);
    for (int column = 0; column < m_columns.size(); ++column) {
        const QByteArray& field = fields[column + 2];
        bool ok = false;
        const double value = field.trimmed().toDouble(&ok);
        if (!ok) {
            Refuse(line, QStringLiteral("%1 is not a number: \"%2\"").arg(m_columns[column], QString::fromUtf8(field.left(40))));
        } else if (!std::isfinite(value)) {
            Note(m_report.implausible, m_report.implausibleCount, line,
                 QStringLiteral("%1 is %2").arg(m_columns[column], QString::fromUtf8(field.trimmed())));
        } else {
            CheckTotal(line, column, value);
            Plot(*time, column, value);
        }
    }
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

void Reader::Plot(const QDateTime& time, int column, double value)
{
    if (m_report.intervals > kPlottedRows) {
        m_report.plotTruncated = true;
        return;
    }
    const QDateTime local(time.date(), time.time());
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

Report Read(QIODevice& device, qint64 intervalSeconds)
{
    Reader reader(intervalSeconds);
    for (qint64 line = 1; !device.atEnd(); ++line) {
        const QByteArray text = device.readLine(kMaxLineLength);
        if (text.isEmpty() && !device.atEnd()) {
            Report report = reader.Finish();
            report.error = QStringLiteral("Reading stopped at line %1: %2").arg(line).arg(device.errorString());
            return report;
        }
        if (text.endsWith('\n') || device.atEnd()) {
            reader.Take(line, text);
            continue;
        }
        // The rest of an overlong line is skipped without being held.
        while (!device.atEnd() && !device.readLine(kMaxLineLength).endsWith('\n')) {
        }
        reader.Refuse(line, QStringLiteral("a line longer than %1 characters").arg(kMaxLineLength));
    }
    return reader.Finish();
}

Report ReadFile(const QString& path, qint64 intervalSeconds)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Report report;
        report.error = QStringLiteral("Cannot open %1: %2").arg(QDir::toNativeSeparators(path), file.errorString());
        return report;
    }
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
