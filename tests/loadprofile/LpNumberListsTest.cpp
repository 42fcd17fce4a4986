// The download's interval lists follow the chosen group's count of valid intervals, and the
// status line warns while they are about to change.
#include "MapScreen.h"
#include "loadprofile/LpNumberLists.h"
#include "measure/MeterReading.h"

#include <QTest>

class LpNumberListsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_screen.texts.clear();
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("1"));
        m_lists = RecordingLists();
        m_reading = MeterReading();
    }

    void firstFillKeepsTheStartUpEntry()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 3);
        lists.RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.start, QStringList({"1", "1", "2", "3"}));
        QCOMPARE(m_lists.stop, m_lists.start);
        QCOMPARE(lists.LpListCount, 3);
        QCOMPARE(m_lists.enabledHistory, QList<bool>{true});
    }

    void unchangedCountTouchesNothing()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 3);
        lists.RefreshLpNumberLists(m_reading);
        const int appends = m_lists.appendCalls;
        lists.RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.appendCalls, appends);
        QCOMPARE(m_lists.start.size(), 4);
    }

    void longAppendDisablesTheListsMeanwhile()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 5);
        lists.RefreshLpNumberLists(m_reading);
        m_lists.enabledHistory.clear();
        setValid(0, 30);
        lists.RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.enabledHistory, QList<bool>({false, true}));
        QCOMPARE(m_lists.start.last(), "30");
        QCOMPARE(m_lists.start.size(), 31);
        QCOMPARE(m_lists.appendCalls, 2); // one batch per refresh, not one per number
    }

    void fallingCountRebuilds()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 40);
        lists.RefreshLpNumberLists(m_reading);
        setValid(0, 2);
        lists.RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.start, QStringList({"1", "2"}));
        QCOMPARE(m_lists.startText, "1");

        m_lists.startText = QStringLiteral("kept");
        setValid(0, 0);
        lists.RefreshLpNumberLists(m_reading);
        QVERIFY(m_lists.start.isEmpty());
        QVERIFY(m_lists.stop.isEmpty());
        QCOMPARE(m_lists.startText, "kept");
        QCOMPARE(lists.LpListCount, 0);
    }

    void changingTheGroupComparesTheOtherCount()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 10);
        setValid(1, 4);
        lists.RefreshLpNumberLists(m_reading);
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("2"));
        lists.RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.start, QStringList({"1", "2", "3", "4"}));
    }

    void noCountBeforeTheFirstImage()
    {
        LpNumberLists lists(m_screen, m_lists);
        m_reading.loadProfile[0].validIntervals = 3; // not read from a meter yet
        lists.RefreshLpNumberLists(m_reading);
        QCOMPARE(m_lists.start, QStringList{"1"});
        QVERIFY(m_lists.enabledHistory.isEmpty());
    }

    void warnsWhileTheChosenGroupsListsAreOutOfDate()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 1440);
        setValid(1, 7);
        lists.LpListCount = 1439;
        lists.WarnIfListsWillChange(m_reading);
        QCOMPARE(m_screen.texts["Text6"], "Wait!! Setting 'Start no' & 'Stop no'");
        m_screen.texts.remove("Text6");
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("2"));
        lists.LpListCount = 7;
        lists.WarnIfListsWillChange(m_reading);
        QVERIFY(!m_screen.texts.contains("Text6"));
    }

private:
    void setValid(int group, int count)
    {
        m_reading.loadProfile[std::size_t(group)].validIntervals = count;
        m_reading.known |= MeterReading::RealTimeImage;
    }

    MapScreen m_screen;
    MeterReading m_reading;
    RecordingLists m_lists;
};

QTEST_GUILESS_MAIN(LpNumberListsTest)
#include "LpNumberListsTest.moc"
