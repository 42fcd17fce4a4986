#include "ui/RealTimeDisplay.h"

#include "measure/DisplayItemNames.h"
#include "measure/FixedFormat.h"
#include "ui/Screen.h"

#include <iterator>

namespace {

// One row of measurements: its values shown in elements `first` onward of a control array
// with `decimals` digits. Currents, powers and power factors take elements 3 to 6 (L1, L2,
// L3, total or average); voltages 0 to 3; angles 0 to 2. The lower elements of the current,
// power and power-factor arrays are not written here.
struct MeasurementRow {
    const char* array;
    int first;
    int decimals;
    const double* values;
    int count;
};

constexpr const char* kWiringTexts[] = {"none", "1P2W", "1P3W", "3P3W  2CT", "3P3W  3CT", "3P4W"};

QString Number(int value)
{
    return QString::number(value);
}

} // namespace

void RealTimeDisplay::ShowBlock(MeterReading::Block block, const MeterReading& reading)
{
    switch (block) {
    case MeterReading::RealTimeImage: ShowRealTimeData(reading); break;
    case MeterReading::Frequency: ShowFrequency(reading); break;
    case MeterReading::Energy: ShowEnergyData(reading); break;
    case MeterReading::Ratios: ShowRatios(reading); break;
    case MeterReading::PtRatio2: ShowPtRatio2(reading); break;
    }
}

void RealTimeDisplay::ShowRealTimeData(const MeterReading& reading)
{
    ShowMeasurements(reading);
    ShowClock(reading.clock);
    ShowIdentification(reading.identification);
    ShowLoadProfileStatus(reading);
    ShowWiringAndPhases(reading);
    if (bDisplayItemSent != kFalse)
        ShowDisplayItems(reading);
}

void RealTimeDisplay::ShowMeasurements(const MeterReading& r)
{
    // In the order the fields have always been filled.
    const MeasurementRow rows[] = {
        {"txt_I_Result", 3, 5, r.current.data(), 4},
        {"txt_W_Result", 3, 7, r.activePower.data(), 4},
        {"txt_Var_Result", 3, 7, r.reactivePower.data(), 4},
        {"txt_VA_Result", 3, 7, r.apparentPower.data(), 4},
        {"txt_V_Angle", 0, 5, r.voltageAngle.data(), 3},
        {"txt_I_Angle", 0, 5, r.currentAngle.data(), 3},
        {"txt_PF_Result", 3, 5, r.powerFactor.data(), 4},
        {"txt_V_N", 0, 5, r.phaseVoltage.data(), 4},
        {"txt_V_B", 0, 5, r.lineVoltage.data(), 4},
    };
    for (const MeasurementRow& row : rows)
        for (int i = 0; i < row.count; ++i)
            m_screen.SetText(Element(row.array, row.first + i), FormatFixed(row.values[i], row.decimals));
}

void RealTimeDisplay::ShowClock(const MeterReading::Clock& c)
{
    // Numbers without leading zeros: 2010/6/5 8:3:7.
    m_screen.SetText(QStringLiteral("Text5"), QStringLiteral("%1/%2/%3 %4:%5:%6")
                                                  .arg(Number(c.year), Number(c.month), Number(c.day),
                                                       Number(c.hour), Number(c.minute), Number(c.second)));
}

void RealTimeDisplay::ShowIdentification(const QByteArray& text)
{
    // Each byte becomes the character of that code, zero bytes included: the meter's text is
    // shown as it is, and the file names built from it later clean it themselves.
    QString shown;
    for (char byte : text)
        shown += QChar(quint8(byte));
    m_screen.SetText(QStringLiteral("Text3"), shown);
}

void RealTimeDisplay::ShowLoadProfileStatus(const MeterReading& reading)
{
    for (int g = 0; g < 2; ++g) {
        const MeterReading::LoadProfileGroup& group = reading.loadProfile[std::size_t(g)];
        m_screen.SetText(Element("Text_LP_Data_Counter", g), Number(group.channelCount));
        m_screen.SetText(Element("Text_LP_interval", g), Number(group.intervalMinutes));
        const char* channels = g == 0 ? "Text_LP_G1_Data" : "Text_LP_G2_Data";
        for (int i = 0; i < group.channelCodes.size(); ++i)
            m_screen.SetText(Element(channels, i), Number(group.channelCodes[i]));
        m_screen.SetText(Element("Text_Valid_int_num", g), Number(group.validIntervals));
        m_screen.SetText(Element("Text_Max_int_num", g), Number(group.maxIntervals));
    }
}

void RealTimeDisplay::ShowWiringAndPhases(const MeterReading& reading)
{
    // Codes without a text leave the field as it was.
    if (reading.wiringCode >= 0 && reading.wiringCode < int(std::size(kWiringTexts)))
        m_screen.SetText(QStringLiteral("txt_Wiring"), QLatin1String(kWiringTexts[reading.wiringCode]));
    const int sequence = reading.phaseSequenceCode;
    const char* phasor = sequence == 1 ? "ABC" : sequence == 2 ? "CBA" : "error";
    m_screen.SetText(QStringLiteral("txt_Phasor"), QLatin1String(phasor));
}

void RealTimeDisplay::ShowDisplayItems(const MeterReading& reading)
{
    bDisplayItemSent = kFalse;
    // Positions without a named item add no line, so the numbering shows the gaps.
    QString text = QStringLiteral("Display Item  : \r\n");
    for (std::size_t i = 0; i < reading.displayItems.size(); ++i) {
        const int code = reading.displayItems[i];
        const QString name = DisplayItemName(code);
        if (!name.isEmpty())
            text += QStringLiteral("%1 : %2(%3)\r\n").arg(i + 1).arg(name).arg(code);
    }
    m_screen.SetText(QStringLiteral("txt_Display_Item"), text);
}

void RealTimeDisplay::ShowFrequency(const MeterReading& reading)
{
    m_screen.SetText(QStringLiteral("txtFrequency"), FormatFixed(reading.frequency, 2));
}

void RealTimeDisplay::ShowEnergyData(const MeterReading& reading)
{
    // Element 5 + 5t + k is kind k of phase t; elements 0 to 4 show each kind's total.
    for (int t = 0; t < 3; ++t)
        for (int k = 0; k < MeterReading::EnergyKinds; ++k)
            m_screen.SetText(Element("txt_kWh", 5 + 5 * t + k), FormatFixed(reading.energy[k][t], 7));
    for (int k = 0; k < MeterReading::EnergyKinds; ++k)
        m_screen.SetText(Element("txt_kWh", k), FormatFixed(reading.EnergyTotal(k), 7));
}

void RealTimeDisplay::ShowRatios(const MeterReading& reading)
{
    // A ratio register beyond the signed 16-bit range still shows what the meter holds,
    // marked, so that the operator sees it and can send a corrected ratio.
    const auto show = [this](const char* field, quint16 raw, double value) {
        QString text = FormatFixed(value, 1);
        if (!MeterReading::RatioInRange(raw))
            text += QStringLiteral(" (out of range)");
        m_screen.SetText(QLatin1String(field), text);
    };
    show("txt_PTRatio", reading.ptRatio1Register, reading.ptRatio1Register / 10.0);
    show("txt_CTRatio", reading.ctRatioRegister, reading.ctRatioRegister); // a CT ratio of 5 shows "5.0"
}

void RealTimeDisplay::ShowPtRatio2(const MeterReading& reading)
{
    m_screen.SetText(QStringLiteral("txtPTRatio2"), FormatFixed(reading.ptRatio2, 4));
}
