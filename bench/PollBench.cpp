// The poll cycle against the simulated meter paced like a real line, through the real window
// on the offscreen platform:
//   - the tick period at 19200 and 9600 8N1 as a ratio to its floor (the bytes of the nine
//     requests and replies at 10 bits per character, the meter's turnaround, nine 12 ms gaps);
//   - the CPU time per tick, of the window's thread and of the whole process (which also
//     runs the simulated meter);
//   - resident memory after many ticks against the start;
//   - RefreshLpNumberLists growing the interval lists from 0 to 65,535 entries.
// Usage: bench_poll [TICKS_FOR_MEMORY]   (default 10000; pacing is off for that phase)
#include "BenchSupport.h"
#include "session/MeterSession.h"
#include "measure/PollPlan.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr int kTurnaroundMs = 3;
constexpr int kTickRequests = int(PollPlan::kBlocks.size());

double ThreadCpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

bool StartsATick(const sim::LoggedRequest& request)
{
    const PollBlock& first = PollPlan::kBlocks.front();
    return request.frame.mid(1, 5) == Rtu::ReadRequest(0, first.function, first.start, first.count).mid(1, 5);
}

// Runs the event loop until `ticks` more ticks have started on the line. Returns the meter's
// log of those requests when `keep` is set (a short run: the log holds it whole, and replies
// still under way get their end noted); otherwise the log is dropped as it is read.
QList<sim::LoggedRequest> RunTicks(sim::SimulatedMeterHost& meter, int ticks, bool keep = false)
{
    meter.takeRequestLog();
    int started = 0;
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        const QList<sim::LoggedRequest> log = keep ? meter.requestLog() : meter.takeRequestLog();
        const int seen = int(std::count_if(log.begin(), log.end(), StartsATick));
        started = keep ? seen : started + seen;
        if (started >= ticks)
            loop.quit();
    });
    check.start(50);
    loop.exec();
    return keep ? meter.requestLog() : QList<sim::LoggedRequest>();
}

// Mean time between the starts of consecutive ticks in the meter's log.
double MeanTickMs(const QList<sim::LoggedRequest>& log)
{
    QList<sim::SteadyTime> starts;
    for (const auto& request : log)
        if (StartsATick(request))
            starts.append(request.receivedAt);
    if (starts.size() < 2)
        return 0;
    return std::chrono::duration<double, std::milli>(starts.last() - starts.first()).count() / (starts.size() - 1);
}

// Where a tick's time goes: the master's silence from the end of a reply to its next request,
// and the meter's time from a request's first byte to the end of its reply.
void PrintGaps(const QList<sim::LoggedRequest>& log)
{
    double gaps = 0;
    double answers = 0;
    int n = 0;
    for (qsizetype i = 1; i < log.size(); ++i) {
        if (!log[i - 1].replyFinishedAt)
            continue;
        gaps += std::chrono::duration<double, std::milli>(log[i].receivedAt - *log[i - 1].replyFinishedAt).count();
        answers += std::chrono::duration<double, std::milli>(*log[i - 1].replyFinishedAt - log[i - 1].receivedAt).count();
        ++n;
    }
    std::printf("           mean gap kept by the tool %.2f ms (12 ms asked); mean time the meter took per request %.2f ms\n",
                gaps / n, answers / n);
}

bool GoOnLine(MainForm& form)
{
    form.On_Line->click();
    return form.session().connection.bOnLine.isTrue();
}

int MeasureTickPeriod(MainForm& form, sim::SimulatedMeterHost& meter, int baud)
{
    form.Combo_BaudRate_Sel->setCurrentText(QString::number(baud));
    meter.setHolding(0x1001, baud == 9600 ? 1 : 2);
    if (!GoOnLine(form))
        return 1;
    RunTicks(meter, 3); // settle
    constexpr int kTicks = 20;
    const double cpuThread0 = ThreadCpuSeconds();
    const double cpuProcess0 = CpuSeconds();
    const QList<sim::LoggedRequest> log = RunTicks(meter, kTicks + 1, true);
    const double cpuThread = ThreadCpuSeconds() - cpuThread0;
    const double cpuProcess = CpuSeconds() - cpuProcess0;
    const double tick = MeanTickMs(log);
    const double floor = WireMs(PollPlan::TickWireBytes(), baud) + kTickRequests * (kTurnaroundMs + RegisterLink::kFrameGapMs);
    std::printf("%5d 8N1: tick %.1f ms, floor %.1f ms, ratio %.3f; CPU per tick: window thread %.2f ms (%.2f %% of a core), "
                "process %.2f ms (%.2f %%)\n",
                baud, tick, floor, tick / floor, 1000 * cpuThread / kTicks, 100 * cpuThread / (kTicks * tick / 1000),
                1000 * cpuProcess / kTicks, 100 * cpuProcess / (kTicks * tick / 1000));
    PrintGaps(log);
    form.On_Line->click();
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // figures show as they come, also into a file
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int memoryTicks = argc > 1 ? std::atoi(argv[1]) : 10000;

    sim::SimulatedMeterHost simulator;
    auto* meter = &simulator;
    MainForm form;
    form.session().connection.simulatedMeterDevice = meter->deviceSource();
    form.Form_Load();
    form.ChooseSimulatedMeter();
    form.show();
    if (!GoOnLine(form)) {
        std::fprintf(stderr, "cannot go on line to the simulated meter\n");
        return 1;
    }
    form.On_Line->click();
    meter->setTurnaround(kTurnaroundMs);

    if (MeasureTickPeriod(form, *meter, 19200) != 0 || MeasureTickPeriod(form, *meter, 9600) != 0)
        return 1;

    // Memory over many ticks, with the line's pacing off so that they come quickly.
    form.Combo_BaudRate_Sel->setCurrentText(QStringLiteral("19200"));
    meter->setHolding(0x1001, 2);
    meter->setPacing(false);
    GoOnLine(form);
    RunTicks(*meter, 20);
    const long before = ResidentKiB();
    QElapsedTimer clock;
    clock.start();
    RunTicks(*meter, memoryTicks);
    const long after = ResidentKiB();
    std::printf("resident memory: %ld KiB after 20 ticks, %ld KiB after %d more (%+ld KiB), %.0f s\n", before, after,
                memoryTicks, after - before, clock.elapsed() / 1000.0);
    form.On_Line->click();

    // The interval lists: from 0 to 65,535 entries, then an unchanged count.
    LpNumberLists& lists = form.session().numberLists;
    form.Combo_LP_Read_Group_Sel->setCurrentIndex(0);
    MeterReading reading;
    reading.known = MeterReading::RealTimeImage;
    lists.RefreshLpNumberLists(reading);
    reading.loadProfile[0].validIntervals = 65535;
    clock.restart();
    lists.RefreshLpNumberLists(reading);
    QCoreApplication::processEvents(); // the repaint that follows
    const double grow = double(clock.nsecsElapsed()) / 1e6;
    clock.restart();
    for (int i = 0; i < 1000; ++i)
        lists.RefreshLpNumberLists(reading);
    const double unchanged = double(clock.nsecsElapsed()) / 1e3 / 1000;
    std::printf("RefreshLpNumberLists: 0 -> 65,535 entries %.1f ms (lists hold %d); unchanged count %.2f us\n", grow,
                form.Combo_LP_Start_No->count(), unchanged);
    return 0;
}
