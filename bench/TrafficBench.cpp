// What the traffic monitor holds once its ring is full, and that it holds no more after many
// times as many frames: the log alone, then with the Traffic tab showing it.
// bench_traffic [ROUNDS] fills the ring ROUNDS times (default 10) with the poll plan's frames.
#include "BenchSupport.h"
#include "connection/TrafficLog.h"
#include "link/RtuFrames.h"
#include "measure/PollPlan.h"
#include "ports/Clock.h"
#include "ui/TrafficView.h"

#include <QApplication>
#include <QElapsedTimer>

#include <cstdio>

namespace {

// One round of the ring: the nine blocks' requests and full-length replies in turn.
void FillRing(TrafficLog& log)
{
    for (qsizetype i = 0; i < TrafficLog::kCapacity; ++i) {
        const PollBlock& block = PollPlan::kBlocks[std::size_t(i / 2) % PollPlan::kBlocks.size()];
        const bool request = i % 2 == 0;
        const qsizetype length = request ? 8 : Rtu::ReadReplyLength(block.count);
        log.Add({std::chrono::milliseconds(i), request ? FrameEvent::Direction::Request : FrameEvent::Direction::Reply,
                 request ? FrameEvent::Outcome::Sent : FrameEvent::Outcome::Good, QByteArray(length, char(i)), 1, 0,
                 std::chrono::milliseconds(40)});
    }
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 10;
    SystemClock clock;
    TrafficLog log(clock);
    TrafficView view;
    view.resize(1280, 600);
    view.show();

    const long start = ResidentKiB();
    FillRing(log);
    const long logOnce = ResidentKiB();
    for (int round = 1; round < rounds; ++round)
        FillRing(log);
    const long logAfter = ResidentKiB();
    std::printf("ring of %lld frames (poll-plan mix, mean %.0f bytes)\n", qlonglong(TrafficLog::kCapacity),
                double(PollPlan::TickWireBytes()) / double(2 * PollPlan::kBlocks.size()));
    std::printf("log: +%ld KiB after one ring, +%ld KiB after %d rings (%lld frames)\n", logOnce - start,
                logAfter - start, rounds, qlonglong(rounds) * TrafficLog::kCapacity);

    view.Attach(log);
    QElapsedTimer timer;
    timer.start();
    for (int round = 0; round < rounds; ++round) {
        FillRing(log);
        view.Refresh();
        if (round == 0)
            std::printf("view: one ring shown in %lld ms, +%ld KiB\n", qlonglong(timer.elapsed()), ResidentKiB() - logAfter);
    }
    std::printf("view: +%ld KiB after %d more rings shown\n", ResidentKiB() - logAfter, rounds);
    return 0;
}
