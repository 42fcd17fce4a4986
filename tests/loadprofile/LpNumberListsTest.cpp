// The download's interval lists follow the chosen group's count of valid intervals.
#include "MapScreen.h"
#include "loadprofile/LpNumberLists.h"

#include <QTest>

class LpNumberListsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_screen.texts.clear();
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("1"));
        m_lists = RecordingLists();
    }

    void firstFillKeepsTheStartUpEntry()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 3);
        lists.RefreshLpNumberLists();
        QCOMPARE(m_lists.start, QStringList({"1", "1", "2", "3"}));
        QCOMPARE(m_lists.stop, m_lists.start);
        QCOMPARE(lists.LpListCount, 3);
        QCOMPARE(m_lists.enabledHistory, QList<bool>{true});
    }

    void unchangedCountTouchesNothing()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 3);
        lists.RefreshLpNumberLists();
        const int appends = m_lists.appendCalls;
        lists.RefreshLpNumberLists();
        QCOMPARE(m_lists.appendCalls, appends);
        QCOMPARE(m_lists.start.size(), 4);
    }

    void longAppendDisablesTheListsMeanwhile()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 5);
        lists.RefreshLpNumberLists();
        m_lists.enabledHistory.clear();
        setValid(0, 30);
        lists.RefreshLpNumberLists();
        QCOMPARE(m_lists.enabledHistory, QList<bool>({false, true}));
        QCOMPARE(m_lists.start.last(), "30");
        QCOMPARE(m_lists.start.size(), 31);
        QCOMPARE(m_lists.appendCalls, 2); // one batch per refresh, not one per number
    }

    void fallingCountRebuilds()
    {
        LpNumberLists lists(m_screen, m_lists);
        setValid(0, 40);
        lists.RefreshLpNumberLists();
        setValid(0, 2);
        lists.RefreshLpNumberLists();
        QCOMPARE(m_lists.start, QStringList({"1", "2"}));
        QCOMPARE(m_lists.startText, "1");

        m_lists.startText = QStringLiteral("kept");
        setValid(0, 0);
        lists.RefreshLpNumberLists();
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
        lists.RefreshLpNumberLists();
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("2"));
        lists.RefreshLpNumberLists();
        QCOMPARE(m_lists.start, QStringList({"1", "2", "3", "4"}));
    }

    void noCountBeforeTheFirstImage()
    {
        LpNumberLists lists(m_screen, m_lists);
        lists.RefreshLpNumberLists();
        QCOMPARE(m_lists.start, QStringList{"1"});
        QVERIFY(m_lists.enabledHistory.isEmpty());
    }

private:
    void setValid(int group, int count)
    {
        m_screen.SetText(QStringLiteral("Text_Valid_int_num(%1)").arg(group), QString::number(count));
    }

    MapScreen m_screen;
    RecordingLists m_lists;
};

QTEST_GUILESS_MAIN(LpNumberListsTest)
#include "LpNumberListsTest.moc"
