#pragma once

#include "link/FrameEvent.h"

#include <QDateTime>
#include <QList>
#include <QLoggingCategory>
#include <QObject>
#include <QString>

#include <deque>
#include <vector>

class Clock;
struct MeterReading;

// Frames on the line, for engineers; off by default: QT_LOGGING_RULES="qx5820.frames.debug=true".
Q_DECLARE_LOGGING_CATEGORY(lcFrames)

// What the traffic monitor counts since the tool started or was last cleared.
struct TrafficCounters {
    qint64 requests = 0;     // requests sent, retries included
    qint64 goodReplies = 0;
    qint64 timeOuts = 0;     // attempts that ran out their two seconds with nothing from the meter
    qint64 garbled = 0;      // attempts that ran out their two seconds with bytes but no valid frame
    qint64 crcErrors = 0;
    qint64 addressErrors = 0;
    qint64 exceptions = 0;
    qint64 retries = 0;      // requests of attempts 2 to 5
    double lastResponseMs = 0; // of the latest good reply, from its request's send; none while goodReplies is 0
    double meanResponseMs = 0; // over every good reply counted
    int ticksPerMinute = 0;  // poll ticks that started in the minute before the latest one
};

// The recent frames on the line and the counters over them. The frames are kept in a ring of
// kCapacity entries: the oldest goes when a new one comes, so a tool left on line for days
// holds no more than a few megabytes (see bench/TrafficLogBench.cpp). Each entry has a serial
// number, so that a view can take only what is new since it last looked.
class TrafficLog : public QObject {
    Q_OBJECT
public:
    static constexpr qsizetype kCapacity = 5000;

    struct Entry {
        quint64 serial = 0;
        QDateTime wallTime; // on the PC's clock, for the operator
        FrameEvent frame;
    };

    explicit TrafficLog(const Clock& clock, QObject* parent = nullptr);

    void Add(const FrameEvent& frame);
    // A poll tick ended; `reading.takenAt` is when it started.
    void NoteTick(const MeterReading& reading);
    // Forgets the frames and zeroes the counters.
    void Clear();

    const TrafficCounters& Counters() const { return m_counters; }
    // The entries still held whose serial is `serial` or later, oldest first.
    QList<Entry> EntriesFrom(quint64 serial) const;
    // The serial the next entry will get.
    quint64 NextSerial() const { return m_nextSerial; }
    qsizetype Size() const { return qsizetype(m_ring.size()); }

    // One line of the monitor: "13:05:07.123  TX  retry, attempt 2 of 5   0F 03 10 00 00 0A C0 23".
    static QString Line(const Entry& entry);
    static QString OutcomeText(const FrameEvent& frame);

signals:
    void added();

private:
    void Count(const FrameEvent& frame);

    const Clock& m_clock;
    std::vector<Entry> m_ring; // grows to kCapacity, then m_oldest moves round it
    std::size_t m_oldest = 0;
    quint64 m_nextSerial = 0;
    TrafficCounters m_counters;
    double m_responseSumMs = 0;
    std::deque<QDateTime> m_tickStarts; // within the last minute
};
