// The register transactions on a scripted line and virtual time: what goes out, what is
// taken, and how attempts fail, retry, give up or are abandoned.
#include "LinkOnFakeLine.h"

#include <QTest>

using namespace std::chrono_literals;
using Answer = FakeLine::Answer;

namespace {

// `bytes` in `pieces` parts with `gap` of silence between them.
Answer InPieces(const QByteArray& bytes, int pieces, FakeLine::Time gap)
{
    Answer answer;
    for (int i = 0; i < pieces; ++i) {
        const qsizetype from = bytes.size() * i / pieces;
        answer.append({bytes.mid(from, bytes.size() * (i + 1) / pieces - from), i == 0 ? 3ms : gap});
    }
    return answer;
}

} // namespace

class RegisterLinkTest : public QObject {
    Q_OBJECT
private slots:
    void readsAccumulateIntoOneImage()
    {
        LinkOnFakeLine f;
        f.line.script(Reply(f.BlockReply(100, 0x1000)));
        f.line.script(Reply(ReadReply(15, Rtu::kReadInput, f.Block(50, 0x2000))));
        QCOMPARE(f.read(0x1000, 100), TransactionOutcome::Good);
        QCOMPARE(f.link.ReadRegisters(f.link.ModbusAddress, Rtu::kReadInput, 0x1064, 50), TransactionOutcome::Good);
        QCOMPARE(f.link.RxData, f.Block(100, 0x1000) + f.Block(50, 0x2000));
        QCOMPARE(f.link.bCommOK, kTrue);
        QCOMPARE(f.line.sent.size(), 2);
        QCOMPARE(f.line.sent[0].frame, Sealed(Hex("0F0310000064")));
        QCOMPARE(f.line.sent[1].frame, Sealed(Hex("0F0410640032")));
        QVERIFY(f.status.isEmpty());
    }

    void aReplyInPiecesIsTakenWhenWhole()
    {
        LinkOnFakeLine f;
        f.line.script(InPieces(f.BlockReply(8, 0x4000), 4, 40ms));
        QCOMPARE(f.read(0x1080, 8), TransactionOutcome::Good);
        QCOMPARE(f.link.RxData, f.Block(8, 0x4000));
        QCOMPARE(f.line.sent.size(), 1);
    }

