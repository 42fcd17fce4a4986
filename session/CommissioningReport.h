#pragma once

#include "measure/MeterReading.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class MeterSession;
class TrendSeries;

// The record handed over when a meter is commissioned: which meter, how it is set, what it
// measured, whether it is wired right, who did it and when. Built from the session's state
// alone, so that the window and the command line report the same.
struct CommissioningReport {
    struct Row {
        QString label;
        QString value;
    };
    struct Measurement {
        QString name;  // as FieldsOf names it: "voltage_an"
        QString label; // in words: "Voltage L1-N"
        double value = 0;
        QString unit;  // "V", "kW"; empty for a power factor
        QString unitKey; // the unit in a JSON key: "v", "kw", "deg"
        std::optional<double> min; // over the session's trend, when one was given
        std::optional<double> max;
    };

    // Who, where and when.
    QString site;
    QString engineer;
    QString note;
    QString toolVersion;
    QDateTime madeAt; // the PC's clock when the report was made

    // The meter and the line it was reached on.
    QString identification;
    int address = 0;
    QString baudRate;
    QString stopBits;
    QDateTime takenAt;      // the PC's clock when the reading was taken
    QDateTime meterClock;   // the meter's clock in the same reading
    bool fresh = false;     // the latest tick read every block while on line

    QList<Row> settings;
    QList<Measurement> measurements;
    QStringList verdict;    // the findings, or that every check passed
    QStringList unchecked;  // what the reading gave no ground to judge
    QStringList history;
    MeterReading reading;   // for the phasor diagram

    // The meter's clock ahead of the PC's, in seconds.
    qint64 ClockDifference() const { return takenAt.secsTo(meterClock); }
    // "taken 2026-11-24 13:05:07 UTC+01:00", saying so when the reading is not current.
    QString ReadingTime() const;
};

// What the window or the command line adds to the session's state.
struct ReportExtras {
    QString site;
    QString engineer;
    QString note;
    QString toolVersion;
    QDateTime madeAt;
    const TrendSeries* trend = nullptr; // each measurement's minimum and maximum; none without
    QStringList history;
};

// The report of the session's latest reading, which must hold every block.
CommissioningReport BuildReport(const MeterSession& session, const ReportExtras& extras);

// The same content as data for scripts and archives; each measurement's key names its unit.
QByteArray ReportJson(const CommissioningReport& report);

// "2026-11-24 13:05:07 UTC+01:00": reports travel between sites.
QString TimeWithOffset(const QDateTime& time);
