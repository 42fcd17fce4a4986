// A long load-profile download against the simulated meter paced like a real line at 19200
// 8N1, address 15, its groups holding a long history: group 1 with 12 channels, group 2 with
// 8. For each group, a range of N intervals from the first:
//   - the wall time and the intervals per second;
//   - the floor: per step the write of the interval number (11 bytes) and its reply (8), the
//     read of at most four records (8) and its reply (5 + 2 per register), at 10 bits per
//     character, and two 12 ms gaps; the ratio of the floor to the time taken;
//   - where a step's time goes, from the meter's log of the requests;
//   - the process's CPU time and its peak and final resident memory over the download;
//   - the number of data rows in the CSV file, which must be N.
// Usage: bench_download [N] [TURNAROUND_MS] [STEP_TIMER_MS]
//   N intervals (default 10000), the meter's turnaround (default 3 ms), and the download
//   timer's interval (default: the tool's own, LpDownload::kStepIntervalMs).
#include "BenchSupport.h"
#include "DownloadFixture.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <numeric>
#include <optional>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int kBaud = 19200;
constexpr int kHistory = 12000;
constexpr std::array<int, 2> kChannels{12, 8};

constexpr int kWriteRequestBytes = 11;
constexpr int kWriteReplyBytes = 8;
constexpr int kReadRequestBytes = 8;

double ThreadCpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

int ReadReplyBytes(int records, int channels)
{
    return 5 + 2 * records * (3 + 2 * channels);
}

// The floor of a download of `intervals` from the first: its steps' bytes on the wire and
// their gaps. `turnaroundMs` adds the meter's turnaround before each of the two replies.
double FloorMs(int intervals, int channels, int turnaroundMs = 0)
{
    double total = 0;
    for (int left = intervals; left > 0; left -= LpDownload::kRecordsPerStep) {
        const int records = std::min(left, LpDownload::kRecordsPerStep);
        const int bytes = kWriteRequestBytes + kWriteReplyBytes + kReadRequestBytes + ReadReplyBytes(records, channels);
        total += WireMs(bytes, kBaud) + 2 * (RegisterLink::kFrameGapMs + turnaroundMs);
    }
    return total;
}

