// The register transactions on a scripted line and virtual time: what goes out, what is
// taken, and how attempts fail, retry, give up or are abandoned.
#include "FakeLine.h"

#include <QTest>

class RegisterLinkTest : public QObject {
    Q_OBJECT
private slots:
    void aSpoiledReplyFailsItsAttempt_data()
    {
        QTest::addColumn<QByteArray>("spoiled");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("timesOut");
        QByteArray badCrc = LinkOnFakeLine::BlockReply(20, 1);
        badCrc.back() = char(~badCrc.back());
        QTest::newRow("bad CRC") << badCrc << "CRC Error" << false;
        QTest::newRow("other address") << LinkOnFakeLine::BlockReply(20, 1, 16) << "Address Error" << false;
        QTest::newRow("noise before the reply") << Hex("FF00FF") + LinkOnFakeLine::BlockReply(20, 1) << "Address Error" << false;
        // Sound frames of the awaited length that do not answer a read of 20 registers.
        const QByteArray zeros(40, '\0');
        QTest::newRow("exception padded to the reply's length") << Sealed(Hex("0F8302") + zeros) << "Exception 2 (Illegal Data Address) from the meter" << false;
        QTest::newRow("another function") << Sealed(Hex("0F0428") + zeros) << "Reply Error" << false;
        QTest::newRow("another byte count") << Sealed(Hex("0F0326") + zeros) << "Reply Error" << false;
    }
    void aSpoiledReplyFailsItsAttempt()
    {
        QFETCH(QByteArray, spoiled);
        QFETCH(QString, text);
        QFETCH(bool, timesOut);
        LinkOnFakeLine f;
        f.line.script << Reply(spoiled) << Reply(f.BlockReply(20, 0x0100));
        QCOMPARE(f.read(0x1000, 20).kind, TransactionResult::Good);
        QCOMPARE(f.link.RxData, f.Block(20, 0x0100));
        QCOMPARE(f.line.sent[1].at - f.line.sent[0].at >= 2s, timesOut);
        QCOMPARE(f.texts, text.isEmpty() ? QStringList() : QStringList{text});
    }

