// The meter's request log keeps the latest requests only, so a long run stays small.
#include "sim/RequestLog.h"

#include <QTest>

class RequestLogTest : public QObject {
    Q_OBJECT
private slots:
    void keepsTheLatestRequests()
    {
        sim::RequestLog log;
        const auto now = sim::SteadyClock::now();
        for (int i = 0; i < sim::RequestLog::kKept + 10; ++i)
            log.append(QByteArray(8, char(i)), now);
        const QList<sim::LoggedRequest> entries = log.take();
        QCOMPARE(entries.size(), sim::RequestLog::kKept);
        QCOMPARE(entries.first().sequence, quint64(11));
        QVERIFY(log.entries().isEmpty());
        QCOMPARE(log.append(QByteArray(8, '\0'), now), quint64(sim::RequestLog::kKept + 11));
    }
};

QTEST_GUILESS_MAIN(RequestLogTest)
#include "RequestLogTest.moc"
