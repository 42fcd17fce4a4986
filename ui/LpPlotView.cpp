#include "ui/LpPlotView.h"

#include "loadprofile/LpDownload.h"
#include "loadprofile/LpFileReportJob.h"
#include "ui/ControlFactory.h"
#include "ui/TimeChart.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

using namespace Controls;

LpPlotView::LpPlotView(LpDownload& download, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("LpPlotView"));
    chart = new TimeChart(QStringLiteral("Load-profile channels over time"), QStringLiteral("MM-dd HH:mm"));
    chart->setObjectName(QStringLiteral("LpPlotChart"));
    chart->SetZoomMode(true);

    auto* layout = new QHBoxLayout(this);
    layout->addWidget(chart, 1);
    layout->addWidget(BuildSide());

    // A download that ended, however it ended, leaves its file to be looked at, checked at the
    // interval the meter records the group at.
    connect(&download, &LpDownload::faceChanged, this, [this, &download](LpDownload::Face face) {
        if (face == LpDownload::Face::Normal && !download.LpFilePath.isEmpty())
            Open(download.LpFilePath, 60 * qint64(download.IntervalMinutes()));
    });
}

LpPlotView::~LpPlotView() = default;

QWidget* LpPlotView::BuildSide()
{
    open = Button(QStringLiteral("LpPlotOpen"), QStringLiteral("Open CSV…"),
                  QStringLiteral("Open a load-profile CSV file to plot and check"));
    connect(open, &QPushButton::clicked, this, &LpPlotView::ChooseFile);
    resetZoom = Button(QStringLiteral("LpPlotResetZoom"), QStringLiteral("Reset zoom"),
                       QStringLiteral("Show the whole file again; drag a rectangle on the chart to zoom"));
    connect(resetZoom, &QPushButton::clicked, chart, &TimeChart::ResetZoom);
    fileName = new QLabel(QStringLiteral("No file"));
    fileName->setObjectName(QStringLiteral("LpPlotFile"));
    fileName->setWordWrap(true);
    channels = new QListWidget;
    channels->setObjectName(QStringLiteral("LpPlotChannels"));
    channels->setAccessibleName(QStringLiteral("Channels shown in the plot"));
    connect(channels, &QListWidget::itemChanged, this, &LpPlotView::Redraw);
    report = NoteBox(QStringLiteral("LpPlotReport"), QStringLiteral("What the file holds and lacks"));
    report->setLineWrapMode(QPlainTextEdit::NoWrap);

    auto* side = new QWidget;
    side->setFixedWidth(fontMetrics().averageCharWidth() * 60);
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(open);
    buttons->addWidget(resetZoom);
    column->addLayout(buttons);
    column->addWidget(fileName);
    column->addWidget(Caption(QStringLiteral("&Channels"), channels));
    column->addWidget(channels, 1);
    column->addWidget(Caption(QStringLiteral("&Report"), report));
    column->addWidget(report, 2);
    return side;
}

void LpPlotView::ChooseFile()
{
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Open a load-profile file"),
        QString(), QStringLiteral("CSV files (*.csv);;All files (*)"));
    if (!path.isEmpty())
        Open(path);
}

void LpPlotView::Open(const QString& path, qint64 intervalSeconds)
{
    fileName->setText(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()));
    report->setPlainText(QStringLiteral("Reading the file…"));
    m_job = std::make_unique<LpFileReportJob>(path, intervalSeconds);
    connect(m_job.get(), &LpFileReportJob::done, this, &LpPlotView::Show);
}

// The job is still emitting: it is deleted once it is back in the event loop.
void LpPlotView::Show(const LpFileReport::Report& taken)
{
    m_job.release()->deleteLater();
    m_report = taken;
    report->setPlainText(LpFileReport::Text(m_report));
    ListChannels();
    chart->ResetZoom();
    Redraw();
    emit shown();
}

// A channel of the same name stays chosen from one file to the next; a new file with none of
// them shows its first channel.
void LpPlotView::ListChannels()
{
    QStringList chosen;
    for (int row = 0; row < channels->count(); ++row) {
        if (channels->item(row)->checkState() == Qt::Checked)
            chosen.append(channels->item(row)->text());
    }
    const QSignalBlocker quiet(channels);
    channels->clear();
    bool any = false;
    for (const LpFileReport::Channel& channel : std::as_const(m_report.channels)) {
        auto* item = new QListWidgetItem(channel.name, channels);
        const bool shown = chosen.contains(channel.name);
        item->setCheckState(shown ? Qt::Checked : Qt::Unchecked);
        any = any || shown;
    }
    if (!any && channels->count() > 0)
        channels->item(0)->setCheckState(Qt::Checked);
}

void LpPlotView::Redraw()
{
    QList<TimeChart::Line> lines;
    for (int row = 0; row < channels->count(); ++row) {
        if (channels->item(row)->checkState() == Qt::Checked)
            lines.append({m_report.channels[row].name, m_report.channels[row].points});
    }
    chart->SetLines(lines);
}
