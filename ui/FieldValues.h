#pragma once

#include "settings/Setting.h"
#include "settings/SettingValue.h"

#include <QList>

class QWidget;

// What an operator's field holds: a list's text, picked or typed, or a line's text.
QString FieldText(const QWidget* field);
// Whether each of `fields` holds text: a button of a typed value asks only then.
bool AllFilled(const QList<QWidget*>& fields);
// The value of `setting` as its `fields` hold it now, one field for each of the setting's,
// checked as the operator's input is.
SourcedValue ValueOfFields(Setting setting, const QList<QWidget*>& fields);
// The same, read when the command is served: text typed after the click counts, and is
// checked then.
ValueSource FieldsSource(Setting setting, const QList<QWidget*>& fields);
// Puts `value` into `fields` as the operator would pick or type it: a choice selects its
// entry, a typed number is shown as typed.
void ShowValue(Setting setting, const SettingValue& value, const QList<QWidget*>& fields);
