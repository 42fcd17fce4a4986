#pragma once

#include "measure/MeterReading.h"
#include "settings/SettingTable.h"

#include <QString>
#include <QStringList>

#include <optional>

// What "qx5820 set" shares between its parts: the setting named on the command line, the
// words of its value, and the help.

// The setting a command line names. lp-group and lp-clear name one of two settings by the
// group that follows them.
struct SetTarget {
    const SettingSpec* entry = nullptr;
    int group = 0; // lp-group and lp-clear: 1 or 2
    bool IsGroupSetUp() const { return entry->setting == Setting::LpGroup1 || entry->setting == Setting::LpGroup2; }
    // How messages name field `field`: "wiring MODE", "lp-group 1 channel 2 code".
    QString FieldName(int field) const;
};

// `entries` as a person reads them: runs of consecutive numbers joined ("1 to 50"), the rest
// listed ("Auto, 1P2W").
QString AllowedValues(const QStringList& entries);

// The words of a setting's value as its usage names them: "POSITION ITEM".
QString FieldWords(const SettingSpec& entry);
// Every setting, its values and what it needs, for set --help.
QString SetHelp();
// The settings' names, for messages: "clock, address, baud, ...".
QString SettingKeys();

// The field of `setting` whose word the checks refuse; nothing when they take every word.
std::optional<int> RefusedField(Setting setting, const QStringList& words);
// A word that is none of its choice field's entries: the message on stderr naming the
// allowed values, and 2.
int NoneOfTheChoices(const SetTarget& target, int field, const QString& word);

// How a group set-up's field is named: "channel count", "interval", "channel 2 code".
QString GroupFieldName(int field);
// lp-group GROUP [--channels N] [--interval MIN] [--codes LIST]: one word per field of the
// group's set-up, empty where the option did not give it. Nothing after a message on stderr.
std::optional<QStringList> GroupSetUpWords(const SetTarget& target, const QString& channels, const QString& interval,
                                           const QString& codes);
// The words given, the empty ones filled with what the meter reports in `reading`: the write
// leaves those as they are. Nothing after a message on stderr when the meter reports a value
// none of the choices holds.
std::optional<QStringList> CompleteGroupSetUp(const SetTarget& target, QStringList words, const MeterReading& reading);
// After a set-up: the line saying the group's records went, or nothing when they did not.
QString RecordsDeleted(const SetTarget& target, const MeterReading& before, const MeterReading& after);
