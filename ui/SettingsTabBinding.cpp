#include "ui/SettingsTabBinding.h"

#include "ports/OperatorPrompts.h"
#include "session/MeterSession.h"
#include "ui/ConfirmedRequest.h"
#include "ui/FieldValues.h"
#include "ui/MainForm.h"
#include "ui/StateColours.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

#include <algorithm>

namespace {

// A meter value other than the one chosen: marked in colour and in the text itself.
const QColor kDiffersColour(0xFF, 0xE0, 0x80);
const QString kDiffersMark = QStringLiteral("≠ ");

} // namespace

SettingsTabBinding::SettingsTabBinding(MainForm& form, MeterSession& session, OperatorPrompts& prompts)
    : m_form(form), m_session(session), m_prompts(prompts)
{
    ConnectButtons();
    ConnectChecks();
    MeterSettings& settings = session.settings;
    connect(&settings, &MeterSettings::readBackChanged, this, &SettingsTabBinding::ShowReadBack);
    connect(&settings.history, &SettingsHistory::changed, this, &SettingsTabBinding::ShowHistory);
    // A new choice is compared with what the meter holds at once, not at the next reading.
    for (QComboBox* list : {form.Combo_Modbus_add, form.Combo_Modbus_BaudRate, form.Combo_SetStopBit,
                            form.Combo_SetWiring, form.Combo_PT_Ratio, form.Combo_CT_Ratio, form.Combo1,
                            form.Combo_Display_Ser_sel, form.Combo_Display_Item_sel})
        connect(list, &QComboBox::currentTextChanged, this, &SettingsTabBinding::ShowReadBack);
    for (QLineEdit* field : {form.txtPT1, form.txtPT2})
        connect(field, &QLineEdit::textChanged, this, &SettingsTabBinding::ShowReadBack);
}

// A click only asks for the command, and only while the fields hold text; the tick that
// serves it reads them.
void SettingsTabBinding::ConnectButtons()
{
    MainForm& f = m_form;
    m_buttons = {
        {f.cmd_Test_Modbus, Setting::Address, {f.Combo_Modbus_add}},           // cmd_Test_Modbus_Click
        {f.Cmd_Modbus_BaudRate, Setting::BaudRate, {f.Combo_Modbus_BaudRate}}, // Cmd_Modbus_BaudRate_Click
        {f.Comm_Change_StopBit, Setting::StopBit, {f.Combo_SetStopBit}},       // Comm_Change_StopBit_Click
        {f.Comm_ChangeWiring, Setting::Wiring, {f.Combo_SetWiring}},           // Comm_ChangeWiring_Click
        {f.Cmd_PT_Ratio, Setting::PtRatio1, {f.Combo_PT_Ratio}},               // Cmd_PT_Ratio_Click
        {f.Comm_change_VT, Setting::PtRatio2, {f.txtPT1, f.txtPT2}},           // Comm_change_VT_Click
        {f.Cmd_CT_Ratio, Setting::CtRatio, {f.Combo_CT_Ratio}},                // Cmd_CT_Ratio_Click
        {f.Comm_SetTime, Setting::Clock, {}},                                  // Comm_SetTime_Click
        {f.Cmd_Dis_MFGSerial, Setting::SerialDisplay, {}},                     // Cmd_Dis_MFGSerial_Click
        {f.Command5, Setting::DisplayItem, {f.Combo_Display_Ser_sel, f.Combo_Display_Item_sel}}, // Command5_Click
        {f.Command6, Setting::ScrollTime, {f.Combo1}},                         // Command6_Click
    };
    for (const SettingButton& entry : m_buttons) {
        connect(entry.button, &QPushButton::clicked, this, [this, entry] {
            if (AllFilled(entry.fields))
                m_session.Request(entry.setting, FieldsSource(entry.setting, entry.fields), m_session.connection.Number());
        });
    }
    connect(f.Command1, &QPushButton::clicked, this, &SettingsTabBinding::Command1_Click);
}

