#pragma once

#include "measure/MeterReading.h"
#include "settings/InputChecks.h"
#include "settings/Setting.h"
#include "settings/SettingValue.h"
#include "settings/SettingWrites.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// One field of a setting's value: a number the operator types, with its check, or one of a
// list's entries.
struct SettingField {
    QString word;                    // as the command line's usage names it: "N", "RATE"
    std::optional<TypedField> check; // typed: the check of its range and form
    QStringList choices;             // picked: the entries; empty for a typed field
    bool Typed() const { return choices.isEmpty(); }
};

// What an encoding needs besides the value.
struct WriteContext {
    QDateTime now;            // the PC's clock
    bool serialShown = false; // whether the tool believes the meter shows its serial number
};

// A setting's write, or why none can be made of the value.
struct SettingWrite {
    std::optional<RegisterWrite> write;
    QString whyNot;
};

// Everything the tool knows of one setting, in one place: its names, the fields of its value
// and their checks, the registers and encoding of its write, and how a reading shows it.
struct SettingSpec {
    Setting setting;
    QString name;        // "CT ratio"
    QString key;         // the command line's name: "ct-ratio"
    QString help;        // what it does, for the command line's help
    QList<SettingField> fields;
    // Deletes what cannot be had back (counters, records): the operator confirms it first.
    bool confirmed = false;
    // The confirmation dialog's caption and question. A group's set-up asks only when it
    // changes the channel count, which makes the meter discard the group's records.
    QString caption;
    QString question;
    SettingWrite (*encode)(const SettingValue& value, const WriteContext& context);
    // The reading's block that brings the setting back.
    MeterReading::Block block;
    // What the meter holds of what `write` sets, in the operator's words ("19200", "3P4W");
    // empty while no reading holds it.
    QString (*reported)(const MeterReading& reading, const RegisterWrite& write);
    // The value `write` carries, in the same words.
    QString (*written)(const RegisterWrite& write);
    // Whether `reading` shows the meter holding what `write` carries; `before` is the reading
    // the write was sent after.
    bool (*shows)(const MeterReading& reading, const RegisterWrite& write, const MeterReading& before);
};

// Every setting, in the order the poll cycle serves them.
const QList<SettingSpec>& SettingTable();
const SettingSpec& SpecOf(Setting setting);
// The setting the command line calls `key`; nothing for none.
const SettingSpec* SpecByKey(const QString& key);

// How far the meter's clock may be from the PC's and still count as set.
inline constexpr int kClockToleranceSeconds = 2;

// A value from texts, one per field, checked as the operator's input is: a typed field by its
// check (the exact message on refusal), a choice by its entries, letter case aside. An empty
// text gives an empty value.
SourcedValue ValueFromTexts(Setting setting, const QStringList& texts);
// Whether writing `value` makes the meter discard what cannot be had back: a clear, or a
// group set-up whose channel count differs from the one `reading` reports. The operator
// confirms such a write first.
bool DeletesRecords(Setting setting, const SettingValue& value, const MeterReading& reading);
// Why `number` is no value of `field`: none of its choices ("4800 is none of 9600, 19200"), or
// refused by its check with the check's own message; empty when it is one.
QString FieldRefusal(const SettingField& field, double number);
// Why `value` cannot be written for `setting` (its fields' checks, its encoding); empty when
// it can, with the write in `write`.
QString CheckAndEncode(Setting setting, const SettingValue& value, const WriteContext& context,
                       std::optional<RegisterWrite>* write);
// The entry of a choice field that stands for `value`, and the other way round.
int ChoiceIndex(const SettingField& field, double value);
double ChoiceValue(const SettingField& field, int index);
