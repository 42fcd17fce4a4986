// The real-time image and the energy block: each value from its bytes into the reading, and
// from the reading onto its field, in its format.
#include "measure/PollPlan.h"
#include "measure/ReadingDecoding.h"
#include "ui/RealTimeDisplay.h"
#include "ui/TextScreen.h"

#include <QTest>

#include <cstring>

namespace {

using PollPlan::Holding;
using PollPlan::Input;

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
    QByteArray image(PollPlan::kImageSize, '\0');
    for (int i = 0; i < 4; ++i) {
        putFloat(image, Input(0x1080) + 4 * i, 230.0f + i);  // phase voltages
        putFloat(image, Input(0x1088) + 4 * i, 400.5f + i);  // line voltages
        putFloat(image, Input(0x1090) + 4 * i, 5.25f + i);   // currents
        putFloat(image, Input(0x1098) + 4 * i, 1.125f + i);  // kW
        putFloat(image, Input(0x10A0) + 4 * i, -0.5f - i);   // kvar
        putFloat(image, Input(0x10A8) + 4 * i, 2.0f + i);    // kVA
        putFloat(image, Input(0x10B0) + 4 * i, 0.875f);      // PF
    }
    for (int i = 0; i < 3; ++i) {
        putFloat(image, Input(0x10B8) + 4 * i, 120.0f * i);      // voltage angles
        putFloat(image, Input(0x10BE) + 4 * i, 120.0f * i + 30); // current angles
    }
    const int clock[] = {10, 6, 5, 8, 9, 7}; // 2010/6/5 8:9:7, low bytes only
    for (int i = 0; i < 6; ++i)
        putWord(image, Holding(0x1023) + 2 * i, clock[i]);
    const QByteArray id("QX5820  SN004217");
    std::memcpy(image.data() + Input(0x100C), id.constData(), 16);
    putWord(image, Holding(0x1034), 8);
    putWord(image, Holding(0x1035), 15);
    for (int i = 0; i < 12; ++i)
        putWord(image, Holding(0x1036) + 2 * i, i + 1);
    putWord(image, Holding(0x1043), 4);
    putWord(image, Holding(0x1044), 30);
    for (int i = 0; i < 8; ++i)
        putWord(image, Holding(0x1045) + 2 * i, 14 - i);
    putWord(image, Input(0x1190), 1440);
    putWord(image, Input(0x1191), 65535);
    putWord(image, Input(0x1192), 4000);
    putWord(image, Input(0x1193), 2000);
    putWord(image, Input(0x1194), 7);
    putWord(image, Input(0x1195), 1446);
    putWord(image, Input(0x10C4), 5);
    putWord(image, Input(0x10C5), 1);
    return image;
}

} // namespace

class RealTimeDisplayTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_screen.texts.clear(); }

    void measurementsLandInTheirElements()
    {
        show(craftedImage());
        QCOMPARE(m_reading.current[3], 8.25);
        QCOMPARE(m_reading.reactivePower[2], -2.5);
        QCOMPARE(m_reading.fresh, unsigned(MeterReading::RealTimeImage));
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
        show(craftedImage());
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
        QCOMPARE(m_reading.recordRange[0], 7);
        QCOMPARE(m_reading.recordRange[1], 1446);
        QCOMPARE(t["txt_Wiring"], "3P4W");
        QCOMPARE(t["txt_Phasor"], "ABC");
    }

    void zeroYearAndUnknownCodes()
    {
        QByteArray image = craftedImage();
        putWord(image, Holding(0x1023), 0);
        show(image);
        QCOMPARE(m_screen.texts["Text5"], "2000/6/5 8:9:7");

        putWord(image, Input(0x10C4), 6); // no text for wiring 6: the last one stays
        putWord(image, Input(0x10C5), 0);
        show(image);
        QCOMPARE(m_screen.texts["txt_Wiring"], "3P4W");
        QCOMPARE(m_screen.texts["txt_Phasor"], "error");
        putWord(image, Input(0x10C4), 3);
        putWord(image, Input(0x10C5), 2);
        show(image);
        QCOMPARE(m_screen.texts["txt_Wiring"], "3P3W  2CT");
        QCOMPARE(m_screen.texts["txt_Phasor"], "CBA");
    }

    void displayItemsShownOnceAfterTheyWereSent()
    {
        QByteArray image = craftedImage();
        putWord(image, Holding(0x1052), 101);      // position 1
        putWord(image, Holding(0x1053), 50);       // position 2: no such item, no line
        putWord(image, Holding(0x1054), 12);       // position 3
        putWord(image, Holding(0x1052 + 49), 141); // position 50, in the second block
        show(image);
        QVERIFY(!m_screen.texts.contains("txt_Display_Item"));
        m_display.bDisplayItemSent = kTrue;
        show(image);
        QCOMPARE(m_screen.texts["txt_Display_Item"],
                 "Display Item  : \r\n1 : Vln_a(101)\r\n3 : Modbus Stop Bit(12)\r\n50 : Demand - kW(141)\r\n");
        QCOMPARE(m_display.bDisplayItemSent, kFalse);
    }

    void energyByPhaseWithTotals()
    {
        QByteArray block(PollPlan::kBlocks[PollPlan::Energy].dataBytes(), '\0');
        for (int k = 0; k < 5; ++k)
            for (int t = 0; t < 3; ++t)
                putFloat(block, 12 * k + 4 * t, float(100 * k + t) + 0.5f);
        DecodeEnergy(block, m_reading);
        m_display.ShowEnergyData(m_reading);
        const auto& s = m_screen.texts;
        QCOMPARE(s["txt_kWh(5)"], "0.5000000");    // kWh delivered, L1
        QCOMPARE(s["txt_kWh(10)"], "1.5000000");   // kWh delivered, L2
        QCOMPARE(s["txt_kWh(19)"], "402.5000000"); // kVAh, L3
        QCOMPARE(s["txt_kWh(0)"], "4.5000000");    // kWh delivered, total
        QCOMPARE(s["txt_kWh(4)"], "1204.5000000"); // kVAh, total
    }

private:
    void show(const QByteArray& image)
    {
        m_reading.fresh = 0;
        DecodeRealTimeImage(image, m_reading);
        m_display.ShowRealTimeData(m_reading);
    }

    TextScreen m_screen;
    MeterReading m_reading;
    RealTimeDisplay m_display{m_screen};
};

QTEST_GUILESS_MAIN(RealTimeDisplayTest)
#include "RealTimeDisplayTest.moc"
