#pragma once

// What the download benchmarks share: a headless meter session presented on a map of texts,
// on line to a simulated meter the caller owns, a count of a CSV file's data rows, and a loop
// that runs until a condition holds. The rows compared come from tests/support/LpFileRows.h.

#include "LpFileRows.h"
#include "TestLists.h"
#include "MeterOnLine.h"
#include "RecordingPrompts.h"
#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <fstream>
#include <functional>
#include <memory>
#include <string>

// A whole meter session without a window, its download writing under `folder`.
struct BenchSession {
    BenchSession(sim::SimulatedMeterHost& meter, const QString& folder, int group = 1) : meter(meter), group(group)
    {
        session = std::make_unique<MeterSession>(SessionPorts{prompts, lists, clock});
        session->numberLists.ChooseGroup(group - 1);
        session->download.programFolder = folder;
        session->download.documentsFolder = QString();
    }
    ~BenchSession()
    {
        if (session)
            session->Form_Unload();
    }

    // On line at address 15, 19200 8N1, then one poll tick so that the reading knows the
    // identification and the groups' configuration. The poll timer stays stopped.
    bool begin()
    {
        if (!GoOnLineTo(meter, session->connection))
            return false;
        session->poll.Timer1Sec_Timer();
        session->connection.Timer1Sec.stop();
        return session->connection.bOnLine.isTrue();
    }

    void choose(int group, int start, int stop)
    {
        this->group = group;
        first = start;
        last = stop;
        session->numberLists.ChooseGroup(group - 1);
    }
    // "Read and Save" with the range chosen.
    LpStart Start() { return session->download.Start(group - 1, first, last); }

    LpDownload& download() { return session->download; }
    bool onLine() const { return session->connection.bOnLine.isTrue(); }

    sim::SimulatedMeterHost& meter;
    int group = 1;
    int first = 1;
    int last = 1;
    RecordingPrompts prompts;
    RecordingLists lists;
    FixedClock clock;
    std::unique_ptr<MeterSession> session;
};

// Runs the event loop until `done` holds, looking every `periodMs`; false after `timeoutMs`.
inline bool RunUntil(const std::function<bool()>& done, int timeoutMs, int periodMs = 2)
{
    if (done())
        return true;
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QTimer check;
    bool held = false;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        held = done();
        if (held || clock.elapsed() > timeoutMs)
            loop.quit();
    });
    check.start(periodMs);
    loop.exec();
    return held;
}

// How many data rows the file holds, read a line at a time.
inline qint64 CountDataRows(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    qint64 rows = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (!line.startsWith("Date") && !line.trimmed().isEmpty())
            ++rows;
    }
    return rows;
}

// A figure of /proc/self/status in KiB ("VmRSS:", "VmHWM:"); -1 when missing.
inline long StatusKiB(const char* key)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    long value = 0;
    while (status >> word) {
        if (word == key) {
            status >> value;
            return value;
        }
        status.ignore(1 << 12, '\n');
    }
    return -1;
}

// Starts the peak resident size (VmHWM) over from the present one.
inline bool ResetPeakResident()
{
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return bool(clear);
}
