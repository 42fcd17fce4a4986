#pragma once

#include "link/Bool16.h"
#include "measure/MeterReading.h"

class Screen;

// The reading on the window's text fields, in the fixed formats the operator knows. It only
// formats and displays: what is shown comes from the reading, never from another field.
class RealTimeDisplay {
public:
    explicit RealTimeDisplay(Screen& screen) : m_screen(screen) {}

    // The block the poll just read, on its fields.
    void ShowBlock(MeterReading::Block block, const MeterReading& reading);
    // Measurements, meter clock, identification, load-profile status, wiring and phase
    // sequence, and the display items once after they were sent.
    void ShowRealTimeData(const MeterReading& reading);
    void ShowFrequency(const MeterReading& reading);
    // The five energy quantities of the three phases, and their totals.
    void ShowEnergyData(const MeterReading& reading);
    void ShowRatios(const MeterReading& reading);
    void ShowPtRatio2(const MeterReading& reading);

    // Set after the display-item command was sent: the item list is shown once more.
    Bool16 bDisplayItemSent = kFalse;

private:
    void ShowMeasurements(const MeterReading& reading);
    void ShowClock(const MeterReading::Clock& clock);
    void ShowIdentification(const QByteArray& text);
    void ShowLoadProfileStatus(const MeterReading& reading);
    void ShowWiringAndPhases(const MeterReading& reading);
    void ShowDisplayItems(const MeterReading& reading);

    Screen& m_screen;
};
