// The waits yield to the event loop and end on time, or at once when the flag goes False.
#include "link/Waits.h"
#include "link/WatchedFlag.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

class WaitsTest : public QObject {
    Q_OBJECT
private slots:
    void delayLastsMoreThanItsTime()
    {
        WatchedFlag onLine;
        onLine.set(true);
        int events = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&events] { ++events; });
        ticker.start(5);
        QElapsedTimer clock;
        clock.start();
        Delay(60, onLine);
        QVERIFY(clock.elapsed() > 60);
        QVERIFY(events >= 5); // the event loop ran meanwhile
    }

    void waitSinceCountsFromItsStart()
    {
        WatchedFlag onLine;
        onLine.set(true);
        const quint32 start = timeGetTime();
        Delay(100, onLine);
        QElapsedTimer clock;
        clock.start();
        WaitSince(start, 110, onLine);
        QVERIFY(timeGetTime() - start > 110);
        QVERIFY(clock.elapsed() < 80); // counted from the call it would last 110 ms
        clock.restart();
        WaitSince(start, 12, onLine); // long past: no wait at all
        QVERIFY(clock.elapsed() < 5);
    }

    void goingOffLineEndsAWaitAtOnce()
    {
        WatchedFlag onLine;
        onLine.set(true);
        QTimer::singleShot(20, [&onLine] { onLine.set(false); });
        QElapsedTimer clock;
        clock.start();
        Delay(5000, onLine);
        QVERIFY(clock.elapsed() < 1000);
        clock.restart();
        Delay(5000, onLine); // already False: returns without waiting
        QVERIFY(clock.elapsed() < 5);
    }
};

QTEST_GUILESS_MAIN(WaitsTest)
#include "WaitsTest.moc"
