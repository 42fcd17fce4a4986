#pragma once

#include "measure/MeterReading.h"

#include <QWidget>

#include <optional>

// The three voltage and three current phasors of a reading, each family on its own scale
// (its longest arrow reaches the same ring), coloured and labelled by phase. Angles grow
// clockwise from L1's voltage pointing right, as they grow in the lagging direction.
class PhasorDiagram : public QWidget {
public:
    explicit PhasorDiagram(QWidget* parent = nullptr);

    void ShowReading(const MeterReading& reading);
    QSize sizeHint() const override { return {420, 420}; }
    QSize minimumSizeHint() const override { return {240, 240}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::optional<MeterReading> m_reading;
};
