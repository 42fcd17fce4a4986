#pragma once

#include "settings/InputChecks.h"
#include "settings/Setting.h"
#include "settings/SettingValue.h"
#include "ui/LeaveChecks.h"

#include <QList>
#include <QObject>

class MainForm;
class MeterSession;
class OperatorPrompts;
class QComboBox;
class QPushButton;

// Binds the "Meter Settig" tab to the meter's settings: the buttons, the checks of the typed
// fields as they lose the focus, what the meter holds beside each setting, and the history.
class SettingsTabBinding : public QObject {
    Q_OBJECT
public:
    SettingsTabBinding(MainForm& form, MeterSession& session, OperatorPrompts& prompts);

    // The tab's fields that hold `setting`'s value, one per field of the value; none for a
    // setting the tab does not set.
    QList<QWidget*> FieldsOf(Setting setting) const;

private:
    // A button that asks for its setting with the value its fields hold when the command is
    // served.
    struct SettingButton {
        QPushButton* button;
        Setting setting;
        QList<QWidget*> fields;
    };

    const SettingButton* ButtonOf(Setting setting) const;
    void ConnectButtons();
    void Command1_Click();
    void ConnectChecks();
    bool Validate(QComboBox* field, TypedField check);
    void Combo_Modbus_add_sel_Validate();
    SourcedValue Chosen(Setting setting) const;
    void ShowReadBack();
    void ShowHistory();

    MainForm& m_form;
    MeterSession& m_session;
    OperatorPrompts& m_prompts;
    QList<SettingButton> m_buttons;
    LeaveChecks m_checks;
};
