// Load-profile downloads broken again and again and continued, against the simulated meter
// with its clock standing still and the line's pacing off. Each run, a fresh session
// downloads a random range of 20 to 60 intervals of group 1 while faults strike at random
// requests:
//   - a bad CRC on all five attempts of a transaction;
//   - a reply from another address on all five attempts;
//   - the port vanishing while a transaction waits (the meter's pseudo-terminal closed);
//   - in about one run of a hundred, silence through all five attempts (ten seconds).
// In one run of five the run's folder is a small disk (a tmpfs of 4 to 16 KiB, mounted when
// run as root) that fills up mid-download; the download stops, the disk is given room and the
// download continued. In one run of ten a link to a file outside "LP Data" is planted under the
// name of the day's file first: the download must refuse it and leave that file as it was,
// then start once the link is gone. Files outside "LP Data" touched are counted.
// After each, the session goes on line again and the operator answers "Yes" to continuing,
// until the download ends. The file's data rows are then held against the meter's records
// of the range: intervals lost, intervals written more than once, rows that match no record.
// Usage: stress_download_faults [RUNS] [SEED]   (default 1000 runs, seed 1)
// Exits with 1 when an interval was lost or duplicated, a row was wrong, or a run never ended.
#include "BenchSupport.h"
#include "DownloadFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <sys/mount.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>

using sim::Fault;

