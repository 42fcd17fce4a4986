#pragma once

#include "measure/MeterReading.h"
#include "settings/Setting.h"
#include "settings/SettingValue.h"
#include "settings/SettingWrites.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// A meter's configuration as a file: every setting the tool writes and the poll reads back,
// each as the value the setting table takes, so that applying a file goes through the same
// checks, encoding, dispatcher order and read-back as the window's buttons.

// One setting of a configuration: a display item is one entry per position.
struct ConfiguredSetting {
    Setting setting = Setting::Clock;
    SettingValue value;
    friend bool operator==(const ConfiguredSetting&, const ConfiguredSetting&) = default;
};

// Where a file came from; applying it ignores this.
struct ConfigurationSource {
    QString identification;
    QDateTime pcTime;
    QString toolVersion;
    friend bool operator==(const ConfigurationSource&, const ConfigurationSource&) = default;
};

struct MeterConfiguration {
    // The file format this tool writes and reads.
    static constexpr int kFormat = 1;

    // In the order the poll cycle serves them; the communication settings among them.
    QList<ConfiguredSetting> settings;
    ConfigurationSource source;
    friend bool operator==(const MeterConfiguration&, const MeterConfiguration&) = default;
};

// What `reading` (a tick with every block read) holds. The meter keeps only PT ratio 2's
// ratio: it stands as the primary over a secondary of 1.
MeterConfiguration ConfigurationOf(const MeterReading& reading, const ConfigurationSource& source);

QByteArray ConfigurationJson(const MeterConfiguration& configuration);

// A file's configuration, every value checked as the operator's input is, or the refusal
// naming the field and why ("display_items[3]: 99 is none of the choices").
struct ParsedConfiguration {
    std::optional<MeterConfiguration> configuration;
    QString error;
};
ParsedConfiguration ParseConfiguration(const QByteArray& json);

// One setting of a file beside the meter's, in the setting table's words.
struct SettingComparison {
    ConfiguredSetting item;
    RegisterWrite write;
    QString file;
    QString meter;
    bool differs = false;
};
// Every setting of `configuration` against `reading`, in the order the poll cycle serves
// them. The configuration must be one ParseConfiguration or ConfigurationOf made.
QList<SettingComparison> Compare(const MeterConfiguration& configuration, const MeterReading& reading);
