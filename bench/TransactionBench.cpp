// One register transaction against the simulated meter paced like a real line at 19200 8N1:
// its time as a ratio to its wire time plus the 12 ms gap, the silence the tool keeps before
// each request as the meter sees it, and the CPU the tool uses while it waits on a meter that
// does not answer.
#include "BenchSupport.h"
#include "MeterOnLine.h"
#include "link/RtuFrames.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    SessionOnLine on;
    if (!on.begin(true)) {
        std::fprintf(stderr, "cannot go on line to the simulated meter\n");
        return 1;
    }
    RegisterLink& link = on.link();
    const int turnaround = 3;
    on.meter->setTurnaround(turnaround);

    constexpr int kRounds = 50;
    constexpr quint16 kCount = 100;
    on.meter->clearRequestLog();
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < kRounds; ++i) {
        link.ResetRxData();
        link.bCommOK = kTrue;
        link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, kCount);
        if (link.bCommOK == kFalse) {
            std::fprintf(stderr, "read failed\n");
            return 1;
        }
    }
    const double perTransaction = double(clock.nsecsElapsed()) / 1e6 / kRounds;
    const double wire = WireMs(8 + Rtu::ReadReplyLength(kCount), 19200);
    std::printf("read of %d registers at 19200 8N1, %d rounds\n", kCount, kRounds);
    std::printf("  per transaction        %8.2f ms\n", perTransaction);
    std::printf("  wire time + 12 ms gap  %8.2f ms  ratio %.3f\n", wire + 12, perTransaction / (wire + 12));
    std::printf("  ... + %d ms turnaround  %8.2f ms  ratio %.3f\n", turnaround, wire + 12 + turnaround,
                perTransaction / (wire + 12 + turnaround));
    const QList<sim::LoggedRequest> log = on.meter->requestLog();
    double silence = 0;
    int gaps = 0;
    for (qsizetype i = 1; i < log.size(); ++i) {
        if (log[i - 1].replyFinishedAt) {
            silence += std::chrono::duration<double, std::milli>(log[i].receivedAt - *log[i - 1].replyFinishedAt).count();
            ++gaps;
        }
    }
    std::printf("  silence before a request, as the meter sees it: mean %.3f ms over %d (%d ms asked)\n",
                silence / gaps, gaps, RegisterLink::kFrameGapMs);

    // A meter that stays silent: five attempts of about two seconds each, all spent waiting.
    on.meter->injectFault(sim::Fault::noReply(), RegisterLink::kAttempts);
    const double cpuBefore = CpuSeconds();
    clock.restart();
    link.ResetRxData();
    link.bCommOK = kTrue;
    link.ReadRegisters(link.ModbusAddress, Rtu::kReadHolding, 0x1000, kCount);
    const double wall = double(clock.nsecsElapsed()) / 1e9;
    const double cpu = CpuSeconds() - cpuBefore;
    std::printf("silent meter: %.2f s waited, %.4f CPU s, %.5f CPU s per wall s\n", wall, cpu, cpu / wall);
    return 0;
}