    // An exception reply is five bytes, short of any reply awaited: each attempt holding one
    // runs out its two seconds as if unanswered, and the transaction gives up. The link only
    // names the code, and only for a whole valid exception reply to this request.
    void exceptionRepliesAreNamedButTimeOut_data()
    {
        QTest::addColumn<quint8>("function");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QByteArray badCrc = Sealed(Hex("0F8302"));
        badCrc.back() = char(~badCrc.back());
        QTest::newRow("to a read") << Rtu::kReadHolding << Sealed(Hex("0F8302")) << 2 << "Exception 2 (Illegal Data Address) from the meter";
        QTest::newRow("to a write") << Rtu::kWriteMultiple << Sealed(Hex("0F9006")) << 6 << "Exception 6 (Slave Device Busy) from the meter";
        QTest::newRow("code with no name") << Rtu::kWriteSingle << Sealed(Hex("0F8605")) << 5 << "Exception 5 (Unknown) from the meter";
        QTest::newRow("bad CRC") << Rtu::kReadHolding << badCrc << 0 << QString();
        QTest::newRow("other address") << Rtu::kReadHolding << Sealed(Hex("108302")) << 0 << QString();
        QTest::newRow("other function") << Rtu::kWriteSingle << Sealed(Hex("0F9003")) << 0 << QString();
        QTest::newRow("no reply") << Rtu::kReadHolding << QByteArray() << 0 << QString();
    }
    void exceptionRepliesAreNamedButTimeOut()
    {
        QFETCH(quint8, function);
        QFETCH(QByteArray, reply);
        QFETCH(int, code);
        QFETCH(QString, text);
        LinkOnFakeLine f;
        f.link.bShowFrames = kTrue;
        const auto transact = [&f, function] {
            return function == Rtu::kReadHolding ? f.read(0x1000, 10)
                : function == Rtu::kWriteSingle  ? f.link.WriteSingleRegister(f.link.ModbusAddress, 0x1001, 2)
                                                 : f.link.WriteRegisters(f.link.ModbusAddress, 0x1023, 2, Hex("00010002"));
        };
        for (int attempt = 0; attempt < RegisterLink::kAttempts; ++attempt)
            f.line.script << Reply(reply);
        const TransactionResult result = transact();
        QCOMPARE(result.gaveUp(), true);
        QCOMPARE(int(result.exception), code);
        // Bytes that never make a frame are told apart from silence.
        QCOMPARE(result.kind, code != 0 ? TransactionResult::Exception
                              : reply.isEmpty() ? TransactionResult::TimedOut : TransactionResult::Garbled);
        QCOMPARE(f.line.sent.size(), RegisterLink::kAttempts);
        for (qsizetype i = 1; i < f.line.sent.size(); ++i)
            QCOMPARE(f.line.sent[i].at - f.line.sent[i - 1].at, 2s);
        QCOMPARE(f.gaveUp.size(), 1);
        QCOMPARE(f.link.bCommOK, kFalse);
        QCOMPARE(f.link.bWaiting, kFalse);
        QVERIFY2(f.clock.waits <= RegisterLink::kAttempts * (reply.size() + 2), "the link sleeps until something happens");
        // The frames view shows the request once per transaction, not once per attempt.
        if (function == Rtu::kReadHolding)
            QCOMPARE(f.echoes, QStringList{QStringLiteral("15 3 16 0 0 10 192 35 \r\n")});
        // An exception is named after each attempt; anything else counts as no reply, and the
        // attempt after it says so.
        QStringList texts;
        for (int attempt = 1; attempt <= RegisterLink::kAttempts; ++attempt) {
            if (!text.isEmpty())
                texts << text;
            else if (attempt > 1)
                texts << RegisterLink::RetryText(attempt);
        }
        QCOMPARE(f.texts, texts << RegisterLink::GiveUpText());

        const QByteArray request = f.line.sent[0].frame;
        f.line.script << Reply(function == Rtu::kReadHolding ? f.BlockReply(10, 1) : Sealed(request.left(6)));
        QCOMPARE(transact(), TransactionResult{});
    }

    // Another master or noise keeps the line from falling silent: each attempt waits its reply
    // time-out for the silence, fails as a busy line, and five of them take the tool off line.
    void aBusyLineFailsItsAttempts_data()
    {
        QTest::addColumn<int>("busyMs");
        QTest::addColumn<int>("sentAtMs"); // below zero: nothing sent
        QTest::newRow("busy through two attempts") << 5000 << 5011;
        QTest::newRow("busy throughout") << 20000 << -1;
    }
    void aBusyLineFailsItsAttempts()
    {
        QFETCH(int, busyMs);
        QFETCH(int, sentAtMs);
        LinkOnFakeLine f;
        const FakeLine::Time start = f.clock.now();
        f.line.chatter(start, start + std::chrono::milliseconds(busyMs), 1ms);
        f.line.script << Reply(f.BlockReply(4, 7));
        while (f.clock.now() < start + 5ms) // the line is busy before the request is due
            f.clock.waitUntil(start + 5ms, f.onLine, nullptr);
        const TransactionResult result = f.read(0x1000, 4);
        QCOMPARE(result.kind, sentAtMs < 0 ? TransactionResult::BusyLine : TransactionResult::Good);
        QCOMPARE(f.line.sent.size(), sentAtMs < 0 ? 0 : 1);
        if (sentAtMs >= 0) {
            QCOMPARE(f.line.sent[0].at - start, std::chrono::milliseconds(sentAtMs) + f.line.characterTime());
            QCOMPARE(f.texts, QStringList(2, RegisterLink::BusyLineText()));
            return;
        }
        QCOMPARE(f.clock.now() - start, 5ms + RegisterLink::kAttempts * 2s);
        QCOMPARE(f.texts, QStringList(RegisterLink::kAttempts, RegisterLink::BusyLineText()) << RegisterLink::GiveUpText());
        QCOMPARE(f.gaveUp.size(), 1);
        QVERIFY(f.gaveUp[0][0].toString().contains(RegisterLink::BusyLineText()));
    }

