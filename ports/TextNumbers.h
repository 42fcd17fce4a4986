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
// for an empty text or one with anything else in it ("12a").
//
// The decimal separator follows the PC's locale: where decimals are written with a comma,
// "120,5" is 120.5. A point is a decimal point everywhere, and group separators are never
// taken ("1,500" and, under a comma locale, "1.500,0" are not numbers), so that a typed
// ratio can never be read a thousand times too large or small: the field is refused instead.
// The leading value above stays locale-free, so "120,5" leads with 120 under every locale.
std::optional<double> NumericValue(const QString& text);

// Why `text` cannot be taken as a number although it reads as one: the PC's locale, whose
// point groups thousands, reads "2.000" as 2000 while the decimal point makes it 2. Empty when
// the text has one reading only. The message shows both readings, so that the operator types
// the number the meter should get without a group separator.
QString AmbiguousReading(const QString& text);

// `value` rounded to the nearest whole number, halves to even (2.5 gives 2, 3.5 gives 4), as
// the signed 16-bit register value the meter takes; nothing when it does not fit.
std::optional<qint16> WholeNumber16(double value);

// The whole number of a text: its numeric value as a 16-bit whole number.
std::optional<qint16> WholeNumberOf(const QString& text);

// The whole number of a text as a 32-bit value (interval numbers reach beyond 16 bits).
std::optional<qint32> WholeNumber32Of(const QString& text);
