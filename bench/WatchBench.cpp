// `qx5820 watch` against the simulated meter paced like a real line, both as separate
// programs on a pseudo-terminal, as a script would run them:
//   - the tick period from the tool's own time stamps, as a ratio to its floor (the bytes of
//     the nine requests and replies at 10 bits per character, the meter's turnaround, nine
//     12 ms gaps);
//   - the CPU time the tool took per tick.
// Usage: bench_watch [TICKS]   (default 100)
#include "BenchSupport.h"
#include "link/RegisterLink.h"
#include "measure/PollPlan.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QProcess>

#include <cstdio>

namespace {

constexpr int kTurnaroundMs = 3;
constexpr int kBaud = 19200;

// Child processes' CPU time (user + system) in seconds, of those waited for so far.
double ChildrenCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int ticks = argc > 1 ? std::atoi(argv[1]) : 100;

    QProcess meter;
    meter.start(QStringLiteral(QX5820_SIM), {QStringLiteral("--turnaround"), QString::number(kTurnaroundMs)});
    if (!meter.waitForReadyRead(10000)) {
        std::fprintf(stderr, "the simulated meter did not start\n");
        return 1;
    }
    const QString device = QString::fromLocal8Bit(meter.readLine()).trimmed();

    // The simulator's own CPU time is not counted: it is not waited for until the end.
    const double cpuBefore = ChildrenCpuSeconds();
    QProcess watch;
    watch.start(QStringLiteral(QX5820_CLI), {QStringLiteral("watch"), QStringLiteral("--port"), device,
                                             QStringLiteral("--count"), QString::number(ticks + 1)});
    if (!watch.waitForFinished(ticks * 2000 + 10000) || watch.exitCode() != 0) {
        std::fprintf(stderr, "watch failed: %s\n", watch.readAllStandardError().constData());
        return 1;
    }
    const double cpu = ChildrenCpuSeconds() - cpuBefore;
    meter.terminate();
    meter.waitForFinished();

    // Each row starts with the time its tick began.
    const QList<QByteArray> lines = watch.readAllStandardOutput().trimmed().split('\n');
    const auto tickStart = [&lines](qsizetype row) {
        return QDateTime::fromString(QString::fromLatin1(lines[row].left(lines[row].indexOf(','))), Qt::ISODateWithMs);
    };
    const double tick = double(tickStart(1).msecsTo(tickStart(lines.size() - 1))) / double(lines.size() - 2);
    const double floor = WireMs(PollPlan::TickWireBytes(), kBaud)
        + double(PollPlan::kBlocks.size()) * (kTurnaroundMs + RegisterLink::kFrameGapMs);
    std::printf("qx5820 watch, %d ticks at %d 8N1: tick %.1f ms, floor %.1f ms, ratio %.3f; "
                "tool CPU %.2f ms per tick (%.2f %% of a core, start-up included)\n",
                int(lines.size() - 2), kBaud, tick, floor, tick / floor, 1000 * cpu / ticks,
                100 * cpu / (ticks * tick / 1000));
    return 0;
}
