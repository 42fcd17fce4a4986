#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <array>

// The four bytes of one meter float as they arrive: the low-order register first, each
// register high byte first. As a single-precision value, most significant byte first, they
// are bytes 2, 3, 0, 1.
using FloatBytes = std::array<quint8, 4>;

// Copies the four bytes at `offset` of a reply image into a work buffer.
FloatBytes WorkBytes(const QByteArray& data, qsizetype offset);

// Assembles the value from sign, exponent and mantissa with powers of two. Infinity gives
// ±1 and not-a-number gives ±0: a meter that reports one has a fault in that measurement, and a
// small number in its field is easier to read past than "inf" or "nan" in a grid of values.
void Trans_4Bytes_to_Float(const FloatBytes& bytes, double& result);

// Trans_4Bytes_to_Float of the four bytes at `offset`.
double FloatAt(const QByteArray& data, qsizetype offset);
