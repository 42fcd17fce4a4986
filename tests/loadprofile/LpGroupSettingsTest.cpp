// The load-profile groups' "Setting" and clear buttons against the simulated meter: when the
// operator is warned, what each write carries, and that a clear writes nothing else.
#include "MeterOnLine.h"

#include <QTest>

class LpGroupSettingsTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_on = std::make_unique<SessionOnLine>();
        QVERIFY(m_on->begin());
        // The start-up choices: group 1 eight channels, group 2 four, both every 15 minutes.
        const QList<int> codes1{1, 2, 3, 4, 5, 7, 9, 11, 6, 8, 10, 12};
        const QList<int> codes2{6, 12, 13, 14, 1, 2, 3, 4};
        choose("Combo_G1_Setting", 8, codes1);
        choose("Combo_G2_Setting", 4, codes2);
    }
    void cleanup() { m_on.reset(); }

    void settingAGroup_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<bool>("readFirst");
        QTest::addColumn<int>("channels");
        QTest::addColumn<bool>("warned");
        QTest::addColumn<QByteArray>("frame");
        const QByteArray g1 = "0f10 1034 000e 1c 0008 000f 0001 0002 0003 0004 0005 0007 0009 000b 0006 0008 000a 000c";
        QTest::newRow("group 1, count as reported") << 0 << true << 8 << false << g1;
        QTest::newRow("group 1, never read") << 0 << false << 8 << true << g1;
        QTest::newRow("group 1, new count")
            << 0 << true << 12 << true
            << QByteArray("0f10 1034 000e 1c 000c 000f 0001 0002 0003 0004 0005 0007 0009 000b 0006 0008 000a 000c");
        QTest::newRow("group 2, count as reported")
            << 1 << true << 4 << false << QByteArray("0f10 1043 000a 14 0004 000f 0006 000c 000d 000e 0001 0002 0003 0004");
    }
    void settingAGroup()
    {
        QFETCH(int, group);
        QFETCH(bool, readFirst);
        QFETCH(int, channels);
        QFETCH(bool, warned);
        QFETCH(QByteArray, frame);
        if (readFirst)
            tick();
        m_on->screen.SetText(group == 0 ? "Combo_G1_Setting(0)" : "Combo_G2_Setting(0)", QString::number(channels));
        LpGroupSettings& groups = m_on->session->lpGroups;
        for (int click = 0; click < 2; ++click) // twice before the tick: sent once
            group == 0 ? groups.Comm_LP_G1_Set_Click() : groups.Comm_LP_G2_Set_Click();
        const QStringList warning(2, "Load Profile: Warning : You will delete Load Profile Data ");
        QCOMPARE(m_on->prompts.questions, warned ? warning : QStringList());
        m_on->meter->clearRequestLog();
        tick();
        QCOMPARE(writes(), QList<QByteArray>{frame.replace(' ', "")});
        QCOMPARE(m_on->meter->input(quint16(0x1190 + group)) == 0, channels != (group == 0 ? 8 : 4));
    }

    // A clear asks first; Cancel (or the close box) sends nothing, OK sends 51 and only that.
    void clearingAGroup()
    {
        LpGroupSettings& groups = m_on->session->lpGroups;
        m_on->prompts.answerYes = false;
        groups.Comm_Clr_G1_Data_Click();
        m_on->prompts.answerYes = true;
        groups.Comm_Clr_G2_Data_Click();
        QCOMPARE(m_on->prompts.questions,
                 QStringList({"Load Profile: Clear Group1 Data？", "Load Profile: Clear Group2 Data？"}));
        tick();
        QCOMPARE(writes(), QList<QByteArray>{"0f10104200010200" "33"});
        QCOMPARE(m_on->meter->input(0x1191), quint16(0));
        QVERIFY(m_on->meter->input(0x1190) > 0);
    }

private:
    void tick() { m_on->session->poll.Timer1Sec_Timer(); }
    void choose(const QString& array, int channels, const QList<int>& codes)
    {
        m_on->screen.SetText(Element(qPrintable(array), 0), QString::number(channels));
        m_on->screen.SetText(Element(qPrintable(array), 1), "15");
        for (int k = 0; k < codes.size(); ++k)
            m_on->screen.SetText(Element(qPrintable(array), 2 + k), QString::number(codes[k]));
    }
    // The write requests the meter received, without their CRC.
    QList<QByteArray> writes() const
    {
        QList<QByteArray> frames;
        for (const sim::LoggedRequest& request : m_on->meter->requestLog()) {
            if (quint8(request.frame[1]) == 0x10)
                frames.append(request.frame.chopped(2).toHex());
        }
        return frames;
    }

    std::unique_ptr<SessionOnLine> m_on;
};

QTEST_GUILESS_MAIN(LpGroupSettingsTest)
#include "LpGroupSettingsTest.moc"
