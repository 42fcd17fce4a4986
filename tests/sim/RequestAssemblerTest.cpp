// How the meter cuts received bytes into request frames and drops garbage, and how much of
// what it understood it keeps in its request log.

#include "MeterLine.h"

#include "sim/RequestAssembler.h"

using namespace sim;

namespace {

const QByteArray kRead = WithCrc(Body(15, 3, {0x1000, 10}));
const QByteArray kWrite = WithCrc(Body(15, 16, {0x1034, 3}) + QByteArray::fromHex("06 0008 000f 0001"));
const QByteArray kUnknown = WithCrc(QByteArray::fromHex("0f2b0e0100"));

QList<QByteArray> framesOf(const QList<ReceivedFrame>& frames)
{
    QList<QByteArray> bytes;
    for (const ReceivedFrame& frame : frames)
        bytes.append(frame.bytes);
    return bytes;
}

} // namespace

class RequestAssemblerTest : public QObject {
    Q_OBJECT
private slots:
    void knownLengthsEndFramesWithoutWaitingForSilence()
    {
        RequestAssembler assembler;
        const SteadyTime t0 = SteadyClock::now();
        const SteadyTime t1 = t0 + std::chrono::milliseconds(1);
        QVERIFY(assembler.append(kRead.left(5), t0).isEmpty());
        const QList<ReceivedFrame> read = assembler.append(kRead.mid(5) + kWrite.left(7), t1);
        QCOMPARE(framesOf(read), QList<QByteArray>{kRead});
        QVERIFY(read.first().firstByteAt == t0 && read.first().lastByteAt == t1);
        QCOMPARE(framesOf(assembler.append(kWrite.mid(7) + kRead, t1)), (QList<QByteArray>{kWrite, kRead}));
        QVERIFY(!assembler.silence());
    }

    void garbageIsDroppedUntilSilence_data()
    {
        QTest::addColumn<QByteArray>("garbage");
        QTest::newRow("bad CRC") << kRead.chopped(1) + '\x00';
        QTest::newRow("bad CRC, unknown function") << kUnknown.chopped(1) + '\x00';
        QTest::newRow("unfinished frame") << kRead.left(6);
        QTest::newRow("overlong run") << QByteArray(300, '\x2b');
    }
    void garbageIsDroppedUntilSilence()
    {
        QFETCH(QByteArray, garbage);
        RequestAssembler assembler;
        const SteadyTime now = SteadyClock::now();
        // A good frame right behind garbage, with no silence between, is lost with it.
        QVERIFY(assembler.append(garbage, now).isEmpty() && assembler.append(kRead, now).isEmpty());
        QVERIFY(!assembler.silence());
        QCOMPARE(framesOf(assembler.append(kRead, now)), QList<QByteArray>{kRead});
    }

    // A meter left running for days keeps only the latest requests.
    void logKeepsTheLatestRequests()
    {
        RequestLog log;
        const SteadyTime now = SteadyClock::now();
        for (int i = 0; i < RequestLog::kKept + 10; ++i)
            log.append(QByteArray(8, char(i)), now);
        const QList<LoggedRequest> entries = log.take();
        QCOMPARE(entries.size(), RequestLog::kKept);
        QCOMPARE(entries.first().sequence, quint64(11));
        QVERIFY(log.entries().isEmpty());
        QCOMPARE(log.append(QByteArray(8, '\0'), now), quint64(RequestLog::kKept + 11));
    }
};

QTEST_GUILESS_MAIN(RequestAssemblerTest)
#include "RequestAssemblerTest.moc"
