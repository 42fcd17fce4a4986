#pragma once

#include "measure/MeterReading.h"

#include <QColor>
#include <QRectF>

#include <optional>

class QPainter;

// The three voltage and three current phasors of a reading, each family on its own scale
// (its longest arrow reaches the same ring), coloured and labelled by phase. Angles grow
// clockwise from L1's voltage pointing right, as they grow in the lagging direction. Drawn with
// the painter's font into `area`, on a widget or a printed page alike; `text` is the colour of
// the rings and captions.
void PaintPhasors(QPainter& painter, const QRectF& area, const std::optional<MeterReading>& reading, const QColor& text);
