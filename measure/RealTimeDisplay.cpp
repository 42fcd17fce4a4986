#include "measure/RealTimeDisplay.h"

#include "measure/DisplayItemNames.h"
#include "measure/FloatDecoding.h"
#include "measure/Screen.h"
#include "measure/TextNumbers.h"

namespace {

// One row of floats in the real-time image: `count` values from image byte `base`, shown in
// elements `first` onward of a control array with `decimals` digits.
struct FloatGroup {
    qsizetype base;
    int count;
    const char* array;
    int first;
    int decimals;
};

// In the order the meter's tools always filled them. Currents, powers and power factors
// take elements 3 to 6 (L1, L2, L3, total or average); voltages 0 to 3; angles 0 to 2.
constexpr FloatGroup kFloatGroups[] = {
    {372, 4, "txt_I_Result", 3, 5},   // input 0x1090: current a, b, c, average (A)
    {388, 4, "txt_W_Result", 3, 7},   // input 0x1098: active power a, b, c, total (kW)
    {404, 4, "txt_Var_Result", 3, 7}, // input 0x10A0: reactive power (kvar)
    {420, 4, "txt_VA_Result", 3, 7},  // input 0x10A8: apparent power (kVA)
    {452, 3, "txt_V_Angle", 0, 5},    // input 0x10B8: voltage phase angles (degrees)
    {464, 3, "txt_I_Angle", 0, 5},    // input 0x10BE: current phase angles (degrees)
    {436, 4, "txt_PF_Result", 3, 5},  // input 0x10B0: power factor a, b, c, average
    {340, 4, "txt_V_N", 0, 5},        // input 0x1080: phase voltage a, b, c, average (V)
    {356, 4, "txt_V_B", 0, 5},        // input 0x1088: line voltage ab, bc, ca, average (V)
};

// Image bytes of the load-profile status registers, per group.
struct GroupStatus {
    qsizetype dataCounter;
    qsizetype interval;
    qsizetype channels;
    int channelCount;
    const char* channelArray;
    qsizetype validIntervals;
    qsizetype maxIntervals;
};

constexpr GroupStatus kGroups[] = {
    {104, 106, 108, 12, "Text_LP_G1_Data", 552, 556}, // holding 0x1034.., input 0x1190, 0x1192
    {134, 136, 138, 8, "Text_LP_G2_Data", 554, 558},  // holding 0x1043.., input 0x1191, 0x1193
};

constexpr const char* kWiringTexts[] = {"none", "1P2W", "1P3W", "3P3W  2CT", "3P3W  3CT", "3P4W"};

constexpr qsizetype kClock = 71;          // low bytes of holding 0x1023..0x1028
constexpr qsizetype kIdentification = 324; // input 0x100C..0x1013, 16 characters
constexpr qsizetype kRecordRange = 560;    // input 0x1194, 0x1195
constexpr qsizetype kWiring = 477;         // low byte of input 0x10C4
constexpr qsizetype kPhaseSequence = 479;  // low byte of input 0x10C5
constexpr qsizetype kDisplayItems = 165;   // low bytes of holding 0x1052..0x1083
constexpr int kDisplayPositions = 50;

int byteAt(const QByteArray& data, qsizetype index)
{
    return quint8(data.at(index));
}

int wordAt(const QByteArray& data, qsizetype index)
{
    return byteAt(data, index) * 256 + byteAt(data, index + 1);
}

} // namespace

void RealTimeDisplay::ShowRealTimeData(const QByteArray& image, qint32 LpListCount)
{
    ShowMeasurements(image);
    ShowClock(image);
    ShowIdentification(image);
    ShowLoadProfileStatus(image);
    LpRecordRange = {double(wordAt(image, kRecordRange)), double(wordAt(image, kRecordRange + 2))};
    ShowWiringAndPhases(image);
    if (bDisplayItemSent != kFalse)
        ShowDisplayItems(image);
    WarnIfListsWillChange(LpListCount);
}

void RealTimeDisplay::ShowMeasurements(const QByteArray& image)
{
    for (const FloatGroup& group : kFloatGroups) {
        for (int i = 0; i < group.count; ++i) {
            const double value = FloatAt(image, group.base + 4 * i);
            m_screen.SetText(Element(group.array, group.first + i), FormatFixed(value, group.decimals));
        }
    }
}