double Ms(sim::SteadyTime from, sim::SteadyTime to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

// Where a step's time went, from the meter's log of requests: its time on each request (from
// the first byte of the request to the last of the reply, the request's own wire time
// included) and the silence before each request. The log keeps only the latest requests, so
// it is drained as the download goes.
class StepTimes {
public:
    void add(const QList<sim::LoggedRequest>& entries)
    {
        for (const sim::LoggedRequest& request : entries) {
            if (m_previous && m_previous->replyFinishedAt) {
                const double gap = Ms(*m_previous->replyFinishedAt, request.receivedAt);
                (IsWrite(*m_previous) ? m_beforeRead : m_beforeWrite).append(gap);
            }
            if (request.replyFinishedAt)
                (IsWrite(request) ? m_onWrite : m_onRead).append(Ms(request.receivedAt, *request.replyFinishedAt));
            m_previous = request;
        }
    }

    void print(int channels)
    {
        if (m_onWrite.isEmpty() || m_onRead.isEmpty() || m_beforeRead.isEmpty() || m_beforeWrite.isEmpty())
            return;
        const double writeWire = WireMs(kWriteRequestBytes + kWriteReplyBytes, kBaud);
        const double readWire = WireMs(kReadRequestBytes + ReadReplyBytes(LpDownload::kRecordsPerStep, channels), kBaud);
        std::printf("  per step, from the meter's log (%lld writes, %lld reads); mean, median, 90th percentile, max:\n",
                    static_cast<long long>(m_onWrite.size()), static_cast<long long>(m_onRead.size()));
        Line("meter on the write", m_onWrite, QStringLiteral("wire %1 ms").arg(writeWire, 0, 'f', 2));
        Line("silence before the read", m_beforeRead, QStringLiteral("%1 ms asked").arg(RegisterLink::kFrameGapMs));
        Line("meter on the read", m_onRead, QStringLiteral("wire %1 ms, four records").arg(readWire, 0, 'f', 2));
        Line("silence before the write", m_beforeWrite, QStringLiteral("%1 ms asked").arg(RegisterLink::kFrameGapMs));
        const auto late = std::count_if(m_beforeWrite.cbegin(), m_beforeWrite.cend(), [](double gap) { return gap > 13.0; });
        std::printf("    silences before a write longer than 13 ms: %lld of %lld\n", static_cast<long long>(late),
                    static_cast<long long>(m_beforeWrite.size()));
    }

private:
    static bool IsWrite(const sim::LoggedRequest& request)
    {
        return request.frame.size() > 1 && quint8(request.frame[1]) == 0x10;
    }
    static void Line(const char* what, QList<double> values, const QString& note)
    {
        std::sort(values.begin(), values.end());
        const double mean = std::accumulate(values.cbegin(), values.cend(), 0.0) / double(values.size());
        const auto at = [&](double q) { return values[qsizetype(q * double(values.size() - 1))]; };
        std::printf("    %-26s %7.2f %7.2f %7.2f %7.2f ms  (%s)\n", what, mean, at(0.5), at(0.9), values.last(),
                    qPrintable(note));
    }

    std::optional<sim::LoggedRequest> m_previous;
    QList<double> m_onWrite, m_onRead, m_beforeRead, m_beforeWrite;
};

struct Figures {
    bool finished = false;
    double wallMs = 0;
};

// Downloads intervals 1..n of `group` (1 or 2) and waits until the download ends.
Figures Download(BenchSession& on, int group, int n, StepTimes& steps)
{
    Figures figures;
    QElapsedTimer clock;
    QEventLoop loop;
    const QMetaObject::Connection ended = QObject::connect(
        &on.download(), &LpDownload::faceChanged, &loop, [&](LpDownload::Face face, const QString&) {
            if (face == LpDownload::Face::Reading)
                return;
            figures.wallMs = double(clock.nsecsElapsed()) / 1e6;
            loop.quit();
        });
    // Every five seconds: the meter's log drained into the step times, and a download that
    // stopped without a word ends the loop.
    QTimer guard;
    QObject::connect(&guard, &QTimer::timeout, &loop, [&] {
        steps.add(on.meter.takeRequestLog());
        if (on.download().bLpDownloadActive == kFalse || !on.download().Timer_RS_Lpf.isActive())
            loop.quit();
    });
    on.choose(group, 1, n);
    clock.start();
    on.Start();
    if (on.download().bLpDownloadActive != kFalse) {
        guard.start(5000);
        loop.exec();
    }
    QObject::disconnect(ended);
    steps.add(on.meter.takeRequestLog());
    on.session->connection.Timer1Sec.stop(); // the poll the download's end started again
    figures.finished = on.download().bLpDownloadActive == kFalse && figures.wallMs > 0;
    return figures;
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QCoreApplication app(argc, argv);
    const int n = argc > 1 ? std::atoi(argv[1]) : 10000;
    const int turnaround = argc > 2 ? std::atoi(argv[2]) : 3;
    const int stepTimer = argc > 3 ? std::atoi(argv[3]) : LpDownload::kStepIntervalMs;
    const int history = std::clamp(std::max(kHistory, n), 1, 0xFFFF);
    if (n < 1 || turnaround < 0 || stepTimer < 0) {
        std::fprintf(stderr, "usage: bench_download [N] [TURNAROUND_MS] [STEP_TIMER_MS]\n");
        return 2;
    }

    sim::MeterModel model(7, QDateTime::currentDateTimeUtc());
    for (int g = 0; g < 2; ++g) {
        model.setHolding(sim::kProfileGroups[std::size_t(g)].channels, quint16(kChannels[std::size_t(g)]));
        model.startWithHistory(g, history);
    }
    sim::SimulatedMeterHost meter(std::move(model));
    meter.setPacing(true);
    meter.setTurnaround(turnaround);

    QTemporaryDir folder;
    if (!folder.isValid()) {
        std::fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    BenchSession on(meter, folder.path());
    if (!on.begin()) {
        std::fprintf(stderr, "cannot go on line to the simulated meter\n");
        return 1;
    }
    on.download().Timer_RS_Lpf.setInterval(stepTimer);
    const MeterReading& reading = on.session->poll.Reading();
    std::printf("load-profile download, 19200 8N1, address 15, pacing on, turnaround %d ms, step timer %d ms, "
                "%d intervals of a history of %d\n",
                turnaround, stepTimer, n, history);

    int status = 0;
    for (int g = 0; g < 2; ++g) {
        const int channels = kChannels[std::size_t(g)];
        if (reading.loadProfile[std::size_t(g)].channelCount != channels
            || reading.loadProfile[std::size_t(g)].validIntervals < n) {
            std::fprintf(stderr, "group %d: the reading shows %d channels, %d valid intervals\n", g + 1,
                         reading.loadProfile[std::size_t(g)].channelCount,
                         reading.loadProfile[std::size_t(g)].validIntervals);
            return 1;
        }
        meter.clearRequestLog();
        const bool peakReset = ResetPeakResident();
        const long rssBefore = StatusKiB("VmRSS:");
        const double cpu0 = CpuSeconds();
        const double thread0 = ThreadCpuSeconds();
        StepTimes steps;
        const Figures figures = Download(on, g + 1, n, steps);
        const double cpu = CpuSeconds() - cpu0;
        const double thread = ThreadCpuSeconds() - thread0;
        const long peak = StatusKiB("VmHWM:");
        const long rssAfter = StatusKiB("VmRSS:");

        const double floor = FloorMs(n, channels);
        const double floorTurnaround = FloorMs(n, channels, turnaround);
        const qint64 rows = CountDataRows(on.download().LpFilePath);
        std::printf("group %d, %d channels: %s\n", g + 1, channels, figures.finished ? "finished" : "DID NOT FINISH");
        std::printf("  intervals        %d in %d steps\n", n, (n + LpDownload::kRecordsPerStep - 1) / LpDownload::kRecordsPerStep);
        std::printf("  wall time        %.3f s\n", figures.wallMs / 1000);
        std::printf("  intervals/s      %.2f\n", 1000.0 * n / figures.wallMs);
        std::printf("  floor            %.3f s (%.2f intervals/s); ratio floor/wall %.4f\n", floor / 1000,
                    1000.0 * n / floor, floor / figures.wallMs);
        std::printf("  floor + %d ms turnaround before each reply %.3f s; ratio %.4f\n", turnaround,
                    floorTurnaround / 1000, floorTurnaround / figures.wallMs);
        std::printf("  CPU              process %.3f s (%.2f %% of a core; the simulated meter included), "
                    "tool's thread %.3f s (%.2f %%)\n",
                    cpu, 100 * cpu / (figures.wallMs / 1000), thread, 100 * thread / (figures.wallMs / 1000));
        std::printf("  resident memory  before %ld KiB, peak %ld KiB%s, after %ld KiB\n", rssBefore, peak,
                    peakReset ? "" : " (peak of the whole process: it could not be reset)", rssAfter);
        std::printf("  CSV data rows    %lld (%s)\n", static_cast<long long>(rows), rows == qint64(n) ? "as many as intervals" : "WRONG");
        steps.print(channels);
        if (!figures.finished || rows != qint64(n))
            status = 1;
    }
    return status;
}
