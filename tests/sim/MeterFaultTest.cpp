// Injected faults: each spoils the meter's next reply in its own way, in the order queued.

#include "SimulatedMeterFixture.h"

using Line = MeterLineClient;
using sim::Fault;

namespace {

const QByteArray kRead = Line::read(15, 3, 0x1000, 10);
constexpr qsizetype kReplyLength = 25;

} // namespace

class MeterFaultTest : public QObject, SimulatedMeterFixture {
    Q_OBJECT
private slots:
    void init()
    {
        QVERIFY(begin());
        m_normal = line->request(kRead, kReplyLength).bytes;
        QVERIFY(Line::crcGood(m_normal));
    }
    void cleanup() { end(); }

    void lostReplyStillCarriesOutTheRequest()
    {
        meter->injectFault(Fault::noReply());
        QVERIFY(silentAfter(Line::writeSingle(15, 0x1050, 9)));
        QCOMPARE(meter->holding(0x1050), quint16(9));
        QCOMPARE(line->request(kRead, kReplyLength).bytes, m_normal);
    }

    void exceptionFaultRefusesTheRequest()
    {
        meter->injectFault(Fault::exception(4));
        QCOMPARE(line->request(Line::writeSingle(15, 0x1050, 9), 5).bytes, Line::withCrc(QByteArray::fromHex("0f8604")));
        QCOMPARE(meter->holding(0x1050), quint16(5));
    }

    void spoiledRepliesArriveWhole()
    {
        meter->injectFault(Fault::badCrc());
        const QByteArray badCrc = line->request(kRead, kReplyLength).bytes;
        QVERIFY(!Line::crcGood(badCrc));
        QCOMPARE(badCrc.chopped(1), m_normal.chopped(1));

        meter->injectFault(Fault::wrongAddress());
        const QByteArray wrongAddress = line->request(kRead, kReplyLength).bytes;
        QVERIFY(Line::crcGood(wrongAddress));
        QCOMPARE(wrongAddress.at(0), '\x10');
        QCOMPARE(wrongAddress.mid(1, kReplyLength - 3), m_normal.mid(1, kReplyLength - 3));

        meter->injectFault(Fault::noise(5));
        const QByteArray noisy = line->request(kRead, kReplyLength + 5).bytes;
        QCOMPARE(noisy.size(), kReplyLength + 5);
        QCOMPARE(noisy.right(kReplyLength), m_normal);
    }

    void splitReplyComesInPiecesWithGaps()
    {
        meter->injectFault(Fault::split(3, 100));
        const Reception split = line->request(kRead, kReplyLength, 2000);
        QCOMPARE(split.bytes, m_normal);
        QCOMPARE_GE(split.lastMs - split.firstMs, 150);
    }


    void faultsAreUsedInOrderUntilCleared()
    {
        meter->injectFault(Fault::badCrc(), 2);
        meter->injectFault(Fault::wrongAddress());
        QVERIFY(!Line::crcGood(line->request(kRead, kReplyLength).bytes));
        QVERIFY(!Line::crcGood(line->request(kRead, kReplyLength).bytes));
        QCOMPARE(line->request(kRead, kReplyLength).bytes.at(0), '\x10');
        QCOMPARE(line->request(kRead, kReplyLength).bytes, m_normal);
        meter->injectFault(Fault::noReply(), 3);
        meter->clearFaults();
        QCOMPARE(line->request(kRead, kReplyLength).bytes, m_normal);
    }

private:
    QByteArray m_normal;
};

QTEST_GUILESS_MAIN(MeterFaultTest)
#include "MeterFaultTest.moc"
