#pragma once

#include "measure/MeterReading.h"

#include <QWidget>

class PhasorDiagram;
class PollCycle;
class QLabel;
class ReadingFreshness;

// The "Phasors and wiring" tab: the phasor diagram of the latest reading and, beside it, the
// core's verdict on the wiring, in the words the core gives. A verdict on a reading that is no
// longer the meter's is greyed and says so, as the real-time fields are (ReadingFreshness).
class PhasorView : public QWidget {
public:
    PhasorView(PollCycle& poll, const ReadingFreshness& freshness, QWidget* parent = nullptr);

    void ShowReading(const MeterReading& reading);

private:
    void ShowVerdict();

    const ReadingFreshness& m_freshness;
    PhasorDiagram* m_diagram = nullptr;
    QLabel* m_headline = nullptr;
    QLabel* m_findings = nullptr;
    QString m_summary; // the latest verdict in a few words; empty before the first reading
    QString m_taken;   // its reading's time
    bool m_passed = false;
};
