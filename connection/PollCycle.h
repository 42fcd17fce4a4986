#pragma once

#include "connection/PendingCommands.h"
#include "link/RegisterLink.h"
#include "loadprofile/LpNumberLists.h"
#include "measure/MeterReading.h"
#include "measure/PollPlan.h"
#include "measure/RealTimeDisplay.h"

#include <QObject>

class Clock;
class Connection;
class IntervalLists;
class Screen;

// The tool's main loop while on line: every tick of `Timer1Sec` reads the meter's nine
// register blocks, shows what they hold, keeps the interval lists current and then sends the
// commands the operator asked for. A read that fails or is abandoned ends the tick; the values
// on screen stay. A tick whose nine reads all succeeded hands its reading on.
class PollCycle : public QObject {
    Q_OBJECT
public:
    PollCycle(Connection& connection, Screen& screen, IntervalLists& lists, const Clock& clock,
              QObject* parent = nullptr);

    // One tick. Never runs again while a previous tick still waits inside a transaction; a
    // tick that came due meanwhile starts as soon as the running one returns.
    void Timer1Sec_Timer();
    // The routine that sends the command of `flag` when the tick serves it.
    void SetRoutine(PendingCommands::Flag flag, std::function<void()> routine);
    // The latest values, kept from tick to tick; `fresh` tells what this tick read.
    const MeterReading& Reading() const { return m_reading; }

    PendingCommands pending;
    RealTimeDisplay display;
    LpNumberLists numberLists;
    qint16 PollStep = 0;
    double PtRatio1Value = 0.0;

signals:
    void readingTaken(const MeterReading& reading);
    // Every tick that ran, however it ended: `reading.fresh` tells which blocks it read.
    void tickEnded(const MeterReading& reading);

private:
    bool ReadRealTimeImage();
    bool ReadFrequency();
    TransactionOutcome ReadEnergy();
    bool ReadRatios();
    bool ReadPtRatio2();
    TransactionOutcome Read(const PollBlock& block);
    void StartNextTickIfDue(qint64 elapsedMs);

    Connection& m_connection;
    Screen& m_screen;
    const Clock& m_clock;
    MeterReading m_reading;
    bool m_tickRunning = false;
    bool m_tickDue = false;
};
