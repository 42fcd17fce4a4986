// The trend series over a simulated day of polling: 430,000 readings (five a second for 24 h)
// fed straight into TrendSeries. Prints the points kept, the memory they take (counted and as
// the process's resident growth) and the time per append, and checks that the day's one spike
// and one dip survive the decimation.
//   bench_trend_memory [READINGS]
#include "BenchSupport.h"
#include "measure/TrendSeries.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cmath>
#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const qint64 readings = argc > 1 ? QByteArray(argv[1]).toLongLong() : 430000;
    constexpr qint64 kTickMs = 200;
    const qint64 spikeAt = readings / 3;
    const qint64 dipAt = 2 * readings / 3;

    TrendSeries series;
    MeterReading reading;
    const QDateTime start = QDateTime::currentDateTime();
    const long residentBefore = ResidentKiB();
    qint64 appendNs = 0;
    QElapsedTimer timer;
    for (qint64 i = 0; i < readings; ++i) {
        const double wave = std::sin(double(i) / 5000.0);
        reading.takenAt = start.addMSecs(i * kTickMs);
        reading.phaseVoltage = {230 + 3 * wave, 231 + 3 * wave, 229 + 3 * wave, 230};
        reading.current = {10 + wave, 11 + wave, 9 + wave, 10};
        reading.activePower = {2.1 + wave, 2.2, 2.0, 6.3};
        reading.frequency = 50 + 0.05 * wave;
        if (i == spikeAt)
            reading.phaseVoltage[0] = 400;
        if (i == dipAt)
            reading.frequency = 45;
        timer.start();
        series.Append(reading);
        appendNs += timer.nsecsElapsed();
    }
    const long residentAfter = ResidentKiB();

    float highest = 0;
    float lowest = 1000;
    for (qsizetype i = 0; i < series.Size(); ++i) {
        highest = std::max(highest, series.At(i).max[TrendSeries::VoltageL1]);
        lowest = std::min(lowest, series.At(i).min[TrendSeries::Frequency]);
    }
    std::printf("readings appended        %lld\n", static_cast<long long>(series.TicksSeen()));
    std::printf("points kept              %lld (bound %d)\n", static_cast<long long>(series.Size()),
                TrendSeries::kRecentCapacity + TrendSeries::kOlderCapacity);
    std::printf("ticks per older bucket   %lld\n", static_cast<long long>(series.OlderBucketTicks()));
    std::printf("bytes per point          %zu\n", sizeof(TrendSeries::Bucket));
    std::printf("bytes held by the points %lld\n",
                static_cast<long long>(series.Size()) * static_cast<long long>(sizeof(TrendSeries::Bucket)));
    std::printf("resident growth          %ld KiB\n", residentAfter - residentBefore);
    std::printf("time per append          %.3f us\n", double(appendNs) / double(readings) / 1000.0);
    std::printf("V L1 spike kept          %s (max %.1f)\n", highest == 400 ? "yes" : "NO", highest);
    std::printf("frequency dip kept       %s (min %.2f)\n", lowest == 45 ? "yes" : "NO", lowest);
    return highest == 400 && lowest == 45 ? 0 : 1;
}
