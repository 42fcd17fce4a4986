#include "ui/FieldValues.h"

#include "settings/SettingTable.h"

#include <QComboBox>
#include <QLineEdit>

#include <algorithm>

QString FieldText(const QWidget* field)
{
    if (const auto* list = qobject_cast<const QComboBox*>(field))
        return list->currentText();
    if (const auto* line = qobject_cast<const QLineEdit*>(field))
        return line->text();
    return QString();
}

bool AllFilled(const QList<QWidget*>& fields)
{
    return std::all_of(fields.begin(), fields.end(), [](const QWidget* field) { return !FieldText(field).isEmpty(); });
}

SourcedValue ValueOfFields(Setting setting, const QList<QWidget*>& fields)
{
    QStringList texts;
    for (const QWidget* field : fields)
        texts.append(FieldText(field));
    return ValueFromTexts(setting, texts);
}

ValueSource FieldsSource(Setting setting, const QList<QWidget*>& fields)
{
    return [setting, fields] { return ValueOfFields(setting, fields); };
}

void ShowValue(Setting setting, const SettingValue& value, const QList<QWidget*>& fields)
{
    const QList<SettingField>& meaning = SpecOf(setting).fields;
    for (qsizetype i = 0; i < fields.size() && i < value.fields.size(); ++i) {
        const SettingField& field = meaning[i];
        const QString text = field.Typed() ? QString::number(value.fields[i])
                                           : field.choices.value(ChoiceIndex(field, value.fields[i]));
        if (auto* list = qobject_cast<QComboBox*>(fields[i])) {
            const int entry = list->findText(text);
            if (entry >= 0)
                list->setCurrentIndex(entry);
            else if (list->isEditable())
                list->setEditText(text);
        } else if (auto* line = qobject_cast<QLineEdit*>(fields[i])) {
            line->setText(text);
        }
    }
}
