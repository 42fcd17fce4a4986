#pragma once

#include "measure/MeterReading.h"

#include <QByteArray>

// Reply data of the poll blocks into the typed reading. Each routine takes the data bytes of
// its block(s), two per register, high byte first, and marks its block fresh and known.

// The 564-byte image of blocks 1 to 5.
void DecodeRealTimeImage(const QByteArray& image, MeterReading& reading);
void DecodeFrequency(const QByteArray& data, MeterReading& reading);
// The 60-byte energy block.
void DecodeEnergy(const QByteArray& data, MeterReading& reading);
void DecodeRatios(const QByteArray& data, MeterReading& reading);
// PT ratio 2 as the meter holds it, relative to PT ratio 1; `ptRatio1` makes it absolute.
void DecodePtRatio2(const QByteArray& data, double ptRatio1, MeterReading& reading);