    // A scan tries each address once with a short wait; a slow gateway gets a longer one.
    void thePatienceOfATransactionCanBeSet()
    {
        LinkOnFakeLine f;
        f.link.replyTimeoutMs = 150;
        f.link.attempts = 2;
        QCOMPARE(f.read(0x1000, 10).gaveUp(), true);
        QCOMPARE(f.line.sent.size(), 2);
        QCOMPARE(f.line.sent[1].at - f.line.sent[0].at, 150ms);
        QCOMPARE(f.texts, (QStringList{"no reply, attempt 2 of 2", "Communication Error! Retry 2 times!"}));
    }

    void offLineOrAClosedPortAbandons_data()
    {
        QTest::addColumn<bool>("closePort");
        QTest::addColumn<int>("atMs"); // into the transaction; below zero: before it
        QTest::newRow("off line") << false << -1;
        QTest::newRow("port closed") << true << -1;
        QTest::newRow("going off line while waiting") << false << 500;
        QTest::newRow("port closing while waiting") << true << 500;
    }
    void offLineOrAClosedPortAbandons()
    {
        QFETCH(bool, closePort);
        QFETCH(int, atMs);
        LinkOnFakeLine f;
        const auto cut = [&f, closePort] { closePort ? void(f.line.open = false) : f.onLine.set(false); };
        const FakeLine::Time start = f.clock.now();
        if (atMs < 0)
            cut();
        else
            f.clock.at(start + std::chrono::milliseconds(atMs), cut);
        QCOMPARE(f.read(0x1000, 10).kind, TransactionResult::Abandoned);
        QCOMPARE(f.clock.now(), start + std::chrono::milliseconds(std::max(atMs, 0))); // at once, not at the time-out
        QCOMPARE(f.line.sent.size(), atMs < 0 ? 0 : 1);
        QCOMPARE(f.link.bCommOK, kTrue); // left as the caller set it
        QCOMPARE(f.link.bWaiting, kFalse);
        QVERIFY(f.gaveUp.isEmpty());
        QVERIFY(f.texts.isEmpty());
    }

    void anAddressChangedBetweenAttemptsIsUsedNext()
    {
        LinkOnFakeLine f;
        f.line.script << FakeLine::Answer() << Reply(f.BlockReply(4, 7, 16));
        f.clock.at(f.clock.now() + 500ms, [&f] { f.link.ModbusAddress = 16; });
        QCOMPARE(f.read(0x1000, 4).kind, TransactionResult::Good);
        QCOMPARE(f.line.sent[0].frame, Sealed(Hex("0F0310000004")));
        QCOMPARE(f.line.sent[1].frame, Sealed(Hex("100310000004")));
        QVERIFY(f.echoes.isEmpty()); // the frames view is off
    }

    // WriteRegisters2 is given a byte count and sends it halved (halves to even) as registers.
    // The reply names another register and count than asked: a write reply is checked for
    // address, function and CRC only.
    void writeRegisters2SendsHalfTheCount_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<QByteArray>("request");
        QTest::newRow("5 bytes: 2 registers") << 5 << Sealed(Hex("0F104492000204" "11111111"));
        QTest::newRow("7 bytes: 4 registers") << 7 << Sealed(Hex("0F104492000408" "1111111111111111"));
    }
    void writeRegisters2SendsHalfTheCount()
    {
        QFETCH(int, bytes);
        QFETCH(QByteArray, request);
        LinkOnFakeLine f;
        f.line.script << Reply(Sealed(Hex("0F1099990007")));
        qint16 count = qint16(bytes);
        QCOMPARE(f.link.WriteRegisters2(f.link.ModbusAddress, 0x4492, count, QByteArray(8, '\x11')).kind,
                 TransactionResult::Good);
        QCOMPARE(count, qint16(request[5])); // the caller's count is now the registers sent
        QCOMPARE(f.line.sent[0].frame, request);
        QCOMPARE(f.link.bCommOK, kTrue);
        QCOMPARE(f.link.RxUpperBound(), 0); // a write stores no data
    }
};

QTEST_GUILESS_MAIN(RegisterLinkTest)
#include "RegisterLinkTest.moc"
