#include "ui/TrendView.h"

#include "connection/PollCycle.h"
#include "ui/ControlFactory.h"
#include "ui/TimeChart.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Controls;

namespace {

// Checked when the tab opens: the three phase voltages.
bool ShownAtStart(int quantity)
{
    return quantity <= TrendSeries::VoltageL3;
}

// A bucket of one tick is a point; a bucket of many is drawn as a stroke from its minimum to
// its maximum at its middle, so that no extreme is hidden.
QList<QPointF> LineOf(const TrendSeries& series, int quantity)
{
    QList<QPointF> points;
    points.reserve(series.Size() * 2);
    for (qsizetype i = 0; i < series.Size(); ++i) {
        const TrendSeries::Bucket& bucket = series.At(i);
        if (bucket.ticks == 1) {
            points.append(QPointF(double(bucket.firstMs), bucket.min[quantity]));
            continue;
        }
        const double middle = (double(bucket.firstMs) + double(bucket.lastMs)) / 2;
        points.append(QPointF(middle, bucket.min[quantity]));
        points.append(QPointF(middle, bucket.max[quantity]));
    }
    return points;
}

} // namespace

TrendView::TrendView(PollCycle& poll, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("TrendView"));
    chart = new TimeChart(QStringLiteral("Trend chart of the chosen quantities"), QStringLiteral("HH:mm:ss"));
    chart->setObjectName(QStringLiteral("TrendChart"));

    auto* layout = new QHBoxLayout(this);
    layout->addWidget(BuildControls());
    layout->addWidget(chart, 1);

    connect(&poll, &PollCycle::readingTaken, &series, &TrendSeries::Append);
    connect(&series, &TrendSeries::appended, this, &TrendView::Redraw);
}

QWidget* TrendView::BuildControls()
{
    quantities = new QListWidget;
    quantities->setObjectName(QStringLiteral("TrendQuantities"));
    quantities->setAccessibleName(QStringLiteral("Quantities shown in the trend chart"));
    for (int q = 0; q < TrendSeries::QuantityCount; ++q) {
        auto* item = new QListWidgetItem(TrendSeries::Name(q), quantities);
        item->setCheckState(ShownAtStart(q) ? Qt::Checked : Qt::Unchecked);
    }
    quantities->setMaximumWidth(quantities->sizeHintForColumn(0) + 2 * quantities->frameWidth() + 24);
    connect(quantities, &QListWidget::itemChanged, this, &TrendView::Redraw);

    pause = Button(QStringLiteral("TrendPause"), QStringLiteral("Pause"),
                   QStringLiteral("Freeze the chart; recording goes on"));
    pause->setCheckable(true);
    connect(pause, &QPushButton::toggled, this, [this](bool paused) {
        pause->setText(paused ? QStringLiteral("Resume") : QStringLiteral("Pause"));
        Redraw();
    });
    zoom = Button(QStringLiteral("TrendZoom"), QStringLiteral("Zoom"),
                  QStringLiteral("Drag a rectangle on the chart to zoom into it"));
    zoom->setCheckable(true);
    connect(zoom, &QPushButton::toggled, chart, &TimeChart::SetZoomMode);
    resetZoom = Button(QStringLiteral("TrendResetZoom"), QStringLiteral("Reset zoom"),
                       QStringLiteral("Show the whole session again"));
    connect(resetZoom, &QPushButton::clicked, chart, &TimeChart::ResetZoom);
    savePng = Button(QStringLiteral("TrendSavePng"), QStringLiteral("Save PNG…"),
                     QStringLiteral("Save the chart as a PNG image"));
    connect(savePng, &QPushButton::clicked, this, &TrendView::SavePng);
    saveCsv = Button(QStringLiteral("TrendSaveCsv"), QStringLiteral("Save CSV…"),
                     QStringLiteral("Save every quantity of the session to a CSV file"));
    connect(saveCsv, &QPushButton::clicked, this, &TrendView::SaveCsv);
    status = new QLabel;
    status->setObjectName(QStringLiteral("TrendStatus"));
    message = new QLabel;
    message->setObjectName(QStringLiteral("TrendMessage"));
    message->setWordWrap(true);

    auto* controls = new QWidget;
    auto* column = new QVBoxLayout(controls);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(Caption(QStringLiteral("&Quantities"), quantities));
    column->addWidget(quantities, 1);
    for (QPushButton* button : {pause, zoom, resetZoom, savePng, saveCsv})
        column->addWidget(button);
    column->addWidget(status);
    column->addWidget(message);
    controls->setMaximumWidth(quantities->maximumWidth());
    return controls;
}

void TrendView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    Redraw();
}

// Only a visible, running chart is redrawn: the series records regardless.
void TrendView::Redraw()
{
    status->setText(QStringLiteral("%1 ticks, %2 points kept").arg(series.TicksSeen()).arg(series.Size()));
    if (!isVisible() || pause->isChecked())
        return;
    QList<TimeChart::Line> lines;
    for (int q = 0; q < TrendSeries::QuantityCount; ++q) {
        if (quantities->item(q)->checkState() == Qt::Checked)
            lines.append({TrendSeries::Name(q), LineOf(series, q)});
    }
    chart->SetLines(lines);
}

void TrendView::SavePng()
{
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save the trend chart"),
        QStringLiteral("trends.png"), QStringLiteral("PNG images (*.png)"));
    if (path.isEmpty())
        return;
    const auto error = chart->SavePng(path);
    message->setText(error ? *error : QStringLiteral("Saved %1").arg(QDir::toNativeSeparators(path)));
}

void TrendView::SaveCsv()
{
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save the trends"),
        QStringLiteral("trends.csv"), QStringLiteral("CSV files (*.csv)"));
    if (path.isEmpty())
        return;
    const auto error = series.WriteCsv(path);
    message->setText(error ? *error : QStringLiteral("Saved %1 rows to %2").arg(series.Size()).arg(QDir::toNativeSeparators(path)));
}
