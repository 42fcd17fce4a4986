#pragma once

#include "measure/MeterReading.h"

#include <QJsonValue>
#include <QList>
#include <QString>

// A reading as a flat list of named values, for output that other programs read: a table,
// JSON, CSV. Names are stable and lower case ("voltage_an", "active_power_total"); numbers
// keep the meter's single precision and no more, so 230.1 reads 230.1, not 230.100006.
struct ReadingField {
    QString name;
    QJsonValue value;  // a number or a text
    QString unit;      // "V", "kWh", "°"; empty for a ratio, a count, a text
    QString unitKey;   // the unit as a key ends with it: "v", "kwh", "deg"
    bool measured = false; // a measurement (a power factor too), not a ratio or setting
    QString label{};       // a measurement's name in words, for people: "Voltage L1-N"

    // The name with its unit, for keys that other programs read: "voltage_an_v", "frequency_hz".
    QString Key() const { return unitKey.isEmpty() ? name : name + QLatin1Char('_') + unitKey; }
};

// Every measurement, energy, ratio and setting the reading holds, in a fixed order: the same
// names whichever blocks were read, so that lines of a log line up. Blocks never read give
// null values.
QList<ReadingField> FieldsOf(const MeterReading& reading);

// The shortest decimal that reads back as the same single: the meter sends singles (and the
// trend keeps them), and the digits a double adds to them are noise.
double SinglePrecision(double value);

// The value as a table or a CSV file shows it: numbers in their shortest plain form (400000,
// never 4e+05), texts as they are, null as an empty text.
QString FieldText(const QJsonValue& value);

// The meter's 16 characters without their NUL or blank padding; bytes beyond ASCII are taken
// as Latin-1, so that every byte stays visible.
QString IdentificationText(const QByteArray& bytes);
