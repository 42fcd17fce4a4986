#pragma once

#include "connection/PendingCommands.h"
#include "loadprofile/LpNumberLists.h"
#include "measure/RealTimeDisplay.h"

#include <QObject>

class Connection;
class IntervalLists;
class Screen;

// The tool's main loop while on line: every tick of `Timer1Sec` reads the meter's nine
// register blocks, shows what they hold, keeps the interval lists current and then sends the
// commands the operator asked for. Any failed read ends the tick; the values on screen stay.
class PollCycle : public QObject {
    Q_OBJECT
public:
    PollCycle(Connection& connection, Screen& screen, IntervalLists& lists, QObject* parent = nullptr);

    // One tick. Never runs again while a previous tick still waits inside a transaction; a
    // tick that came due meanwhile starts as soon as the running one returns.
    void Timer1Sec_Timer();
    // The routine that sends the command of `flag` when the tick serves it.
    void SetRoutine(PendingCommands::Flag flag, std::function<void()> routine);

    PendingCommands pending;
    RealTimeDisplay display;
    LpNumberLists numberLists;
    qint16 PollStep = 0;
    double PtRatio1Value = 0.0;

private:
    bool ReadRealTimeImage();
    bool ReadFrequency();
    void ReadEnergy();
    bool ReadRatios();
    void ReadPtRatio2();
    bool Read(quint8 function, quint16 start, quint16 count);
    bool CommOK() const;

    Connection& m_connection;
    Screen& m_screen;
    bool m_tickRunning = false;
    bool m_tickDue = false;
};
