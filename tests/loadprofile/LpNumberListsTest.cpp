// The download's interval lists follow the chosen group's count of valid intervals, and the
// status line warns while they are about to change.
#include "TestLists.h"
#include "connection/StatusLine.h"
#include "loadprofile/LpNumberLists.h"
#include "measure/MeterReading.h"

#include <QTest>

#include <memory>

class LpNumberListsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_status.Set(QString());
        m_lists = RecordingLists();
        m_reading = MeterReading();
        m_numberLists = std::make_unique<LpNumberLists>(m_lists, m_status);
    }

    // The first fill keeps the start-up "1" in front; an unchanged count touches nothing; a
    // long append disables the lists meanwhile and goes in as one batch.
    void growingCountsAppend()
    {
        refresh(0, 3);
        QCOMPARE(m_lists.start, QStringList({"1", "1", "2", "3"}));
        QCOMPARE(m_lists.stop, m_lists.start);
        refresh(0, 3);
        QCOMPARE(m_lists.appendCalls, 1);
        refresh(0, 30);
        QCOMPARE(m_lists.enabledHistory, QList<bool>({true, true, false, true}));
        QCOMPARE(m_lists.start.size(), 31);
        QCOMPARE(m_lists.start.last(), "30");
        QCOMPARE(m_lists.appendCalls, 2);
    }

    // A falling count (a cleared group) rebuilds both lists; at 0 they stay empty and keep
    // their texts.
    void fallingCountRebuilds()
    {
        refresh(0, 40);
        refresh(0, 2);
        QCOMPARE(m_lists.start, QStringList({"1", "2"}));
        QCOMPARE(m_lists.startText, "1");
        m_lists.startText = QStringLiteral("kept");
        refresh(0, 0);
        QVERIFY(m_lists.start.isEmpty());
        QVERIFY(m_lists.stop.isEmpty());
        QCOMPARE(m_lists.startText, "kept");
        QCOMPARE(m_numberLists->LpListCount, 0);
    }

    void changingTheGroupComparesTheOtherCount()
    {
        setValid(1, 4);
        refresh(0, 10);
        m_numberLists->ChooseGroup(1);
        m_numberLists->RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.start, QStringList({"1", "2", "3", "4"}));
    }

    void noCountBeforeTheFirstImage()
    {
        m_reading.loadProfile[0].validIntervals = 3; // not read from a meter yet
        m_numberLists->RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.start, QStringList{"1"});
        QVERIFY(m_lists.enabledHistory.isEmpty());
    }

    void warnsWhileTheChosenGroupsListsAreOutOfDate()
    {
        setValid(0, 1440);
        setValid(1, 7);
        m_numberLists->LpListCount = 1439;
        m_numberLists->WarnIfListsWillChange(m_reading);
        QCOMPARE(m_status.Text(), "Wait!! Setting 'Start no' & 'Stop no'");
        m_status.Set(QString());
        m_numberLists->ChooseGroup(1);
        m_numberLists->LpListCount = 7;
        m_numberLists->WarnIfListsWillChange(m_reading);
        QVERIFY(m_status.Text().isEmpty());
    }

private:
    void setValid(int group, int count)
    {
        m_reading.loadProfile[std::size_t(group)].validIntervals = count;
        m_reading.known |= MeterReading::RealTimeImage;
    }
    void refresh(int group, int count)
    {
        setValid(group, count);
        m_numberLists->RefreshLpNumberLists(m_reading);
    }

    StatusLine m_status;
    RecordingLists m_lists;
    MeterReading m_reading;
    std::unique_ptr<LpNumberLists> m_numberLists;
};

QTEST_GUILESS_MAIN(LpNumberListsTest)
#include "LpNumberListsTest.moc"
