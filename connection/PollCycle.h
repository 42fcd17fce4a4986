#pragma once

#include "link/RegisterLink.h"
#include "measure/MeterReading.h"
#include "measure/PollPlan.h"

#include <QObject>

class Clock;
class Connection;

// The tool's main loop while on line: every tick of `Timer1Sec` reads the meter's nine
// register blocks, hands on what they hold as it comes in (for the screen, the interval lists),
// and then has the commands the operator asked for sent. A read that fails or is abandoned ends
// the tick; the values shown stay. A tick whose nine reads all succeeded hands its reading on.
class PollCycle : public QObject {
    Q_OBJECT
public:
    PollCycle(Connection& connection, const Clock& clock, QObject* parent = nullptr);

    // One tick. Never runs again while a previous tick still waits inside a transaction; a
    // tick that came due meanwhile starts as soon as the running one returns.
    void Timer1Sec_Timer();
    // The latest values, kept from tick to tick; `fresh` tells what this tick read.
    const MeterReading& Reading() const { return m_reading; }

    qint16 PollStep = 0;
    double PtRatio1Value = 0.0;

signals:
    // A block was read and is to be shown: the real-time image only when it came whole.
    void blockRead(MeterReading::Block block, const MeterReading& reading);
    // After the energy block, whether it was read or not: the interval lists follow the count
    // of valid intervals the meter last reported.
    void intervalCountsDue(const MeterReading& reading);
    void readingTaken(const MeterReading& reading);
    // After a reading was taken: the pending commands are to be sent now.
    void commandsDue();
    // Every tick that ran, however it ended: `reading.fresh` tells which blocks it read.
    void tickEnded(const MeterReading& reading);

private:
    bool ReadRealTimeImage();
    bool ReadFrequency();
    TransactionResult ReadEnergy();
    bool ReadRatios();
    bool ReadPtRatio2();
    TransactionResult Read(const PollBlock& block);
    void StartNextTickIfDue(qint64 elapsedMs);

    Connection& m_connection;
    const Clock& m_clock;
    MeterReading m_reading;
    bool m_tickRunning = false;
    bool m_tickDue = false;
};
