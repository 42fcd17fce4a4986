// The real-time image and the energy block on screen: each field from its bytes, in its format.
#include "MapScreen.h"
#include "measure/RealTimeDisplay.h"

#include <QTest>

#include <cstring>

namespace {

// Stores `value` as a meter float at `offset`: low-order register first, high byte first.
void putFloat(QByteArray& data, qsizetype offset, float value)
{
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    data[offset] = char(bits >> 8);
    data[offset + 1] = char(bits);
    data[offset + 2] = char(bits >> 24);
    data[offset + 3] = char(bits >> 16);
}

void putWord(QByteArray& data, qsizetype offset, int value)
{
    data[offset] = char(value >> 8);
    data[offset + 1] = char(value);
}

QByteArray craftedImage()
{
    QByteArray image(RealTimeDisplay::kImageSize, '\0');
    for (int i = 0; i < 4; ++i) {
        putFloat(image, 340 + 4 * i, 230.0f + i);        // phase voltages
        putFloat(image, 356 + 4 * i, 400.5f + i);        // line voltages
        putFloat(image, 372 + 4 * i, 5.25f + i);         // currents
        putFloat(image, 388 + 4 * i, 1.125f + i);        // kW
        putFloat(image, 404 + 4 * i, -0.5f - i);         // kvar
        putFloat(image, 420 + 4 * i, 2.0f + i);          // kVA
        putFloat(image, 436 + 4 * i, 0.875f);            // PF
    }
    for (int i = 0; i < 3; ++i) {
        putFloat(image, 452 + 4 * i, 120.0f * i);        // voltage angles
        putFloat(image, 464 + 4 * i, 120.0f * i + 30);   // current angles
    }
    const int clock[] = {10, 6, 5, 8, 9, 7};             // 2010/6/5 8:9:7, low bytes only
    for (int i = 0; i < 6; ++i)
        putWord(image, 70 + 2 * i, clock[i]);
    const QByteArray id("QX5820  SN004217");
    std::memcpy(image.data() + 324, id.constData(), 16);
    putWord(image, 104, 8);
    putWord(image, 106, 15);
    for (int i = 0; i < 12; ++i)
        putWord(image, 108 + 2 * i, i + 1);
    putWord(image, 134, 4);
    putWord(image, 136, 30);
    for (int i = 0; i < 8; ++i)
        putWord(image, 138 + 2 * i, 14 - i);
    putWord(image, 552, 1440);
    putWord(image, 554, 65535);
    putWord(image, 556, 4000);
    putWord(image, 558, 2000);
    putWord(image, 560, 7);
    putWord(image, 562, 1446);
    putWord(image, 476, 5);
    putWord(image, 478, 1);
    return image;
}

} // namespace

class RealTimeDisplayTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_screen.texts.clear();
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("1"));
    }

    void measurementsLandInTheirElements()
    {
        RealTimeDisplay display(m_screen);
        display.ShowRealTimeData(craftedImage(), 1440);
        const auto& t = m_screen.texts;
        QCOMPARE(t["txt_V_N(0)"], "230.00000");
        QCOMPARE(t["txt_V_N(3)"], "233.00000");
        QCOMPARE(t["txt_V_B(1)"], "401.50000");
        QCOMPARE(t["txt_I_Result(3)"], "5.25000");
        QCOMPARE(t["txt_I_Result(6)"], "8.25000");
        QCOMPARE(t["txt_W_Result(4)"], "2.1250000");
        QCOMPARE(t["txt_Var_Result(6)"], "-3.5000000");
        QCOMPARE(t["txt_VA_Result(3)"], "2.0000000");
        QCOMPARE(t["txt_PF_Result(5)"], "0.87500");
        QCOMPARE(t["txt_V_Angle(2)"], "240.00000");
        QCOMPARE(t["txt_I_Angle(0)"], "30.00000");
        // Lower elements of the current, power and PF arrays are not this routine's.
        QVERIFY(!t.contains("txt_I_Result(2)"));
        QVERIFY(!t.contains("txt_W_Result(0)"));
    }

    void clockIdentificationAndStatus()
    {
        RealTimeDisplay display(m_screen);
        display.ShowRealTimeData(craftedImage(), 1440);
        const auto& t = m_screen.texts;
        QCOMPARE(t["Text5"], "2010/6/5 8:9:7");
        QCOMPARE(t["Text3"], "QX5820  SN004217");
        QCOMPARE(t["Text_LP_Data_Counter(0)"], "8");
        QCOMPARE(t["Text_LP_interval(1)"], "30");
        QCOMPARE(t["Text_LP_G1_Data(11)"], "12");
        QCOMPARE(t["Text_LP_G2_Data(0)"], "14");
        QCOMPARE(t["Text_LP_G2_Data(7)"], "7");
        QCOMPARE(t["Text_Valid_int_num(0)"], "1440");
        QCOMPARE(t["Text_Valid_int_num(1)"], "65535");
        QCOMPARE(t["Text_Max_int_num(1)"], "2000");
        QCOMPARE(display.LpRecordRange[0], 7.0);
        QCOMPARE(display.LpRecordRange[1], 1446.0);
        QCOMPARE(t["txt_Wiring"], "3P4W");
        QCOMPARE(t["txt_Phasor"], "ABC");
        QVERIFY(!t.contains("Text6")); // the lists are built for 1440: no warning
    }

    void zeroYearAndUnknownCodes()
    {
        QByteArray image = craftedImage();
        putWord(image, 70, 0);
        RealTimeDisplay display(m_screen);
        display.ShowRealTimeData(image, 1440);
        QCOMPARE(m_screen.texts["Text5"], "2000/6/5 8:9:7");

        putWord(image, 476, 6); // no text for wiring 6: the last one stays
        putWord(image, 478, 0);
        display.ShowRealTimeData(image, 1440);
        QCOMPARE(m_screen.texts["txt_Wiring"], "3P4W");
        QCOMPARE(m_screen.texts["txt_Phasor"], "error");
        putWord(image, 476, 3);
        putWord(image, 478, 2);
        display.ShowRealTimeData(image, 1440);
        QCOMPARE(m_screen.texts["txt_Wiring"], "3P3W  2CT");
        QCOMPARE(m_screen.texts["txt_Phasor"], "CBA");
    }

    void displayItemsShownOnceAfterTheyWereSent()
    {
        QByteArray image = craftedImage();
        putWord(image, 164, 101);     // position 1
        putWord(image, 166, 50);      // position 2: no such item, no line
        putWord(image, 168, 12);      // position 3
        putWord(image, 164 + 98, 141); // position 50
        RealTimeDisplay display(m_screen);
        display.ShowRealTimeData(image, 1440);
        QVERIFY(!m_screen.texts.contains("txt_Display_Item"));
        display.bDisplayItemSent = kTrue;
        display.ShowRealTimeData(image, 1440);
        QCOMPARE(m_screen.texts["txt_Display_Item"],
                 "Display Item  : \r\n1 : Vln_a(101)\r\n3 : Modbus Stop Bit(12)\r\n50 : Demand - kW(141)\r\n");
        QCOMPARE(display.bDisplayItemSent, kFalse);
    }

    void warnsWhileTheChosenGroupsListsAreOutOfDate()
    {
        RealTimeDisplay display(m_screen);
        display.ShowRealTimeData(craftedImage(), 1439);
        QCOMPARE(m_screen.texts["Text6"], "Wait!! Setting 'Start no' & 'Stop no'");
        m_screen.texts.remove("Text6");
        m_screen.SetText(QStringLiteral("Combo_LP_Read_Group_Sel"), QStringLiteral("2"));
        display.ShowRealTimeData(craftedImage(), 65535);
        QVERIFY(!m_screen.texts.contains("Text6"));
    }

    void energyByPhaseWithTotals()
    {
        QByteArray block(RealTimeDisplay::kEnergySize, '\0');
        for (int k = 0; k < 5; ++k)
            for (int t = 0; t < 3; ++t)
                putFloat(block, 12 * k + 4 * t, float(100 * k + t) + 0.5f);
        RealTimeDisplay display(m_screen);
        display.ShowEnergyData(block);
        const auto& s = m_screen.texts;
        QCOMPARE(s["txt_kWh(5)"], "0.5000000");    // kWh delivered, L1
        QCOMPARE(s["txt_kWh(10)"], "1.5000000");   // kWh delivered, L2
        QCOMPARE(s["txt_kWh(19)"], "402.5000000"); // kVAh, L3
        QCOMPARE(s["txt_kWh(0)"], "4.5000000");    // kWh delivered, total
        QCOMPARE(s["txt_kWh(4)"], "1204.5000000"); // kVAh, total
    }

private:
    MapScreen m_screen;
};

QTEST_GUILESS_MAIN(RealTimeDisplayTest)
#include "RealTimeDisplayTest.moc"
