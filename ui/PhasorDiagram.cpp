#include "ui/PhasorDiagram.h"

#include "report/PhasorPainter.h"

#include <QPainter>

PhasorDiagram::PhasorDiagram(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("PhasorDiagram"));
    setAccessibleName(QStringLiteral("Phasor diagram of the voltages and currents"));
}

void PhasorDiagram::ShowReading(const MeterReading& reading)
{
    m_reading = reading;
    update();
}

void PhasorDiagram::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    PaintPhasors(painter, rect(), m_reading, palette().color(QPalette::WindowText));
}