namespace {

constexpr int kGroup = 1;
constexpr int kChannels = 8;        // group 1 of the simulated meter as it powers on
constexpr int kValidAtPowerOn = 1440;
constexpr int kMaxInterruptions = 3; // planned per run
constexpr int kResumeLimit = 20;    // continuations before a run counts as stuck
constexpr int kStepWaitMs = 60000;  // a stretch of download without a word

enum Kind { BadCrc, WrongAddress, PortVanished, Silence, BusyLine, kKinds };
constexpr std::array<const char*, kKinds> kKindNames{"bad CRC x5", "wrong address x5", "port vanished",
                                                     "silence x5", "busy line"};
// A meter that answers one request in this many 2.05 s late, and every request in order: the
// download goes on through it with retries, without a stop.
constexpr int kSlowEvery = 12;

struct Totals {
    qint64 runs = 0;
    qint64 intervals = 0;
    qint64 lost = 0;
    qint64 duplicated = 0;
    qint64 wrong = 0;
    qint64 outOfOrderRuns = 0;
    qint64 stuckRuns = 0;
    qint64 questions = 0;
    qint64 unexplainedStops = 0; // the download stopped with no fault of ours behind it
    qint64 slowRuns = 0;
    qint64 smallDisks = 0;
    qint64 diskFullStops = 0;
    qint64 linksPlanted = 0;
    qint64 linksRefused = 0;
    qint64 outsideTouched = 0; // files outside "LP Data" changed or made
    std::array<qint64, kKinds> injected{};
    std::array<qint64, kKinds> struck{}; // the download was found stopped afterwards
};

// A tmpfs of a few KiB mounted on a run's folder, so that its disk fills up for real.
class SmallDisk {
public:
    SmallDisk(const QString& folder, int kib) : m_folder(QFile::encodeName(folder))
    {
        m_mounted = ::mount("tmpfs", m_folder.constData(), "tmpfs", 0, ("size=" + QByteArray::number(kib) + "k").constData()) == 0;
    }
    ~SmallDisk()
    {
        if (m_mounted)
            ::umount2(m_folder.constData(), MNT_DETACH);
    }
    bool Mounted() const { return m_mounted; }
    // Room for the rest of the download, as an operator makes room on a full disk.
    void Grow() { ::mount("tmpfs", m_folder.constData(), "tmpfs", MS_REMOUNT, "size=1m"); }

private:
    QByteArray m_folder;
    bool m_mounted = false;
};

QByteArray Contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A link under the name of the day's file, to a file beside "LP Data": the download must refuse
// it. True when it did; the link is gone afterwards.
bool RefusesAPlantedLink(BenchSession& on, const QString& folder, const QString& outside)
{
    const QString data = QDir(folder).filePath(QStringLiteral("LP Data"));
    QDir().mkpath(data);
    const QString name = LpCsvFile::FileName(on.session->poll.Reading().identification, on.clock.Now().date(), kGroup - 1);
    const QString link = QDir(data).filePath(name);
    if (!QFile::link(outside, link))
        return false;
    const bool refused = on.Start() == LpStart::FileError;
    QFile::remove(link);
    return refused;
}

// One run. Returns false when it never ended.
bool Run(sim::SimulatedMeterHost& meter, const QString& folder, QRandomGenerator& random, Totals& totals)
{
    const bool small = random.bounded(5) == 0;
    const int kib = 4 * (1 + int(random.bounded(4)));
    std::optional<SmallDisk> disk = small ? std::optional<SmallDisk>(std::in_place, folder, kib) : std::nullopt;
    if (disk && disk->Mounted())
        ++totals.smallDisks;
    // Beside "LP Data", in the run's folder: what a planted link points at.
    const QString outside = QDir(folder).filePath(QStringLiteral("someone else's file"));
    const QByteArray outsideText("not the download's\n");
    if (QFile out(outside); out.open(QIODevice::WriteOnly))
        out.write(outsideText);
    BenchSession on(meter, folder, kGroup);
    if (!on.begin()) {
        std::fprintf(stderr, "cannot go on line to the simulated meter\n");
        return false;
    }
    const int length = 20 + int(random.bounded(41));
    const int first = 1 + int(random.bounded(quint32(kValidAtPowerOn - length + 1)));
    const int last = first + length - 1;
    on.choose(kGroup, first, last);
    LpDownload& download = on.download();

    // The faults of this run: one to three, the last one silence in about one run of 100, a busy
    // line in another one of 50 (each costs five attempts' waits). One run in 25 has a slow meter.
    const int planned = 1 + int(random.bounded(quint32(kMaxInterruptions)));
    const bool silence = random.bounded(100) == 0;
    const bool busy = !silence && random.bounded(50) == 0;
    const bool slow = random.bounded(25) == 0;
    totals.slowRuns += slow;
    meter.setSlowReplies(slow ? kSlowEvery : 0);
    int done = 0;

    // A fault strikes at a random request of those the download still has to send.
    RegisterLink& link = on.session->connection.link;
    on.session->ShowFrames(true);
    int requests = 0;
    int faultAt = 0;
    Kind kind = BadCrc;
    QObject::connect(&link, &RegisterLink::requestEcho, &link, [&] {
        if (++requests != faultAt)
            return;
        ++totals.injected[kind];
        switch (kind) {
        case BadCrc: meter.injectFault(Fault::badCrc(), RegisterLink::kAttempts); break;
        case WrongAddress: meter.injectFault(Fault::wrongAddress(), RegisterLink::kAttempts); break;
        case Silence: meter.injectFault(Fault::noReply(), RegisterLink::kAttempts); break;
        case PortVanished: QTimer::singleShot(0, &link, [&meter] { meter.stop(); }); break;
        case BusyLine: meter.setNoise(1, 0); break; // until the tool has gone off line
        case kKinds: break;
        }
    });
    const auto arm = [&] {
        requests = 0;
        faultAt = 0;
        if (done >= planned)
            return;
        const int next = download.bLpDownloadActive != kFalse ? download.LpCurrentIndex + 1 : first;
        const int stepsLeft = (last - next + LpDownload::kRecordsPerStep) / LpDownload::kRecordsPerStep;
        if (stepsLeft < 1)
            return;
        const bool lastFault = done == planned - 1;
        kind = silence && lastFault ? Silence : busy && lastFault ? BusyLine : Kind(random.bounded(3));
        faultAt = 1 + int(random.bounded(quint32(2 * stepsLeft))); // a write and a read a step
        ++done;
    };

    // A full disk stops a step (finished) or the start of a block (its header did not fit).
    const auto diskFull = [&] {
        ++totals.diskFullStops;
        if (disk)
            disk->Grow();
    };
    QObject::connect(on.session.get(), &MeterSession::onLineChanged, &download, [&meter](bool onLine) {
        if (!onLine)
            meter.setNoise(0, 0);
    });
    QObject::connect(&download, &LpDownload::finished, &download, [&](LpEnd end) {
        if (end == LpEnd::FileError)
            diskFull();
    });
    const auto start = [&] {
        if (on.Start() != LpStart::FileError)
            return;
        diskFull();
        on.Start();
    };
    if (random.bounded(10) == 0) {
        ++totals.linksPlanted;
        totals.linksRefused += RefusesAPlantedLink(on, folder, outside);
    }

    arm();
    start();
    bool ended = false;
    for (int resumed = 0; resumed <= kResumeLimit; ++resumed) {
        if (!RunUntil([&] { return !download.Timer_RS_Lpf.isActive(); }, kStepWaitMs))
            break;
        if (download.bLpDownloadActive == kFalse) {
            ended = true;
            break;
        }
        if (faultAt > 0 && requests >= faultAt)
            ++totals.struck[kind];
        else
            ++totals.unexplainedStops;
        // Going on line again starts the simulated meter again if its port vanished.
        if (!on.onLine())
            on.session->ToggleOnLine(QStringLiteral("15"));
        on.session->connection.Timer1Sec.stop();
        if (!on.onLine())
            continue;
        arm();
        start();
    }
    faultAt = 0;
    meter.setSlowReplies(0);
    const QStringList beside = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System);
    if (Contents(outside) != outsideText || beside.size() != 2) {
        ++totals.outsideTouched;
        std::fprintf(stderr, "run %lld: outside \"LP Data\": %s\n", static_cast<long long>(totals.runs + 1),
                     qPrintable(beside.join(QStringLiteral(", "))));
    }
    totals.questions += on.prompts.questions.size();
    ++totals.runs;
    totals.intervals += length;
    if (!ended) {
        ++totals.stuckRuns;
        std::fprintf(stderr, "run %lld: the download of %d..%d never ended (at interval %d, %s)\n",
                     static_cast<long long>(totals.runs), first, last, download.LpCurrentIndex + 1,
                     qPrintable(on.session->Status()));
        return false;
    }

