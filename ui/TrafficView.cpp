#include "ui/TrafficView.h"

#include "connection/TrafficLog.h"
#include "ui/ControlFactory.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QTimer>
#include <QVBoxLayout>

using namespace Controls;

namespace {

// Four looks a second keep up with the ~40 frames a second of a fast line without redrawing
// the view for each.
constexpr int kRefreshMs = 250;

const std::array<const char*, 11> kCounterNames{
    "Requests", "Good replies", "Time-outs", "Garbled", "CRC errors", "Address errors",
    "Exceptions", "Retries", "Last response", "Mean response", "Ticks per minute",
};
constexpr std::size_t kCountersPerRow = (kCounterNames.size() + 1) / 2;

// A response time only once a reply came: 0.0 ms would claim one.
QString Ms(double ms, qint64 replies)
{
    return replies == 0 ? QStringLiteral("—") : QStringLiteral("%1 ms").arg(ms, 0, 'f', 1);
}

} // namespace

TrafficView::TrafficView(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("TrafficView"));
    frames = NoteBox(QStringLiteral("txt_Traffic"), QStringLiteral("Frames on the line"));
    frames->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    frames->setLineWrapMode(QPlainTextEdit::NoWrap);
    frames->setMaximumBlockCount(int(TrafficLog::kCapacity));
    // The undo history would keep every line ever appended, past the block count.
    frames->setUndoRedoEnabled(false);
    pause = Button(QStringLiteral("cmd_TrafficPause"), QStringLiteral("Pause"), QStringLiteral("Pause the frame list"));
    pause->setCheckable(true);
    clear = Button(QStringLiteral("cmd_TrafficClear"), QStringLiteral("Clear"), QStringLiteral("Clear the frames and counters"));
    copy = Button(QStringLiteral("cmd_TrafficCopy"), QStringLiteral("Copy"), QStringLiteral("Copy the frames to the clipboard"));
    save = Button(QStringLiteral("cmd_TrafficSave"), QStringLiteral("Save…"), QStringLiteral("Save the frames to a text file"));

    auto* counters = new QGridLayout;
    for (std::size_t i = 0; i < kCounterNames.size(); ++i) {
        m_counters[i] = new QLabel(QStringLiteral("0"));
        m_counters[i]->setAccessibleName(QString::fromLatin1(kCounterNames[i]));
        m_counters[i]->setMinimumWidth(m_counters[i]->fontMetrics().averageCharWidth() * 10);
        const int row = int(i / kCountersPerRow);
        const int column = int(i % kCountersPerRow) * 2;
        counters->addWidget(Caption(QString::fromLatin1(kCounterNames[i]), m_counters[i]), row, column);
        counters->addWidget(m_counters[i], row, column + 1);
    }
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {pause, clear, copy, save})
        buttons->addWidget(button);
    buttons->addStretch(1);

    auto* column = new QVBoxLayout(this);
    column->addLayout(counters);
    column->addLayout(buttons);
    column->addWidget(frames, 1);

    m_refresh = new QTimer(this);
    m_refresh->setInterval(kRefreshMs);
    connect(m_refresh, &QTimer::timeout, this, &TrafficView::Refresh);
    connect(pause, &QPushButton::toggled, this, [this](bool paused) {
        pause->setText(paused ? QStringLiteral("Resume") : QStringLiteral("Pause"));
        if (!paused)
            Refresh();
    });
    connect(clear, &QPushButton::clicked, this, &TrafficView::Clear);
    connect(copy, &QPushButton::clicked, this,
            [this] { QApplication::clipboard()->setText(frames->toPlainText()); });
    connect(save, &QPushButton::clicked, this, &TrafficView::Save);
}

void TrafficView::Attach(TrafficLog& log)
{
    m_log = &log;
    m_nextSerial = 0;
    m_refresh->start();
    Refresh();
}

// While paused the rows stand still and the log goes on; on resuming, the rows the log still
// holds are added.
void TrafficView::Refresh()
{
    if (m_log == nullptr)
        return;
    ShowCounters();
    if (pause->isChecked() || m_log->NextSerial() == m_nextSerial)
        return;
    QStringList lines;
    for (const TrafficLog::Entry& entry : m_log->EntriesFrom(m_nextSerial))
        lines << TrafficLog::Line(entry);
    m_nextSerial = m_log->NextSerial();
    frames->appendPlainText(lines.join(QLatin1Char('\n')));
}

void TrafficView::ShowCounters()
{
    const TrafficCounters& c = m_log->Counters();
    const std::array<QString, kCounterNames.size()> values{
        QString::number(c.requests), QString::number(c.goodReplies), QString::number(c.timeOuts),
        QString::number(c.garbled), QString::number(c.crcErrors), QString::number(c.addressErrors),
        QString::number(c.exceptions), QString::number(c.retries), Ms(c.lastResponseMs, c.goodReplies),
        Ms(c.meanResponseMs, c.goodReplies), QString::number(c.ticksPerMinute),
    };
    for (std::size_t i = 0; i < values.size(); ++i)
        m_counters[i]->setText(values[i]);
}

void TrafficView::Clear()
{
    frames->clear();
    if (m_log == nullptr)
        return;
    m_log->Clear();
    m_nextSerial = m_log->NextSerial();
    ShowCounters();
}

bool TrafficView::SaveTo(const QString& path, QString* error) const
{
    QSaveFile file(path);
    const QByteArray text = frames->toPlainText().toUtf8() + '\n';
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text) || file.write(text) != text.size() || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

void TrafficView::Save()
{
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save the traffic"), QString(),
                                                      QStringLiteral("Text files (*.txt);;All files (*)"));
    if (path.isEmpty())
        return;
    QString error;
    if (!SaveTo(path, &error))
        QMessageBox::warning(this, QStringLiteral("Save the traffic"),
                             QStringLiteral("The traffic was not saved to %1: %2").arg(path, error));
}
