// Cases met on real lines: bytes after a reply, a meter that answers late and then answers
// the retry as well, and 2-wire adapters that echo every request.
#include "LinkOnFakeLine.h"

#include <QTest>

using namespace std::chrono_literals;
using Answer = FakeLine::Answer;

namespace {

enum class Echo { None, Adapter, HeldBack };

} // namespace

class FieldCasesTest : public QObject {
    Q_OBJECT
private slots:
    void theNextRequestKeepsTwelveMillisecondsFromTheLastByte_data()
    {
        QTest::addColumn<Answer>("answer");
        const QByteArray reply = LinkOnFakeLine::BlockReply(20, 1);
        const QByteArray junk = Hex("0000FF");
        QTest::newRow("after the reply") << Reply(reply);
        QTest::newRow("trailing bytes right behind the reply") << Answer{{reply, 3ms}, {junk, 0ms}};
        QTest::newRow("noise in the silence") << Answer{{reply, 3ms}, {junk, 6ms}};
    }
    void theNextRequestKeepsTwelveMillisecondsFromTheLastByte()
    {
        QFETCH(Answer, answer);
        LinkOnFakeLine f;
        f.line.script(answer);
        f.line.script(Reply(f.BlockReply(20, 0x0200)));
        QCOMPARE(f.read(0x1000, 20), TransactionOutcome::Good);
        QCOMPARE(f.read(0x1000, 20), TransactionOutcome::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0200));
        QVERIFY(f.status.isEmpty());
        FakeLine::Time lastByte = f.line.sent[0].at + f.line.wireTime(f.line.sent[0].frame.size());
        for (const FakeLine::Piece& piece : answer)
            lastByte += piece.pauseBefore + f.line.wireTime(piece.bytes.size());
        // Not a whole millisecond counter's 13: the request leaves once 12 ms have passed.
        QCOMPARE(f.line.sent[1].at - lastByte, 12ms);
    }

    // A meter answered one request 2.1 s late, past the first attempt's two seconds, and then
    // answered the retry as well, a turnaround after its late reply: two replies of the same
    // length back to back. The next request must get its own data, never the second of those.
    void aLateReplyIsNeverTakenForTheNextRequest_data()
    {
        QTest::addColumn<qint32>("baud");
        QTest::addColumn<bool>("afterTheRetryCrossed");
        QTest::newRow("second reply 8 ms after the first: inside the silence") << 19200 << false;
        QTest::newRow("8 ms + the retry's wire time after: just past the silence") << 19200 << true;
        QTest::newRow("the same at 9600 baud") << 9600 << true;
    }
    void aLateReplyIsNeverTakenForTheNextRequest()
    {
        QFETCH(qint32, baud);
        QFETCH(bool, afterTheRetryCrossed);
        LinkOnFakeLine f(baud);
        f.line.script(Reply(f.BlockReply(20, 0x0A00), 2100ms));
        f.line.script(Reply(f.BlockReply(20, 0x0A00), 8ms + (afterTheRetryCrossed ? f.line.wireTime(8) : 0ns)));
        f.line.script(Reply(f.BlockReply(20, 0x0B00)));
        QCOMPARE(f.read(0x1021, 20), TransactionOutcome::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0A00));
        QCOMPARE(f.read(0x4492, 20), TransactionOutcome::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0B00));
        QCOMPARE(f.line.sent.size(), 3);
        QVERIFY(f.status.isEmpty());
    }

    void aTwoWireAdapterEchoIsSkipped_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<Echo>("echo");
        const QByteArray read = Sealed(Hex("0F0310000005"));
        const QByteArray writeSingle = Sealed(Hex("0F0610010002"));
        const QByteArray writeMultiple = Sealed(Hex("0F10102300020400010002"));
        QTest::newRow("read") << read << LinkOnFakeLine::BlockReply(5, 0x0300) << Echo::Adapter;
        QTest::newRow("write single: its reply equals its request") << writeSingle << writeSingle << Echo::Adapter;
        QTest::newRow("write single without an adapter") << writeSingle << writeSingle << Echo::None;
        QTest::newRow("write multiple: the echo starts like the reply") << writeMultiple << Sealed(writeMultiple.left(6))
                                                                        << Echo::Adapter;
        QTest::newRow("write multiple, echo late and in pieces") << writeMultiple << Sealed(writeMultiple.left(6))
                                                                 << Echo::HeldBack;
    }
    void aTwoWireAdapterEchoIsSkipped()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, reply);
        QFETCH(Echo, echo);
        LinkOnFakeLine f;
        f.line.echoes = echo == Echo::Adapter;
        // A USB adapter may hand its echo over late, when a reply could already be in.
        f.line.script(echo == Echo::HeldBack ? Answer{{request.left(8), 20ms}, {request.mid(8), 2ms}, {reply, 3ms}}
                                             : Reply(reply));
        QCOMPARE(Transact(f, quint8(request[1])), TransactionOutcome::Good);
        QCOMPARE(f.line.sent.size(), 1);
        QCOMPARE(f.line.sent[0].frame, request);
        QVERIFY(f.status.isEmpty());
        if (request[1] == Rtu::kReadHolding)
            QCOMPARE(f.link.RxData, f.Block(5, 0x0300));
    }

private:
    // The transaction that sends the request of the echo cases with `function`.
    static TransactionOutcome Transact(LinkOnFakeLine& f, quint8 function)
    {
        switch (function) {
        case Rtu::kWriteSingle:
            return f.link.WriteSingleRegister(f.link.ModbusAddress, 0x1001, 2);
        case Rtu::kWriteMultiple:
            return f.link.WriteRegisters(f.link.ModbusAddress, 0x1023, 2, Hex("00010002"));
        default:
            return f.read(0x1000, 5);
        }
    }
};

QTEST_GUILESS_MAIN(FieldCasesTest)
#include "FieldCasesTest.moc"
