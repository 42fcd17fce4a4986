// `qx5820 config apply` on a paced 19200 8N1 line: a file that differs from the meters in every
// setting but the communication ones (the groups' channel counts left equal, so no --yes),
// applied to one meter and then to N on one line. The tool runs as a child process on the
// simulator's pseudo-terminal, as a script would run it: its start is part of the time.
// The floor is what the meter's request log shows went over the line: each write's request
// and reply at 10 bits per character plus the meter's turnaround and the 12 ms gap, and every
// tick that ran at a tick's floor, as bench_bus counts. A write goes out at the end of the
// tick that confirms the one before, so a meter needs one tick per write and the ones that
// bring it on line and read what it holds: more ticks than that confirm nothing.
// Usage: bench_config_apply [N ...]   (default 1 32)
#include "BenchSupport.h"
#include "link/RegisterLink.h"
#include "measure/PollPlan.h"
#include "sim/BusMeters.h"
#include "sim/SimulatedMeterHost.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

namespace {

constexpr int kBaud = 19200;
constexpr int kTurnaroundMs = 3;
constexpr qsizetype kWriteReplyBytes = 8; // functions 6 and 16 both answer in 8 bytes
constexpr double kRequestOverheadMs = kTurnaroundMs + RegisterLink::kFrameGapMs;

// The tool run to its end, waited for in an event loop no longer than `limitMs`; its exit
// status, or nothing when it did not end in time or crashed.
std::optional<int> RunTool(const QStringList& arguments, int limitMs, QByteArray* err = nullptr)
{
    QProcess tool;
    QEventLoop loop;
    QObject::connect(&tool, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&tool, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    tool.start(QStringLiteral(QX5820_CLI), arguments);
    loop.exec();
    if (err)
        *err = tool.readAllStandardError();
    if (tool.state() != QProcess::NotRunning)
        return std::nullopt; // killed as `tool` goes
    return tool.exitStatus() == QProcess::NormalExit ? std::optional<int>(tool.exitCode()) : std::nullopt;
}

// The next of `choices` after `value`, round.
double Other(double value, const QList<double>& choices)
{
    const qsizetype at = choices.indexOf(value);
    return choices[(at + 1) % choices.size()];
}

// The saved file changed in every setting the meter would be written for.
QJsonObject DifferingEverywhere(QJsonObject root)
{
    root["ct_ratio"] = int(root["ct_ratio"].toDouble()) % 2400 + 1;
    root["pt_ratio_1"] = root["pt_ratio_1"].toDouble() + 1.0;
    root["scroll_time"] = Other(root["scroll_time"].toDouble(), {3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    root["wiring"] = root["wiring"].toString() == QLatin1String("3P3W 3CT") ? QStringLiteral("3P4W") : QStringLiteral("3P3W 3CT");
    QJsonObject pt2 = root["pt_ratio_2"].toObject();
    pt2["primary"] = pt2["primary"].toDouble() * 2;
    pt2["ratio"] = pt2["primary"].toDouble() / pt2["secondary"].toDouble();
    root["pt_ratio_2"] = pt2;
    QJsonArray items = root["display_items"].toArray();
    for (auto item : items)
        item = Other(item.toDouble(), {101, 102});
    root["display_items"] = items;
    QJsonArray groups = root["lp_groups"].toArray();
    for (auto entry : groups) {
        QJsonObject group = entry.toObject();
        group["interval"] = Other(group["interval"].toDouble(), {1, 5, 10, 15, 30, 60});
        QJsonArray codes = group["codes"].toArray();
        for (auto code : codes)
            code = code.toInt() % 14 + 1;
        group["codes"] = codes;
        entry = group;
    }
    root["lp_groups"] = groups;
    return root;
}

// What the line carried during an apply, from the meter's request log.
struct Traffic {
    int writes = 0;
    qint64 writeBytes = 0; // requests and replies
    int ticks = 0;
    int reads = 0;

    void Add(const QList<sim::LoggedRequest>& log)
    {
        const PollBlock& first = PollPlan::kBlocks[0];
        for (const sim::LoggedRequest& request : log) {
            const quint8 function = quint8(request.frame.at(1));
            if (function == 6 || function == 16) {
                ++writes;
                writeBytes += request.frame.size() + kWriteReplyBytes;
                continue;
            }
            ++reads;
            const quint16 start = quint16(quint8(request.frame.at(2)) << 8 | quint8(request.frame.at(3)));
            const quint16 count = quint16(quint8(request.frame.at(4)) << 8 | quint8(request.frame.at(5)));
            if (function == first.function && start == first.start && count == first.count)
                ++ticks;
        }
    }
    // Requests neither a write nor a tick's read.
    int Others() const { return reads - ticks * int(PollPlan::kBlocks.size()); }
    double FloorMs(double tickFloorMs) const
    {
        return WireMs(writeBytes, kBaud) + writes * kRequestOverheadMs + ticks * tickFloorMs;
    }
};

// Saves meter 1's configuration, makes it differ everywhere and applies it to meters 1 to
// `meters`; prints the figures. False when a step failed.
bool Measure(int meters, double tickFloorMs)
{
    sim::SimulatedMeterHost line(sim::BusMeters(meters));
    line.setPacing(true);
    line.setTurnaround(kTurnaroundMs);
    const sim::SimulatedMeterHost::Started started = line.start();
    if (started.path.isEmpty()) {
        std::fprintf(stderr, "the simulated line did not start: %s\n", qPrintable(started.error));
        return false;
    }
    const QStringList onLine{QStringLiteral("--port"), started.path, QStringLiteral("--baud"), QString::number(kBaud)};

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("template.json"));
    QByteArray err;
    if (RunTool(QStringList{QStringLiteral("config"), QStringLiteral("save"), path, QStringLiteral("--address"), QStringLiteral("1")} + onLine,
                30000, &err) != 0) {
        std::fprintf(stderr, "config save failed: %s\n", err.constData());
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite)) {
        std::fprintf(stderr, "cannot open %s\n", qPrintable(path));
        return false;
    }
    const QJsonObject changed = DifferingEverywhere(QJsonDocument::fromJson(file.readAll()).object());
    file.resize(0);
    file.write(QJsonDocument(changed).toJson());
    file.close();

    line.clearRequestLog();
    // The meter keeps its last 4096 requests; a round of many meters sends more.
    Traffic traffic;
    QTimer drain;
    QObject::connect(&drain, &QTimer::timeout, [&] { traffic.Add(line.takeRequestLog()); });
    drain.start(10000);
    QElapsedTimer timer;
    timer.start();
    // A write with its confirming tick stays well under two seconds.
    const std::optional<int> status =
        RunTool(QStringList{QStringLiteral("config"), QStringLiteral("apply"), path, QStringLiteral("--address"),
                            QStringLiteral("1-%1").arg(meters)} + onLine,
                meters * 120000, &err);
    const double elapsed = double(timer.nsecsElapsed()) / 1e6;
    if (status != 0) {
        std::fprintf(stderr, "config apply on %d meters failed (%d): %s\n", meters, status.value_or(-1), err.constData());
        return false;
    }
    traffic.Add(line.takeRequestLog());
    const double floor = traffic.FloorMs(tickFloorMs);
    std::printf("N = %2d: apply %.0f ms, %.0f ms per meter; per meter %.1f writes (%.0f ms on the wire with gaps), "
                "%.1f ticks; other requests %d; floor %.0f ms, ratio %.3f (target <= 1.2)\n",
                meters, elapsed, elapsed / meters, double(traffic.writes) / meters,
                (WireMs(traffic.writeBytes, kBaud) + traffic.writes * kRequestOverheadMs) / meters,
                double(traffic.ticks) / meters, traffic.Others(), floor, elapsed / floor);
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QCoreApplication app(argc, argv);
    QList<int> sizes{1, 32};
    if (argc > 1) {
        sizes.clear();
        for (int i = 1; i < argc; ++i)
            sizes.append(std::atoi(argv[i]));
    }
    const double tickFloorMs = WireMs(PollPlan::TickWireBytes(), kBaud) + int(PollPlan::kBlocks.size()) * kRequestOverheadMs;
    std::printf("qx5820 config apply as a child process on a paced %d 8N1 line (its start counted); the groups' "
                "channel counts left equal; a tick's floor %.1f ms\n", kBaud, tickFloorMs);
    int status = 0;
    for (const int meters : sizes) {
        if (meters < 1 || meters > 247) {
            std::fprintf(stderr, "N must be 1 to 247, not %d\n", meters);
            return 2;
        }
        if (!Measure(meters, tickFloorMs))
            status = 1;
    }
    return status;
}
