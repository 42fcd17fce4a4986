// Delay and WaitSince yield to the event loop and end on time, or at once when the flag goes
// False. The transactions wait on the same clock (TransactionsTest).
#include "link/Waits.h"
#include "link/WatchedFlag.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

class WaitsTest : public QObject {
    Q_OBJECT
private slots:
    void waitsYieldAndEndOnTimeOrOffLine()
    {
        WatchedFlag onLine;
        onLine.set(true);
        int events = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&events] { ++events; });
        ticker.start(5);
        const quint32 start = timeGetTime();
        QElapsedTimer clock;
        clock.start();
        Delay(60, onLine);
        QVERIFY(clock.elapsed() > 60);
        QVERIFY(events >= 5); // the event loop ran meanwhile
        clock.restart();
        WaitSince(start, 70, onLine);
        QVERIFY(timeGetTime() - start > 70);
        QVERIFY(clock.elapsed() < 50); // counted from the call it would last 70 ms
        QTimer::singleShot(20, [&onLine] { onLine.set(false); });
        Delay(5000, onLine);
        QVERIFY(clock.elapsed() < 1000);
        clock.restart();
        Delay(5000, onLine); // already False: no wait at all
        QVERIFY(clock.elapsed() < 5);
    }
};

QTEST_GUILESS_MAIN(WaitsTest)
#include "WaitsTest.moc"
