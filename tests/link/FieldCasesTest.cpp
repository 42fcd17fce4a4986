// Cases met on real lines: bytes after a reply, a meter that answers late and then answers
// the retry as well, and 2-wire adapters that echo every request.
#include "FakeLine.h"

#include <QTest>

using Answer = FakeLine::Answer;

class FieldCasesTest : public QObject {
    Q_OBJECT
private slots:
    void theNextRequestKeepsTwelveMillisecondsFromTheLastByte_data()
    {
        QTest::addColumn<Answer>("answer");
        const QByteArray reply = LinkOnFakeLine::BlockReply(20, 1);
        QTest::newRow("after the reply") << Reply(reply);
        QTest::newRow("after a reply in pieces") << Answer{{reply.left(20), 3ms}, {reply.mid(20), 40ms}};
        QTest::newRow("trailing bytes right behind the reply") << Answer{{reply, 3ms}, {Hex("0000FF"), 0ms}};
        QTest::newRow("noise in the silence") << Answer{{reply, 3ms}, {Hex("0000FF"), 6ms}};
    }
    void theNextRequestKeepsTwelveMillisecondsFromTheLastByte()
    {
        QFETCH(Answer, answer);
        LinkOnFakeLine f;
        f.line.script << answer << Reply(f.BlockReply(20, 0x0200));
        QCOMPARE(f.read(0x1000, 20).kind, TransactionResult::Good);
        QCOMPARE(f.read(0x1000, 20).kind, TransactionResult::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0200));
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
        QTest::addColumn<int>("secondAfterUs"); // the second reply, after the first
        QTest::newRow("second reply 8 ms after the first: inside the silence") << 19200 << 8000;
        QTest::newRow("8 ms + the retry's wire time after: just past the silence") << 19200 << 8000 + 8 * 521;
        QTest::newRow("the same at 9600 baud") << 9600 << 8000 + 8 * 1042;
        QTest::newRow("a slow meter answering in order, 30 ms turnaround") << 19200 << 30000;
        QTest::newRow("the same, 600 ms after") << 9600 << 600000;
    }
    void aLateReplyIsNeverTakenForTheNextRequest()
    {
        QFETCH(qint32, baud);
        QFETCH(int, secondAfterUs);
        LinkOnFakeLine f(baud);
        f.line.script << Reply(f.BlockReply(20, 0x0A00), 2100ms)
                      << Reply(f.BlockReply(20, 0x0A00), std::chrono::microseconds(secondAfterUs))
                      << Reply(f.BlockReply(20, 0x0B00));
        QCOMPARE(f.read(0x1021, 20).kind, TransactionResult::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0A00));
        QCOMPARE(f.read(0x4492, 20).kind, TransactionResult::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0B00));
        // The line is kept for the owed reply for a bounded time, not for ever.
        QVERIFY(f.line.sent[2].at - f.line.sent[1].at < 3s);
    }

    void aTwoWireAdapterEchoIsSkipped_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<bool>("adapter");
        QTest::addColumn<Answer>("answer");
        const QByteArray single = Sealed(Hex("0F0610010002"));
        const QByteArray multiple = Sealed(Hex("0F10102300020400010002"));
        const QByteArray multipleReply = Sealed(multiple.left(6));
        QTest::newRow("read") << Sealed(Hex("0F0310000005")) << true << Reply(LinkOnFakeLine::BlockReply(5, 0x0300));
        QTest::newRow("write single: its reply equals its request") << single << true << Reply(single);
        QTest::newRow("write single without an adapter") << single << false << Reply(single);
        QTest::newRow("write multiple: the echo starts like the reply") << multiple << true << Reply(multipleReply);
        // A USB adapter may hand its echo over late, when a reply could already be in.
        QTest::newRow("write multiple, echo late and in pieces")
            << multiple << false << Answer{{multiple.left(8), 20ms}, {multiple.mid(8), 2ms}, {multipleReply, 3ms}};
    }
    void aTwoWireAdapterEchoIsSkipped()
    {
        QFETCH(QByteArray, request);
        QFETCH(bool, adapter);
        QFETCH(Answer, answer);
        LinkOnFakeLine f;
        f.line.echoes = adapter;
        f.line.script << answer;
        const quint8 function = quint8(request[1]);
        const TransactionResult outcome = function == Rtu::kWriteSingle
            ? f.link.WriteSingleRegister(f.link.ModbusAddress, 0x1001, 2)
            : function == Rtu::kWriteMultiple ? f.link.WriteRegisters(f.link.ModbusAddress, 0x1023, 2, Hex("00010002"))
                                              : f.read(0x1000, 5);
        QCOMPARE(outcome.kind, TransactionResult::Good);
        QCOMPARE(f.line.sent[0].frame, request);
        QCOMPARE(f.link.bCommOK, kTrue);
        if (function == Rtu::kReadHolding)
            QCOMPARE(f.link.RxData, f.Block(5, 0x0300));
    }
};

QTEST_GUILESS_MAIN(FieldCasesTest)
#include "FieldCasesTest.moc"
