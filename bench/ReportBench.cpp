// The load-profile report on a large file while the window polls the simulated meter, paced
// like a real line, on the offscreen platform: the file is opened in the Load Profile Plot tab
// as "Open CSV…" opens it, and the longest time between two poll ticks taken while the report
// runs is printed beside the longest one before, and how long the report took.
// Usage: bench_report [MEGABYTES]   (default 100)
#include "BenchSupport.h"
#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/LpPlotView.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kChannels = 8;
constexpr qint64 kRowsPerBlock = 96 * 30; // a month of quarter hours per download

// Writes rows at 15-minute spacing in blocks of a download's shape until the file holds
// `bytes`. Returns the rows written, or -1 when the file cannot be written.
qint64 WriteFile(const QString& path, qint64 bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return -1;
    QByteArray header = "Date,Time";
    for (int c = 1; c <= kChannels; ++c)
        header += ",Channel" + QByteArray::number(c) + (c == 1 ? "(total)" : "(point)");
    header += "\r\n";
    QDateTime time(QDate(2020, 1, 1), QTime(0, 0), Qt::UTC);
    qint64 rows = 0;
    QByteArray chunk;
    while (file.size() + chunk.size() < bytes) {
        if (rows % kRowsPerBlock == 0)
            chunk += "Date : 2026/11/21  13:00\r\n" + header;
        chunk += time.toString(QStringLiteral("yyyy/M/d,H:m:s")).toLatin1();
        for (int c = 0; c < kChannels; ++c)
            chunk += ',' + QByteArray::number(c == 0 ? double(rows) * 0.25 : 230.0 + c, 'f', 4);
        chunk += "\r\n";
        time = time.addSecs(15 * 60);
        ++rows;
        if (chunk.size() > (1 << 20) && file.write(chunk) != chunk.size())
            return -1;
        if (chunk.size() > (1 << 20))
            chunk.clear();
    }
    return file.write(chunk) == chunk.size() ? rows : -1;
}

// The times between poll ticks since the last Restart, in ms.
class TickGaps {
public:
    explicit TickGaps(PollCycle& poll)
    {
        QObject::connect(&poll, &PollCycle::readingTaken, &m_context, [this] {
            m_gaps.append(Since());
            m_sinceTick.restart();
        });
        m_sinceTick.start();
    }
    void Restart() { m_gaps.clear(); }
    // The median, the longest and how many ticks, the time since the last tick counted as a gap.
    QString Figures() const
    {
        QList<double> gaps = m_gaps;
        gaps.append(Since());
        std::sort(gaps.begin(), gaps.end());
        return QStringLiteral("%1 ticks, gap between ticks median %2 ms, longest %3 ms")
            .arg(gaps.size() - 1).arg(gaps[gaps.size() / 2], 0, 'f', 0).arg(gaps.last(), 0, 'f', 0);
    }
    double Longest() const { return std::max(Since(), m_gaps.isEmpty() ? 0.0 : *std::max_element(m_gaps.begin(), m_gaps.end())); }

private:
    double Since() const { return double(m_sinceTick.nsecsElapsed()) / 1e6; }

    QObject m_context;
    QElapsedTimer m_sinceTick;
    QList<double> m_gaps;
};

// Runs the event loop until `signal` of `sender` or for `seconds`.
template <typename Sender, typename Signal>
void RunUntil(Sender* sender, Signal signal, int seconds)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const qint64 megabytes = argc > 1 ? std::max(1, std::atoi(argv[1])) : 100;

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("SN004217_20261121_Group1.csv"));
    QElapsedTimer clock;
    clock.start();
    const qint64 rows = WriteFile(path, megabytes * 1024 * 1024);
    if (rows < 0) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return 1;
    }
    std::printf("file: %lld MB, %lld rows, written in %.1f s\n", megabytes, rows, clock.elapsed() / 1000.0);

    sim::SimulatedMeterHost meter;
    meter.setTurnaround(3);
    MainForm form;
    form.session().connection.simulatedMeterDevice = meter.deviceSource();
    form.Form_Load();
    form.ChooseSimulatedMeter();
    form.show();
    form.On_Line->click();
    if (!form.session().connection.bOnLine.isTrue()) {
        std::fprintf(stderr, "cannot go on line to the simulated meter\n");
        return 1;
    }
    auto* view = form.findChild<LpPlotView*>();
    form.tabs->setCurrentWidget(view);
    TickGaps gaps(form.session().poll);
    RunUntil(&app, &QCoreApplication::aboutToQuit, 3);
    std::printf("polling alone, 3 s: %s\n", qPrintable(gaps.Figures()));

    const double cpu0 = CpuSeconds();
    clock.restart();
    gaps.Restart();
    QTimer::singleShot(0, view, [&] { view->Open(path); });
    RunUntil(view, &LpPlotView::shown, 600);
    const double took = clock.elapsed() / 1000.0;
    const double cpu = CpuSeconds() - cpu0;
    const double during = gaps.Longest();
    std::printf("report: %s in %.1f s (%.1f s CPU with the polling); meanwhile %s\n",
                view->Reading() ? "not finished" : "shown", took, cpu, qPrintable(gaps.Figures()));
    gaps.Restart();
    RunUntil(&app, &QCoreApplication::aboutToQuit, 2);
    const double after = gaps.Longest();
    std::printf("the 2 s after it, the plot drawn: %s (target: every gap under 1000 ms)\n", qPrintable(gaps.Figures()));
    std::printf("%s\n", qPrintable(view->report->toPlainText().section(u'\n', 0, 2)));
    const int status = view->Reading() || std::max(during, after) >= 1000 ? 1 : 0;
    form.On_Line->click();
    return status;
}