    void spoiledRepliesFailOneAttemptEach_data()
    {
        QTest::addColumn<QByteArray>("spoiled");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<bool>("timesOut");
        QByteArray badCrc = LinkOnFakeLine::BlockReply(20, 1);
        badCrc.back() = char(~badCrc.back());
        QTest::newRow("bad CRC") << badCrc << QStringList{QStringLiteral("CRC Error")} << false;
        QTest::newRow("other address") << ReadReply(16, Rtu::kReadHolding, LinkOnFakeLine::Block(20, 1))
                                       << QStringList{QStringLiteral("Address Error")} << false;
        QTest::newRow("noise before the reply") << Hex("FF00FF") + LinkOnFakeLine::BlockReply(20, 1)
                                                << QStringList{QStringLiteral("Address Error")} << false;
        // Five bytes never make the awaited length: the attempt runs out its two seconds.
        QTest::newRow("exception reply") << Sealed(Hex("0F8302")) << QStringList() << true;
    }
    void spoiledRepliesFailOneAttemptEach()
    {
        QFETCH(QByteArray, spoiled);
        QFETCH(QStringList, texts);
        QFETCH(bool, timesOut);
        LinkOnFakeLine f;
        f.line.script(Reply(spoiled));
        f.line.script(Reply(f.BlockReply(20, 0x0100)));
        QCOMPARE(f.read(0x1000, 20), TransactionOutcome::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0100));
        QCOMPARE(f.line.sent.size(), 2);
        QCOMPARE(f.line.sent[1].at - f.line.sent[0].at >= 2s, timesOut);
        QStringList shown;
        for (const auto& signal : f.status)
            shown.append(signal.first().toString());
        QCOMPARE(shown, texts);
    }

    void silenceGivesUpAfterFiveAttempts()
    {
        LinkOnFakeLine f;
        QCOMPARE(f.read(0x1000, 10), TransactionOutcome::Failed);
        QCOMPARE(f.line.sent.size(), RegisterLink::kAttempts);
        for (qsizetype i = 1; i < f.line.sent.size(); ++i)
            QCOMPARE(f.line.sent[i].at - f.line.sent[i - 1].at, 2s);
        QCOMPARE(f.status.size(), 1);
        QCOMPARE(f.status.first().first().toString(), QStringLiteral("Communication Error! Retry 5 times!"));
        QCOMPARE(f.link.bCommOK, kFalse);
        QCOMPARE(f.link.bWaiting, kFalse);
        QCOMPARE(f.gaveUp.size(), 1);
        QVERIFY2(f.clock.waits() <= 2 * RegisterLink::kAttempts, "the link sleeps until something happens");
    }

    void offLineOrAClosedPortAbandons_data()
    {
        QTest::addColumn<bool>("closePort");
        QTest::addColumn<int>("atMs"); // into the transaction; below zero: before it
        QTest::addColumn<int>("sent");
        QTest::newRow("off line") << false << -1 << 0;
        QTest::newRow("port closed") << true << -1 << 0;
        QTest::newRow("going off line while waiting") << false << 500 << 1;
        QTest::newRow("port closing while waiting") << true << 500 << 1;
    }
    void offLineOrAClosedPortAbandons()
    {
        QFETCH(bool, closePort);
        QFETCH(int, atMs);
        QFETCH(int, sent);
        LinkOnFakeLine f;
        const auto cut = [&f, closePort] {
            if (closePort)
                f.line.open = false;
            else
                f.onLine.set(false);
        };
        if (atMs < 0)
            cut();
        else
            f.clock.at(f.clock.now() + std::chrono::milliseconds(atMs), cut);
        QCOMPARE(f.read(0x1000, 10), TransactionOutcome::Abandoned);
        QCOMPARE(f.line.sent.size(), sent);
        QCOMPARE(f.link.bCommOK, kTrue); // left as the caller set it
        QCOMPARE(f.link.bWaiting, kFalse);
        QVERIFY(f.gaveUp.isEmpty());
        QVERIFY(f.status.isEmpty());
    }

    void anAddressChangedBetweenAttemptsIsUsedNext()
    {
        LinkOnFakeLine f;
        f.line.script({});
        f.line.script(Reply(ReadReply(16, Rtu::kReadHolding, f.Block(4, 7))));
        f.clock.at(f.clock.now() + 500ms, [&f] { f.link.ModbusAddress = 16; });
        QCOMPARE(f.read(0x1000, 4), TransactionOutcome::Good);
        QCOMPARE(f.line.sent.size(), 2);
        QCOMPARE(f.line.sent[0].frame, Sealed(Hex("0F0310000004")));
        QCOMPARE(f.line.sent[1].frame, Sealed(Hex("100310000004")));
    }

    void aWriteReplyIsCheckedForAddressAndCrcOnly()
    {
        LinkOnFakeLine f;
        // Another function, register and count than asked for: deliberately not examined.
        f.line.script(Reply(Sealed(Hex("0F0699990007"))));
        f.link.bCommOK = kFalse;
        QCOMPARE(f.link.WriteRegisters(f.link.ModbusAddress, 0x1022, 1, Hex("0064")), TransactionOutcome::Good);
        QCOMPARE(f.link.bCommOK, kTrue);
        QCOMPARE(f.line.sent[0].frame, Sealed(Hex("0F1010220001020064")));
        QCOMPARE(f.link.RxUpperBound(), 0);
    }

    void writeRegisters2HalvesTheByteCount_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("registers");
        QTest::newRow("5 bytes: 2.5 halves to even") << 5 << 2;
        QTest::newRow("7 bytes: 3.5 halves to even") << 7 << 4;
    }
    void writeRegisters2HalvesTheByteCount()
    {
        QFETCH(int, bytes);
        QFETCH(int, registers);
        LinkOnFakeLine f;
        f.line.script(Reply(Sealed(Hex("0F1044920000"))));
        qint16 count = qint16(bytes);
        QCOMPARE(f.link.WriteRegisters2(f.link.ModbusAddress, 0x4492, count, QByteArray(8, '\x11')), TransactionOutcome::Good);
        QCOMPARE(count, qint16(registers));
        QCOMPARE(quint8(f.line.sent[0].frame[5]), quint8(registers)); // the register count
        QCOMPARE(quint8(f.line.sent[0].frame[6]), quint8(2 * registers)); // and its data bytes
    }

    void theRequestIsShownOncePerTransactionWhenAsked()
    {
        LinkOnFakeLine f;
        QSignalSpy echoes(&f.link, &RegisterLink::requestEcho);
        f.link.bShowFrames = kTrue;
        f.line.script({}); // a retry does not show the request again
        f.line.script(Reply(f.BlockReply(2, 0)));
        f.read(0x1000, 2);
        QCOMPARE(echoes.size(), 1);
        QCOMPARE(echoes.first().first().toString(), Rtu::FrameEcho(f.line.sent[0].frame));
        f.link.bShowFrames = kFalse;
        f.line.script(Reply(f.BlockReply(2, 0)));
        f.read(0x1000, 2);
        QCOMPARE(echoes.size(), 1);
    }
};

QTEST_GUILESS_MAIN(RegisterLinkTest)
#include "RegisterLinkTest.moc"
