// Several meters on one paced 19200 line, polled in turn by a headless session as
// `qx5820 watch --address 1-N` does: the address changes between ticks, and a round of N
// meters should take N ticks' floor (the bytes of the nine requests and replies at 10 bits
// per character, the meter's turnaround, nine 12 ms gaps), with no wait between meters.
// Usage: bench_bus [N ...]   (default 1 8 32)
#include "BenchSupport.h"
#include "RecordingPrompts.h"
#include "TestLists.h"
#include "measure/PollPlan.h"
#include "ports/Clock.h"
#include "session/MeterSession.h"
#include "sim/BusMeters.h"
#include "sim/SimulatedMeterHost.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <vector>

namespace {

constexpr int kBaud = 19200;
constexpr int kTurnaroundMs = 3;
constexpr int kTickRequests = int(PollPlan::kBlocks.size());

// The mean time of a round of `meters` meters at addresses 1 to `meters`, over `rounds`
// rounds after one to settle; nothing when a tick failed or the line was lost.
std::optional<double> MeanRoundMs(int meters, int rounds)
{
    sim::SimulatedMeterHost line(sim::BusMeters(meters));
    line.setPacing(true);
    line.setTurnaround(kTurnaroundMs);

    RecordingPrompts prompts;
    RecordingLists lists;
    SystemClock clock;
    MeterSession session(SessionPorts{prompts, lists, clock});
    session.connection.simulatedMeterDevice = line.deviceSource();
    session.SetPortEntries(PortCatalog::Build({}));
    session.ChoosePort(PortCatalog::kNumberedPorts); // the simulated meter
    session.ChooseLine(QString::number(kBaud), QStringLiteral("1"));
    session.ChooseAddress(QStringLiteral("1"));
    session.ToggleOnLine(QStringLiteral("1"));
    if (!session.OnLine())
        return std::nullopt;

    const int total = (rounds + 1) * meters;
    int ticks = 0;
    int whole = 0;
    QElapsedTimer timer;
    QEventLoop loop;
    QObject::connect(&session.poll, &PollCycle::readingTaken, [&whole] { ++whole; });
    QObject::connect(&session.poll, &PollCycle::tickEnded, [&] {
        ++ticks;
        session.ChooseAddress(QString::number(ticks % meters + 1));
        if (ticks == meters)
            timer.start();
        if (ticks == total)
            loop.quit();
    });
    QObject::connect(&session, &MeterSession::onLineChanged, &loop, &QEventLoop::quit);
    QTimer::singleShot(total * 2000, &loop, &QEventLoop::quit); // a tick is well under two seconds
    loop.exec();
    const double elapsed = double(timer.nsecsElapsed()) / 1e6;
    session.Form_Unload();
    if (ticks != total || whole != total)
        return std::nullopt;
    return elapsed / rounds;
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QCoreApplication app(argc, argv);
    QList<int> sizes{1, 8, 32};
    if (argc > 1) {
        sizes.clear();
        for (int i = 1; i < argc; ++i)
            sizes.append(std::atoi(argv[i]));
    }
    // As bench_poll counts a tick's floor.
    const double floor = WireMs(PollPlan::TickWireBytes(), kBaud) + kTickRequests * (kTurnaroundMs + RegisterLink::kFrameGapMs);
    int status = 0;
    for (const int meters : sizes) {
        if (meters < 1 || meters > 247) {
            std::fprintf(stderr, "N must be 1 to 247, not %d\n", meters);
            return 2;
        }
        const int rounds = std::max(2, 24 / meters);
        const std::optional<double> round = MeanRoundMs(meters, rounds);
        if (!round) {
            std::fprintf(stderr, "N = %d: a tick failed or the line was lost\n", meters);
            status = 1;
            continue;
        }
        std::printf("N = %2d: round %.1f ms over %d rounds, N x tick floor %.1f ms, ratio %.3f (target <= 1.03)\n", meters,
                    *round, rounds, meters * floor, *round / (meters * floor));
    }
    return status;
}