void SettingsTabBinding::Command1_Click()
{
    const SettingSpec& clear = SpecOf(Setting::ClearKwh);
    RequestConfirmed(m_session, clear.setting, FixedValue({}),
                     [this, &clear] { return m_prompts.Confirm(clear.caption, clear.question); });
}

void SettingsTabBinding::ConnectChecks()
{
    const QList<std::pair<QComboBox*, TypedField>> checks{
        {m_form.Combo_Modbus_add, TypedField::NewAddress}, // Combo_Modbus_add_Validate
        {m_form.Combo_CT_Ratio, TypedField::CtRatio},      // Combo_CT_Ratio_Validate
        {m_form.Combo_PT_Ratio, TypedField::PtRatio},      // Combo_PT_Ratio_Validate
    };
    for (const auto& [field, check] : checks)
        m_checks.Add(field, [this, field = field, check = check] { Validate(field, check); });
    m_checks.Add(m_form.Combo_Modbus_add_sel, [this] { Combo_Modbus_add_sel_Validate(); });
}

// A refused value is reported and emptied, so that its button does nothing.
bool SettingsTabBinding::Validate(QComboBox* field, TypedField check)
{
    const FieldCheck result = CheckTypedField(check, field->currentText());
    if (!result.accepted) {
        m_prompts.Critical(result.message);
        field->setEditText(QString());
    }
    return result.accepted;
}

// A whole number accepted here becomes the address every request goes to.
void SettingsTabBinding::Combo_Modbus_add_sel_Validate()
{
    if (Validate(m_form.Combo_Modbus_add_sel, TypedField::TalkAddress))
        m_session.ChooseAddress(m_form.Combo_Modbus_add_sel->currentText());
}

const SettingsTabBinding::SettingButton* SettingsTabBinding::ButtonOf(Setting setting) const
{
    const auto at = std::find_if(m_buttons.begin(), m_buttons.end(), [setting](const SettingButton& b) { return b.setting == setting; });
    return at == m_buttons.end() ? nullptr : &*at;
}

QList<QWidget*> SettingsTabBinding::FieldsOf(Setting setting) const
{
    const SettingButton* button = ButtonOf(setting);
    return button == nullptr ? QList<QWidget*>() : button->fields;
}

SourcedValue SettingsTabBinding::Chosen(Setting setting) const
{
    const SettingButton* button = ButtonOf(setting);
    return button == nullptr ? SourcedValue() : ValueOfFields(setting, button->fields);
}

void SettingsTabBinding::ShowReadBack()
{
    const auto chosen = [this](Setting setting) { return Chosen(setting); };
    for (const SettingReadbackRow& row : m_session.settings.ReadBack(chosen)) {
        QLineEdit* field = m_form.SettingReadbacks.value(row.setting);
        field->setText(row.differs ? kDiffersMark + row.meter : row.meter);
        field->setCursorPosition(0);
        field->setToolTip(row.differs ? row.meter + QStringLiteral(": the meter holds another value than the one chosen here")
                                      : row.meter);
        if (row.differs)
            SetBackground(field, kDiffersColour);
        else
            ClearBackground(field);
    }
}

void SettingsTabBinding::ShowHistory()
{
    const QList<SettingOutcome>& entries = m_session.settings.history.Entries();
    QTableWidget* table = m_form.tbl_SettingsHistory;
    table->setRowCount(int(entries.size()));
    // Newest first.
    for (int row = 0; row < entries.size(); ++row) {
        const SettingOutcome& e = entries[entries.size() - 1 - row];
        const QString from = e.from.isEmpty() ? QStringLiteral("?") : e.from;
        const QStringList cells{e.at.toString(QStringLiteral("HH:mm:ss")), SettingName(e.setting),
                                from + QStringLiteral(" → ") + e.to, e.Text()};
        for (int column = 0; column < cells.size(); ++column)
            table->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
    table->resizeColumnsToContents();
}
