#include "ui/SettingsTabBinding.h"

#include "settings/MeterSettings.h"
#include "ui/MainForm.h"
#include "ui/StateColours.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

namespace {

// A meter value other than the one chosen: marked in colour and in the text itself.
const QColor kDiffersColour(0xFF, 0xE0, 0x80);
const QString kDiffersMark = QStringLiteral("≠ ");

} // namespace

SettingsTabBinding::SettingsTabBinding(MainForm& form, MeterSettings& settings)
    : m_form(form), m_settings(settings)
{
    ConnectButtons();
    ConnectChecks();
    connect(&m_settings, &MeterSettings::readBackChanged, this, &SettingsTabBinding::ShowReadBack);
    connect(&m_settings.history, &SettingsHistory::changed, this, &SettingsTabBinding::ShowHistory);
    // A new choice is compared with what the meter holds at once, not at the next reading.
    for (QComboBox* list : {form.Combo_Modbus_add, form.Combo_Modbus_BaudRate, form.Combo_SetStopBit,
                            form.Combo_SetWiring, form.Combo_PT_Ratio, form.Combo_CT_Ratio, form.Combo1,
                            form.Combo_Display_Ser_sel, form.Combo_Display_Item_sel})
        connect(list, &QComboBox::currentTextChanged, this, &SettingsTabBinding::ShowReadBack);
    for (QLineEdit* field : {form.txtPT1, form.txtPT2})
        connect(field, &QLineEdit::textChanged, this, &SettingsTabBinding::ShowReadBack);
}

void SettingsTabBinding::ConnectButtons()
{
    MainForm& f = m_form;
    const QList<std::pair<QPushButton*, void (MeterSettings::*)()>> buttons{
        {f.cmd_Test_Modbus, &MeterSettings::cmd_Test_Modbus_Click},
        {f.Cmd_Modbus_BaudRate, &MeterSettings::Cmd_Modbus_BaudRate_Click},
        {f.Comm_Change_StopBit, &MeterSettings::Comm_Change_StopBit_Click},
        {f.Comm_ChangeWiring, &MeterSettings::Comm_ChangeWiring_Click},
        {f.Cmd_PT_Ratio, &MeterSettings::Cmd_PT_Ratio_Click},
        {f.Comm_change_VT, &MeterSettings::Comm_change_VT_Click},
        {f.Cmd_CT_Ratio, &MeterSettings::Cmd_CT_Ratio_Click},
        {f.Comm_SetTime, &MeterSettings::Comm_SetTime_Click},
        {f.Command1, &MeterSettings::Command1_Click},
        {f.Cmd_Dis_MFGSerial, &MeterSettings::Cmd_Dis_MFGSerial_Click},
        {f.Command5, &MeterSettings::Command5_Click},
        {f.Command6, &MeterSettings::Command6_Click},
    };
    for (const auto& [button, click] : buttons)
        connect(button, &QPushButton::clicked, &m_settings, click);
}

void SettingsTabBinding::ConnectChecks()
{
    const QList<std::pair<QWidget*, void (MeterSettings::*)()>> checks{
        {m_form.Combo_Modbus_add, &MeterSettings::Combo_Modbus_add_Validate},
        {m_form.Combo_Modbus_add_sel, &MeterSettings::Combo_Modbus_add_sel_Validate},
        {m_form.Combo_CT_Ratio, &MeterSettings::Combo_CT_Ratio_Validate},
        {m_form.Combo_PT_Ratio, &MeterSettings::Combo_PT_Ratio_Validate},
    };
    for (const auto& [field, check] : checks)
        m_checks.Add(field, [this, check = check] { (m_settings.*check)(); });
}

void SettingsTabBinding::ShowReadBack()
{
    for (const SettingReadbackRow& row : m_settings.ReadBack()) {
        QLineEdit* field = m_form.SettingReadbacks.value(row.setting);
        field->setText(row.differs ? kDiffersMark + row.meter : row.meter);
        field->setCursorPosition(0);
        field->setToolTip(row.differs ? QStringLiteral("The meter holds another value than the one chosen here")
                                      : QString());
        if (row.differs)
            SetBackground(field, kDiffersColour);
        else
            ClearBackground(field);
    }
}

void SettingsTabBinding::ShowHistory()
{
    const QList<HistoryEntry>& entries = m_settings.history.Entries();
    QTableWidget* table = m_form.tbl_SettingsHistory;
    table->setRowCount(int(entries.size()));
    // Newest first.
    for (int row = 0; row < entries.size(); ++row) {
        const HistoryEntry& e = entries[entries.size() - 1 - row];
        const QString from = e.from.isEmpty() ? QStringLiteral("?") : e.from;
        const QStringList cells{e.at.toString(QStringLiteral("HH:mm:ss")), SettingName(e.setting),
                                from + QStringLiteral(" → ") + e.to, e.outcome};
        for (int column = 0; column < cells.size(); ++column)
            table->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
    table->resizeColumnsToContents();
}
