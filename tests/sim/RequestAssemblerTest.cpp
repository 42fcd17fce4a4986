// How the meter cuts received bytes into request frames and drops garbage.

#include "MeterLineClient.h"

#include "sim/RequestAssembler.h"

#include <QtTest>

using namespace sim;

namespace {

const QByteArray kRead = MeterLineClient::withCrc(MeterLineClient::read(15, 3, 0x1000, 10));
const QByteArray kWrite = MeterLineClient::withCrc(MeterLineClient::writeMultiple(15, 0x1034, {8, 15, 1}));
const QByteArray kUnknown = MeterLineClient::withCrc(QByteArray::fromHex("0f2b0e0100"));

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

    void unknownFunctionsEndAtSilence()
    {
        RequestAssembler assembler;
        QVERIFY(assembler.append(kUnknown, SteadyClock::now()).isEmpty());
        const std::optional<ReceivedFrame> frame = assembler.silence();
        QVERIFY(frame);
        QCOMPARE(frame->bytes, kUnknown);
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
};

QTEST_GUILESS_MAIN(RequestAssemblerTest)
#include "RequestAssemblerTest.moc"