void RealTimeDisplay::ShowClock(const QByteArray& image)
{
    const auto part = [&image](int field) { return QString::number(byteAt(image, kClock + 2 * field)); };
    const QString date = QString::number(2000 + byteAt(image, kClock)) + QLatin1Char('/') + part(1)
        + QLatin1Char('/') + part(2) + QLatin1Char(' ');
    m_screen.SetText(QStringLiteral("Text5"),
                     date + part(3) + QLatin1Char(':') + part(4) + QLatin1Char(':') + part(5));
}

void RealTimeDisplay::ShowIdentification(const QByteArray& image)
{
    // Each byte becomes the character of that code, zero bytes included: the meter's text is
    // shown as it is, and the file names built from it later clean it themselves.
    QString text;
    for (qsizetype i = 0; i < 16; ++i)
        text += QChar(byteAt(image, kIdentification + i));
    m_screen.SetText(QStringLiteral("Text3"), text);
}

void RealTimeDisplay::ShowLoadProfileStatus(const QByteArray& image)
{
    for (int g = 0; g < 2; ++g) {
        const GroupStatus& group = kGroups[g];
        const auto show = [&](const QString& control, qsizetype at) {
            m_screen.SetText(control, QString::number(wordAt(image, at)));
        };
        show(Element("Text_LP_Data_Counter", g), group.dataCounter);
        show(Element("Text_LP_interval", g), group.interval);
        for (int i = 0; i < group.channelCount; ++i)
            show(Element(group.channelArray, i), group.channels + 2 * i);
        show(Element("Text_Valid_int_num", g), group.validIntervals);
        show(Element("Text_Max_int_num", g), group.maxIntervals);
    }
}

void RealTimeDisplay::ShowWiringAndPhases(const QByteArray& image)
{
    const int wiring = byteAt(image, kWiring);
    if (wiring < int(std::size(kWiringTexts)))
        m_screen.SetText(QStringLiteral("txt_Wiring"), QLatin1String(kWiringTexts[wiring]));
    const int sequence = byteAt(image, kPhaseSequence);
    const char* phasor = sequence == 1 ? "ABC" : sequence == 2 ? "CBA" : "error";
    m_screen.SetText(QStringLiteral("txt_Phasor"), QLatin1String(phasor));
}

void RealTimeDisplay::ShowDisplayItems(const QByteArray& image)
{
    bDisplayItemSent = kFalse;
    QString text = QStringLiteral("Display Item  : \r\n");
    for (int i = 0; i < kDisplayPositions; ++i) {
        const int code = byteAt(image, kDisplayItems + 2 * i);
        const QString name = DisplayItemName(code);
        if (!name.isEmpty())
            text += QStringLiteral("%1 : %2(%3)\r\n").arg(i + 1).arg(name).arg(code);
    }
    m_screen.SetText(QStringLiteral("txt_Display_Item"), text);
}

void RealTimeDisplay::WarnIfListsWillChange(qint32 LpListCount)
{
    const int group = DownloadGroupElement(m_screen);
    const double valid = LeadingValue(m_screen.Text(Element("Text_Valid_int_num", group)));
    if (valid != LpListCount)
        m_screen.SetText(QStringLiteral("Text6"), QStringLiteral("Wait!! Setting 'Start no' & 'Stop no'"));
}

void RealTimeDisplay::ShowEnergyData(const QByteArray& block)
{
    // Quantity k: kWh delivered, kWh received, kvarh lagging, kvarh leading, kVAh; element t:
    // phase L1, L2, L3. Elements 0 to 4 show each quantity's total over the three phases.
    for (int k = 0; k < 5; ++k) {
        double total = 0.0;
        for (int t = 0; t < 3; ++t) {
            const double value = FloatAt(block, 12 * k + 4 * t);
            total += value;
            m_screen.SetText(Element("txt_kWh", 5 + 5 * t + k), FormatFixed(value, 7));
        }
        m_screen.SetText(Element("txt_kWh", k), FormatFixed(total, 7));
    }
}
