#pragma once

#include <QList>
#include <QString>

#include <functional>

// A setting's value: one number for each of its fields, in the order the setting table lists
// them. A typed field holds the number as typed (an address, a ratio); a choice holds its
// entry's number, or the entry's index where the entries are words (the wiring modes).
struct SettingValue {
    QList<double> fields;
    friend bool operator==(const SettingValue&, const SettingValue&) = default;
};

// What a value source gives when the poll cycle serves its command: the value, nothing (a
// field left empty: the command sends nothing, silently), or a refusal with the check's words.
struct SourcedValue {
    enum class State { Value, Empty, Refused };
    State state = State::Empty;
    SettingValue value;
    QString reason;

    static SourcedValue Of(const SettingValue& value) { return {State::Value, value, QString()}; }
    static SourcedValue Refused(const QString& reason) { return {State::Refused, {}, reason}; }
};

// Where a command takes its value from, asked when the command is served and not before: the
// window reads the operator's field at that moment; the command line and a configuration file
// hold a fixed value.
using ValueSource = std::function<SourcedValue()>;

inline ValueSource FixedValue(const SettingValue& value)
{
    return [value] { return SourcedValue::Of(value); };
}
