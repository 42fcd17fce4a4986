#pragma once

#include "measure/MeterReading.h"

#include <QWidget>

class PhasorDiagram;
class PollCycle;
class QLabel;

// The "Phasors and wiring" tab: the phasor diagram of the latest reading and, beside it, the
// core's verdict on the wiring, in the words the core gives.
class PhasorView : public QWidget {
public:
    explicit PhasorView(PollCycle& poll, QWidget* parent = nullptr);

    void ShowReading(const MeterReading& reading);

private:
    PhasorDiagram* m_diagram = nullptr;
    QLabel* m_headline = nullptr;
    QLabel* m_findings = nullptr;
};
