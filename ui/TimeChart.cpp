#include "ui/TimeChart.h"

#include <QDateTimeAxis>
#include <QDir>
#include <QLineSeries>
#include <QValueAxis>

#include <algorithm>
#include <limits>

namespace {

// Room above and below the lines, as a share of their range.
constexpr double kMargin = 0.05;

} // namespace

TimeChart::TimeChart(const QString& accessibleName, const QString& timeFormat, QWidget* parent)
    : QChartView(new QChart, parent), m_time(new QDateTimeAxis), m_values(new QValueAxis)
{
    setAccessibleName(accessibleName);
    setRenderHint(QPainter::Antialiasing);
    chart()->legend()->setAlignment(Qt::AlignBottom);
    m_time->setFormat(timeFormat);
    m_time->setTickCount(7);
    // A time axis first laid out on its default range never shows its labels once data comes.
    const QDateTime now = QDateTime::currentDateTime();
    m_time->setRange(now, now.addSecs(60));
    m_values->setLabelFormat(QStringLiteral("%.4g"));
    chart()->addAxis(m_time, Qt::AlignBottom);
    chart()->addAxis(m_values, Qt::AlignLeft);
    FollowPalette();
}

void TimeChart::changeEvent(QEvent* event)
{
    QChartView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        FollowPalette();
}

// The chart's own theme is light whatever the system's is; the line colours read on both.
void TimeChart::FollowPalette()
{
    const QPalette& colours = palette();
    const QColor text = colours.color(QPalette::Text);
    chart()->setBackgroundBrush(colours.brush(QPalette::Window));
    chart()->setTitleBrush(text);
    chart()->legend()->setLabelColor(text);
    for (QAbstractAxis* axis : chart()->axes()) {
        axis->setLabelsColor(text);
        axis->setTitleBrush(text);
        axis->setLinePenColor(colours.color(QPalette::Mid));
        axis->setGridLineColor(colours.color(QPalette::Mid));
    }
}

void TimeChart::SetLines(const QList<Line>& lines)
{
    QList<QString> wanted;
    for (const Line& line : lines)
        wanted.append(line.name);
    for (QAbstractSeries* series : chart()->series()) {
        if (!wanted.contains(series->name())) {
            chart()->removeSeries(series);
            delete series;
        }
    }
    for (const Line& line : lines) {
        auto* series = [&]() -> QLineSeries* {
            for (QAbstractSeries* shown : chart()->series()) {
                if (shown->name() == line.name)
                    return static_cast<QLineSeries*>(shown);
            }
            auto* added = new QLineSeries;
            added->setName(line.name);
            chart()->addSeries(added);
            added->attachAxis(m_time);
            added->attachAxis(m_values);
            return added;
        }();
        series->replace(line.points);
    }
    if (!chart()->isZoomed())
        FitAxes();
}

void TimeChart::SetZoomMode(bool on)
{
    setRubberBand(on ? QChartView::RectangleRubberBand : QChartView::NoRubberBand);
}

void TimeChart::ResetZoom()
{
    chart()->zoomReset();
    FitAxes();
}

std::optional<QString> TimeChart::SavePng(const QString& path)
{
    if (!grab().save(path, "PNG"))
        return QStringLiteral("Cannot write %1").arg(QDir::toNativeSeparators(path));
    return std::nullopt;
}

void TimeChart::FitAxes()
{
    double left = std::numeric_limits<double>::max();
    double right = std::numeric_limits<double>::lowest();
    double bottom = left;
    double top = right;
    for (QAbstractSeries* series : chart()->series()) {
        for (const QPointF& point : static_cast<QLineSeries*>(series)->points()) {
            left = std::min(left, point.x());
            right = std::max(right, point.x());
            bottom = std::min(bottom, point.y());
            top = std::max(top, point.y());
        }
    }
    if (left > right)
        return;
    // A single point or a flat line still gets a range to be drawn in.
    if (right - left < 1000)
        right = left + 1000;
    const double margin = top > bottom ? (top - bottom) * kMargin : std::max(1.0, std::abs(top) * kMargin);
    m_time->setRange(QDateTime::fromMSecsSinceEpoch(qint64(left)), QDateTime::fromMSecsSinceEpoch(qint64(right)));
    m_values->setRange(bottom - margin, top + margin);
}
