#pragma once

#include "link/Bool16.h"

#include <QByteArray>

#include <array>

class Screen;

// Turns the poll cycle's replies into screen texts. Both routines only format and display.
class RealTimeDisplay {
public:
    // Length of the real-time image: holding 0x1000-0x1095, input 0x1000-0x1013,
    // 0x1080-0x10D9 and 0x1180-0x1195, two bytes per register.
    static constexpr qsizetype kImageSize = 564;
    // Length of the energy block, input 0x10D4-0x10F1.
    static constexpr qsizetype kEnergySize = 60;

    explicit RealTimeDisplay(Screen& screen) : m_screen(screen) {}

    // Fills the measurement fields, meter clock, identification, load-profile status fields,
    // record range, wiring and phase sequence, the display items once after they were sent,
    // and the warning while the interval lists are about to change. `LpListCount` is the count
    // the interval lists were last built for.
    void ShowRealTimeData(const QByteArray& image, qint32 LpListCount);
    // The five energy quantities of the three phases, and their totals.
    void ShowEnergyData(const QByteArray& block);

    // Set after the display-item command was sent: the item list is shown once more.
    Bool16 bDisplayItemSent = kFalse;
    // The meter's load-profile record range (input 0x1194 and 0x1195).
    std::array<double, 2> LpRecordRange{};

private:
    void ShowMeasurements(const QByteArray& image);
    void ShowClock(const QByteArray& image);
    void ShowIdentification(const QByteArray& image);
    void ShowLoadProfileStatus(const QByteArray& image);
    void ShowWiringAndPhases(const QByteArray& image);
    void ShowDisplayItems(const QByteArray& image);
    void WarnIfListsWillChange(qint32 LpListCount);

    Screen& m_screen;
};
