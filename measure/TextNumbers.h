#pragma once

#include <QString>

#include <optional>

// The leading numeric value of a text: optional blanks and sign, digits with an optional
// decimal point and exponent, read from the start; 0 when the text does not start with a
// number. Locale-free, as the meter's numbers are.
double LeadingValue(const QString& text);

// The text as a whole 32-bit number, or nothing when it is not one.
std::optional<qint32> WholeNumber(const QString& text);
