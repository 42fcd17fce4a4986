#pragma once

#include "measure/MeterReading.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

// How a reading is printed: an aligned table for people, its values with their units; JSON or
// CSV for programs, each key ending in its unit ("voltage_an_v"). Each starts with the meter's
// address when it is given (a line of several meters), the PC's time of the reading ("time"),
// then the reading's fields.
enum class ReadingFormat { Table, Json, Csv };

std::optional<ReadingFormat> ParseReadingFormat(const QString& text);

// The whole reading: a table, one JSON object, or a CSV header line and one row.
QByteArray Printed(const MeterReading& reading, ReadingFormat format, std::optional<int> address = std::nullopt);
// Text from the meter or the system as a terminal may show it: every control character (C0,
// DEL, C1) as a visible "\xNN", so that ESC, CR and line feeds in an identification neither
// move the cursor nor start an escape sequence.
QString VisibleText(const QString& text);

// One line a tick for a log: a JSON object on one line, or a CSV row (and the header line
// before the first row when `withHeader`).
QByteArray LogLine(const MeterReading& reading, ReadingFormat format, bool withHeader, std::optional<int> address = std::nullopt);
