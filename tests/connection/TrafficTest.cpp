// The traffic monitor: the frames and counters the link reports for each way a transaction
// can go, the status texts while it retries, the ring's bound, and when values go stale.
#include "FakeLine.h"
#include "TestLists.h"
#include "RecordingPrompts.h"
#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "connection/ReadingFreshness.h"
#include "connection/TrafficLog.h"

#include <QTest>

using Outcome = FrameEvent::Outcome;
using Script = QList<FakeLine::Answer>;
using Counts = QList<qint64>; // requests, good, time-outs, CRC, address, exceptions, retries

namespace {

QString Name(Outcome outcome)
{
    static const QStringList names{"sent", "retry", "good", "crc", "address", "exception", "none", "garbled"};
    return names[int(outcome)];
}

Counts CountsOf(const TrafficCounters& c)
{
    return {c.requests, c.goodReplies, c.timeOuts, c.crcErrors, c.addressErrors, c.exceptions, c.retries};
}

} // namespace

class TrafficTest : public QObject {
    Q_OBJECT
private slots:
    void eachAttemptIsReported_data()
    {
        QTest::addColumn<Script>("script");
        QTest::addColumn<QString>("frames");
        QTest::addColumn<Counts>("counts");
        QTest::addColumn<QStringList>("texts");
        const QByteArray good = LinkOnFakeLine::BlockReply(20, 1);
        QByteArray badCrc = good;
        badCrc.back() = char(~badCrc.back());
        QStringList retrying;
        for (int attempt = 2; attempt <= RegisterLink::kAttempts; ++attempt)
            retrying << QStringLiteral("no reply, attempt %1 of 5").arg(attempt);

        QTest::newRow("good") << Script{Reply(good)} << "sent good" << Counts{1, 1, 0, 0, 0, 0, 0} << QStringList();
        QTest::newRow("CRC error, then good") << Script{Reply(badCrc), Reply(good)} << "sent crc retry good"
                                              << Counts{2, 1, 0, 1, 0, 0, 1} << QStringList{"CRC Error"};
        QTest::newRow("exception, then good")
            << Script{Reply(Sealed(Hex("0F8302"))), Reply(good)} << "sent exception retry good"
            << Counts{2, 1, 0, 0, 0, 1, 1} << QStringList{"Exception 2 (Illegal Data Address) from the meter"};
        QTest::newRow("silence, then good") << Script{FakeLine::Answer(), FakeLine::Answer(), Reply(good)}
                                            << "sent none retry none retry good" << Counts{3, 1, 2, 0, 0, 0, 2}
                                            << retrying.mid(0, 2);
        // Bytes that never make a frame are not a time-out, though the attempt waits as long.
        QTest::newRow("garbled, then good") << Script{Reply(Hex("FF00FF")), Reply(good)} << "sent garbled retry good"
                                            << Counts{2, 1, 0, 0, 0, 0, 1} << retrying.mid(0, 1);
        QTest::newRow("gives up") << Script(RegisterLink::kAttempts) << "sent none retry none retry none retry none retry none"
                                  << Counts{5, 0, 5, 0, 0, 0, 4} << retrying + QStringList{RegisterLink::GiveUpText()};
    }
    void eachAttemptIsReported()
    {
        QFETCH(Script, script);
        QFETCH(QString, frames);
        QFETCH(Counts, counts);
        QFETCH(QStringList, texts);
        LinkOnFakeLine f;
        FixedClock clock;
        TrafficLog log(clock);
        QObject::connect(&f.link, &RegisterLink::frame, &log, &TrafficLog::Add);
        f.line.script = script;
        f.read(0x1000, 20);

        const QList<TrafficLog::Entry> entries = log.EntriesFrom(0);
        QStringList names;
        for (qsizetype i = 0; i < entries.size(); ++i) {
            const FrameEvent& e = entries[i].frame;
            names << Name(e.outcome);
            const qsizetype attempt = i / 2;
            QCOMPARE(e.attempt, attempt + 1);
            if (i % 2 == 0) { // a request as it went out, when it went out
                QCOMPARE(e.direction, FrameEvent::Direction::Request);
                QCOMPARE(e.bytes, f.line.sent[attempt].frame);
                QCOMPARE(e.at, f.line.sent[attempt].at);
            } else {
                QCOMPARE(e.direction, FrameEvent::Direction::Reply);
                QCOMPARE(e.bytes, script[attempt].isEmpty() ? QByteArray() : script[attempt][0].bytes);
                QCOMPARE(e.exceptionCode, quint8(e.outcome == Outcome::Exception ? 2 : 0));
            }
        }
        QCOMPARE(names.join(' '), frames);
        QCOMPARE(CountsOf(log.Counters()), counts);
        QCOMPARE(f.texts, texts);
        if (counts[1] == 1) {
            // request and reply on the wire at 19200 baud, 10 bits a character, 3 ms turnaround
            const double expected = (8 + 45) * 10'000.0 / 19200 + 3;
            QVERIFY2(qAbs(log.Counters().lastResponseMs - expected) < 0.01, qPrintable(QString::number(log.Counters().lastResponseMs)));
            QCOMPARE(log.Counters().meanResponseMs, log.Counters().lastResponseMs);
        }
    }