    const QList<QByteArray> rows = DataRows(download.LpFilePath);
    const QList<QByteArray> expected = MeterRows(meter, kGroup - 1, kChannels, first, last);
    QHash<QByteArray, int> seen;
    for (const QByteArray& row : rows)
        ++seen[row];
    QHash<QByteArray, int> wanted;
    for (const QByteArray& row : expected)
        ++wanted[row];
    qint64 lost = 0, duplicated = 0, wrong = 0;
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        const int count = seen.value(it.key());
        if (count < it.value())
            lost += it.value() - count;
        else if (count > it.value())
            duplicated += count - it.value();
    }
    for (auto it = seen.cbegin(); it != seen.cend(); ++it) {
        if (!wanted.contains(it.key()))
            wrong += it.value();
    }
    totals.lost += lost;
    totals.duplicated += duplicated;
    totals.wrong += wrong;
    if (rows != expected)
        ++totals.outOfOrderRuns;
    if (lost || duplicated || wrong || rows != expected)
        std::fprintf(stderr, "run %lld: range %d..%d, %lld rows: %lld lost, %lld duplicated, %lld wrong\n",
                     static_cast<long long>(totals.runs), first, last, static_cast<long long>(rows.size()),
                     static_cast<long long>(lost), static_cast<long long>(duplicated), static_cast<long long>(wrong));
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::atoi(argv[1]) : 1000;
    const quint32 seed = argc > 2 ? quint32(std::strtoul(argv[2], nullptr, 10)) : 1u;
    if (runs < 1) {
        std::fprintf(stderr, "usage: stress_download_faults [RUNS] [SEED]\n");
        return 2;
    }
    QTemporaryDir folder;
    if (!folder.isValid()) {
        std::fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    const std::unique_ptr<sim::SimulatedMeterHost> meter = FrozenMeter(false);
    QRandomGenerator random(seed);
    Totals totals;
    QElapsedTimer clock;
    clock.start();
    const double cpu0 = CpuSeconds();
    const long rssStart = StatusKiB("VmRSS:");
    for (int run = 0; run < runs; ++run) {
        const QString runFolder = QDir(folder.path()).filePath(QString::number(run));
        QDir().mkpath(runFolder);
        meter->clearRequestLog(); // the simulator's own record, not the tool's memory
        Run(*meter, runFolder, random, totals);
        QDir(runFolder).removeRecursively(); // after the small disk is gone
        if ((run + 1) % 100 == 0)
            std::printf("  %d runs, %.0f s, lost %lld, duplicated %lld, wrong %lld, resident %ld KiB\n", run + 1,
                        clock.elapsed() / 1000.0, static_cast<long long>(totals.lost),
                        static_cast<long long>(totals.duplicated), static_cast<long long>(totals.wrong),
                        StatusKiB("VmRSS:"));
    }
    const double wall = clock.elapsed() / 1000.0;

    qint64 injected = 0;
    for (qint64 count : totals.injected)
        injected += count;
    std::printf("stress_download_faults: %lld runs, seed %u, pacing off, group 1 (%d channels), 20..60 intervals a run\n",
                static_cast<long long>(totals.runs), seed, kChannels);
    std::printf("  intervals asked         %lld\n", static_cast<long long>(totals.intervals));
    std::printf("  interruptions injected  %lld\n", static_cast<long long>(injected));
    for (int k = 0; k < kKinds; ++k)
        std::printf("    %-18s %6lld (the download found stopped after %lld)\n", kKindNames[std::size_t(k)],
                    static_cast<long long>(totals.injected[std::size_t(k)]),
                    static_cast<long long>(totals.struck[std::size_t(k)]));
    std::printf("  stops without a fault   %lld\n", static_cast<long long>(totals.unexplainedStops));
    std::printf("  runs with a slow meter  %lld (1 reply in %d late by 2.05 s, all in order)\n",
                static_cast<long long>(totals.slowRuns), kSlowEvery);
    std::printf("  small disks             %lld (stops on a full disk %lld)\n", static_cast<long long>(totals.smallDisks),
                static_cast<long long>(totals.diskFullStops));
    std::printf("  links planted           %lld (refused %lld)\n", static_cast<long long>(totals.linksPlanted),
                static_cast<long long>(totals.linksRefused));
    std::printf("  files outside touched   %lld\n", static_cast<long long>(totals.outsideTouched));
    std::printf("  continue questions      %lld\n", static_cast<long long>(totals.questions));
    std::printf("  lost intervals          %lld\n", static_cast<long long>(totals.lost));
    std::printf("  duplicated intervals    %lld\n", static_cast<long long>(totals.duplicated));
    std::printf("  wrong rows              %lld\n", static_cast<long long>(totals.wrong));
    std::printf("  runs out of order       %lld\n", static_cast<long long>(totals.outOfOrderRuns));
    std::printf("  runs that never ended   %lld\n", static_cast<long long>(totals.stuckRuns));
    std::printf("  wall time               %.1f s; CPU %.1f s; resident memory %ld KiB at the start, %ld KiB at the end\n",
                wall, CpuSeconds() - cpu0, rssStart, StatusKiB("VmRSS:"));
    const bool failed = totals.lost || totals.duplicated || totals.wrong || totals.outOfOrderRuns || totals.stuckRuns
        || totals.outsideTouched || totals.linksRefused != totals.linksPlanted;
    return failed ? 1 : 0;
}
