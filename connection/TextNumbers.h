#pragma once

#include <QString>

#include <optional>

// How the tool reads a number the operator typed or picked. One set of rules for every
// command, check and list, so that a text the address check accepts is the address sent.

// The leading numeric value of a text: optional blanks and sign, digits with an optional
// decimal point and exponent, read from the start; 0 when the text does not start with a
// number. Locale-free, like the meter's own numbers.
double LeadingValue(const QString& text);

// The text's value when the whole of it (blanks around it aside) reads as a number; nothing
// for an empty text or one with anything else in it ("12a", "1,5").
std::optional<double> NumericValue(const QString& text);

// `value` rounded to the nearest whole number, halves to even (2.5 gives 2, 3.5 gives 4), as
// the signed 16-bit register value the meter takes; nothing when it does not fit.
std::optional<qint16> WholeNumber16(double value);

// The whole number of a text: its numeric value as a 16-bit whole number.
std::optional<qint16> WholeNumberOf(const QString& text);