    void theRingKeepsTheNewestFrames()
    {
        FixedClock clock;
        TrafficLog log(clock);
        const qsizetype extra = 7;
        for (qsizetype i = 0; i < TrafficLog::kCapacity + extra; ++i)
            log.Add({std::chrono::milliseconds(i), FrameEvent::Direction::Request, Outcome::Sent, QByteArray(8, 'x'), 1, 0, {}});
        QCOMPARE(log.Size(), TrafficLog::kCapacity);
        const QList<TrafficLog::Entry> all = log.EntriesFrom(0);
        QCOMPARE(all.size(), TrafficLog::kCapacity);
        QCOMPARE(all.first().serial, quint64(extra));
        QCOMPARE(all.last().frame.at, std::chrono::milliseconds(TrafficLog::kCapacity + extra - 1));
        QCOMPARE(log.EntriesFrom(quint64(TrafficLog::kCapacity + extra - 3)).size(), 3);
        QCOMPARE(log.Counters().requests, TrafficLog::kCapacity + extra); // counters count everything

        log.Clear();
        QCOMPARE(log.Size(), 0);
        QCOMPARE(log.Counters().requests, 0);
    }

    void ticksPerMinuteCountTheLastMinute()
    {
        FixedClock clock;
        TrafficLog log(clock);
        MeterReading tick;
        for (int seconds : {0, 30, 59})
            log.NoteTick((tick.takenAt = clock.now.addSecs(seconds), tick));
        QCOMPARE(log.Counters().ticksPerMinute, 3);
        tick.takenAt = clock.now.addSecs(60); // the tick at 0 s is a minute old now
        log.NoteTick(tick);
        QCOMPARE(log.Counters().ticksPerMinute, 3);
    }

    // Values are fresh while on line and the latest tick read every block; otherwise the
    // screen shows the last good reading's and says when it was taken.
    void valuesGoStaleOffLineOrAfterAFailedTick()
    {
        RecordingPrompts prompts;
        FixedClock clock;
        Connection connection(prompts);
        PollCycle poll(connection, clock);
        ReadingFreshness freshness(connection, poll);
        MeterReading reading;
        reading.takenAt = QDateTime(QDate(2026, 11, 16), QTime(13, 5, 7));
        const auto tick = [&](unsigned fresh, int secondsLater) {
            reading.fresh = fresh;
            reading.takenAt = reading.takenAt.addSecs(secondsLater);
            emit poll.tickEnded(reading);
        };
        const QString note = QStringLiteral("Last good reading 13:05:07");

        QVERIFY(!freshness.Stale()); // nothing shown yet
        emit connection.onLineChanged(true, {});
        tick(0x1F, 0);
        QVERIFY(!freshness.Stale());
        QCOMPARE(freshness.Note(), QString());
        tick(0x03, 1); // the energy block failed
        QVERIFY(freshness.Stale());
        QCOMPARE(freshness.Note(), note);
        tick(0x1F, 1);
        QVERIFY(!freshness.Stale());
        emit connection.onLineChanged(false, RegisterLink::GiveUpText());
        QCOMPARE(freshness.Note(), QStringLiteral("Last good reading 13:05:09"));
        emit connection.onLineChanged(true, {}); // another meter may answer now: stale until read
        QVERIFY(freshness.Stale());
        tick(0x1F, 5);
        QVERIFY(!freshness.Stale());
    }
};

QTEST_GUILESS_MAIN(TrafficTest)
#include "TrafficTest.moc"
