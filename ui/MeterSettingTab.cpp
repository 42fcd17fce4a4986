#include "ui/MainForm.h"

#include "ui/ControlFactory.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace Controls;

namespace {

// PT voltages such as 33000 or 63.5.
constexpr int kVoltDigits = 6;

// Room for most values the meter reports for a setting; a longer one is whole in the tooltip.
constexpr int kReadbackCharacters = 14;
// "≠ 2026/11/21 13:05:07" and the field's margins.
constexpr int kClockCharacters = 23;

// The field beside a setting that shows what the meter holds now.
QLineEdit* ReadbackField(MainForm& form, Setting setting, const QString& name)
{
    auto* field = TextReadout(name, SettingName(setting) + QStringLiteral(" the meter holds now"));
    field->setMinimumWidth(field->fontMetrics().horizontalAdvance(QLatin1Char('0')) * kReadbackCharacters);
    form.SettingReadbacks.insert(setting, field);
    return field;
}

// A setting row: what is set, the value to send, the button that sends it and what the meter
// holds now.
void AddSettingRow(QGridLayout* grid, const QString& caption, QWidget* value, QPushButton* button, QLineEdit* readback)
{
    const int row = grid->rowCount();
    grid->addWidget(Caption(caption, value), row, 0);
    grid->addWidget(value, row, 1, Qt::AlignLeft);
    grid->addWidget(button, row, 2);
    grid->addWidget(readback, row, 3);
}

QGroupBox* SettingFrame(const QString& title, QGridLayout*& grid)
{
    auto* frame = new QGroupBox(title);
    grid = new QGridLayout(frame);
    grid->addWidget(Heading(QStringLiteral("Meter now")), 0, 3);
    // Values keep their natural width, buttons stay next to them; spare room goes to the right.
    grid->setColumnStretch(4, 1);
    return frame;
}

QWidget* BuildCommunicationFrame(MainForm& form)
{
    form.Combo_Modbus_add = ChoiceList(QStringLiteral("Combo_Modbus_add"),
        QStringLiteral("New Modbus address for the meter"), Typing::Typed);
    form.cmd_Test_Modbus = MeterButton(QStringLiteral("cmd_Test_Modbus"), QStringLiteral("Modbus address Setting"),
        QStringLiteral("Write the new Modbus address to the meter"));
    form.Combo_Modbus_BaudRate = ChoiceList(QStringLiteral("Combo_Modbus_BaudRate"),
        QStringLiteral("New baud rate of the meter"));
    form.Cmd_Modbus_BaudRate = MeterButton(QStringLiteral("Cmd_Modbus_BaudRate"), QStringLiteral("Baud Rate Setting"),
        QStringLiteral("Write the new baud rate to the meter"));
    form.Combo_SetStopBit = ChoiceList(QStringLiteral("Combo_SetStopBit"), QStringLiteral("New stop bits of the meter"));
    form.Comm_Change_StopBit = MeterButton(QStringLiteral("Comm_Change_StopBit"), QStringLiteral("Stop bit Setting"),
        QStringLiteral("Write the new stop bits to the meter"));

    QGridLayout* grid = nullptr;
    auto* frame = SettingFrame(QStringLiteral("Communication"), grid);
    AddSettingRow(grid, QStringLiteral("Modbus address"), form.Combo_Modbus_add, form.cmd_Test_Modbus,
                  ReadbackField(form, Setting::Address, QStringLiteral("txt_Meter_Address")));
    AddSettingRow(grid, QStringLiteral("Baud rate"), form.Combo_Modbus_BaudRate, form.Cmd_Modbus_BaudRate,
                  ReadbackField(form, Setting::BaudRate, QStringLiteral("txt_Meter_BaudRate")));
    AddSettingRow(grid, QStringLiteral("Stop bit"), form.Combo_SetStopBit, form.Comm_Change_StopBit,
                  ReadbackField(form, Setting::StopBit, QStringLiteral("txt_Meter_StopBit")));
    return frame;
}

// PT ratio 2 is entered as the primary and secondary voltages; the meter is sent their ratio.
QWidget* BuildPtVoltagePair(MainForm& form)
{
    form.txtPT1 = NumberInput(QStringLiteral("txtPT1"), QStringLiteral("PT ratio 2, primary volts"), kVoltDigits);
    form.txtPT2 = NumberInput(QStringLiteral("txtPT2"), QStringLiteral("PT ratio 2, secondary volts"), kVoltDigits);
    auto* pair = new QWidget;
    auto* row = new QHBoxLayout(pair);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(form.txtPT1, 1);
    row->addWidget(Heading(QStringLiteral("V  /")));
    row->addWidget(form.txtPT2, 1);
    row->addWidget(Heading(QStringLiteral("V")));
    return pair;
}

QWidget* BuildMeasurementSettingFrame(MainForm& form)
{
    form.Combo_SetWiring = ChoiceList(QStringLiteral("Combo_SetWiring"), QStringLiteral("New wiring mode of the meter"));
    form.Comm_ChangeWiring = MeterButton(QStringLiteral("Comm_ChangeWiring"), QStringLiteral("Wiring Setting"),
        QStringLiteral("Write the new wiring mode to the meter"));
    form.Combo_PT_Ratio = ChoiceList(QStringLiteral("Combo_PT_Ratio"),
        QStringLiteral("New PT ratio 1, 0.1 to 6250"), Typing::Typed);
    form.Cmd_PT_Ratio = MeterButton(QStringLiteral("Cmd_PT_Ratio"), QStringLiteral("PT Ratio 1 Setting"),
        QStringLiteral("Write the new PT ratio 1 to the meter"));
    form.Comm_change_VT = MeterButton(QStringLiteral("Comm_change_VT"), QStringLiteral("Change PT Ratio 2"),
        QStringLiteral("Write the new PT ratio 2 to the meter"));
    form.Combo_CT_Ratio = ChoiceList(QStringLiteral("Combo_CT_Ratio"),
        QStringLiteral("New CT ratio, 1 to 2400"), Typing::Typed);
    form.Cmd_CT_Ratio = MeterButton(QStringLiteral("Cmd_CT_Ratio"), QStringLiteral("CT Ratio Setting"),
        QStringLiteral("Write the new CT ratio to the meter"));

    QGridLayout* grid = nullptr;
    auto* frame = SettingFrame(QStringLiteral("Measurement"), grid);
    AddSettingRow(grid, QStringLiteral("Wiring"), form.Combo_SetWiring, form.Comm_ChangeWiring,
                  ReadbackField(form, Setting::Wiring, QStringLiteral("txt_Meter_Wiring")));
    AddSettingRow(grid, QStringLiteral("PT ratio 1"), form.Combo_PT_Ratio, form.Cmd_PT_Ratio,
                  ReadbackField(form, Setting::PtRatio1, QStringLiteral("txt_Meter_PtRatio1")));
    AddSettingRow(grid, QStringLiteral("PT ratio 2 (pri. ÷ sec.)"), BuildPtVoltagePair(form),
                  form.Comm_change_VT, ReadbackField(form, Setting::PtRatio2, QStringLiteral("txt_Meter_PtRatio2")));
    AddSettingRow(grid, QStringLiteral("CT ratio"), form.Combo_CT_Ratio, form.Cmd_CT_Ratio,
                  ReadbackField(form, Setting::CtRatio, QStringLiteral("txt_Meter_CtRatio")));
    return frame;
}

QWidget* BuildClockFrame(MainForm& form)
{
    form.Comm_SetTime = MeterButton(QStringLiteral("Comm_SetTime"), QStringLiteral("Time Setting"),
        QStringLiteral("Set the meter clock to the PC clock"));
    form.Command1 = MeterButton(QStringLiteral("Command1"), QStringLiteral("Clr kWh"),
        QStringLiteral("Clear all total kWh counters of the meter"));
    const QString serialDisplay = QStringLiteral("Show the manufacturing serial number on the meter display");
    form.Cmd_Dis_MFGSerial = MeterButton(QStringLiteral("Cmd_Dis_MFGSerial"),
        QStringLiteral("設定電表序號顯示"), serialDisplay);
    form.Cmd_Dis_MFGSerial->setToolTip(serialDisplay);

    const QList<QPair<QPushButton*, QString>> rows{
        {form.Comm_SetTime, "Copies the PC clock to the meter."},
        {form.Command1, "Clears all total kWh counters, after confirmation."},
        {form.Cmd_Dis_MFGSerial, serialDisplay + QLatin1Char('.')},
    };
    auto* frame = new QGroupBox(QStringLiteral("Clock and counters"));
    auto* grid = new QGridLayout(frame);
    for (int r = 0; r < rows.size(); ++r) {
        grid->addWidget(rows[r].first, r, 0);
        QLabel* what = Caption(rows[r].second, rows[r].first);
        what->setWordWrap(true); // on a small screen the notes take two lines, not more width
        grid->addWidget(what, r, 1);
    }
    // Below the notes rather than beside them: the clock shows whole and the column stays narrow.
    QLineEdit* meterClock = ReadbackField(form, Setting::Clock, QStringLiteral("txt_Meter_Clock"));
    meterClock->setMinimumWidth(meterClock->fontMetrics().horizontalAdvance(QLatin1Char('0')) * kClockCharacters);
    const int clockRow = int(rows.size());
    grid->addWidget(Caption(QStringLiteral("Meter clock"), meterClock), clockRow, 0);
    grid->addWidget(meterClock, clockRow, 1, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);
    return frame;
}

QWidget* BuildConfigurationFrame(MainForm& form)
{
    form.cmd_SaveConfig = MeterButton(QStringLiteral("cmd_SaveConfig"), QStringLiteral("Save configuration…"),
        QStringLiteral("Save the meter's settings to a configuration file"));
    form.cmd_ApplyConfig = MeterButton(QStringLiteral("cmd_ApplyConfig"), QStringLiteral("Apply configuration…"),
        QStringLiteral("Write the settings of a configuration file that differ to the meter"));
    form.cmd_TakeMeterValues = MeterButton(QStringLiteral("cmd_TakeMeterValues"), QStringLiteral("Take the meter's values"),
        QStringLiteral("Fill the setting fields with what the meter holds now"));
    form.cmd_CommissioningReport = MeterButton(QStringLiteral("cmd_CommissioningReport"), QStringLiteral("Commissioning report…"),
        QStringLiteral("Write the meter's settings, measurements, wiring verdict and settings history as a PDF"));
    auto* frame = new QGroupBox(QStringLiteral("Configuration"));
    auto* row = new QHBoxLayout(frame);
    for (QPushButton* button : {form.cmd_SaveConfig, form.cmd_ApplyConfig, form.cmd_TakeMeterValues, form.cmd_CommissioningReport})
        row->addWidget(button);
    row->addStretch(1);
    return frame;
}

// A titled read-only list with its title above it.
QWidget* TitledNotes(const QString& title, QPlainTextEdit* notes)
{
    auto* box = new QWidget;
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(Caption(title, notes));
    column->addWidget(notes, 1);
    return box;
}

QWidget* BuildDisplayFrame(MainForm& form)
{
    form.Combo_Display_Ser_sel = ChoiceList(QStringLiteral("Combo_Display_Ser_sel"),
        QStringLiteral("Display position on the meter, 1 to 50"));
    form.Combo_Display_Item_sel = ChoiceList(QStringLiteral("Combo_Display_Item_sel"),
        QStringLiteral("Item code to show at that position"));
    form.Command5 = MeterButton(QStringLiteral("Command5"), QStringLiteral("Display Item Setting"),
        QStringLiteral("Write the display item to the meter"));
    form.Combo1 = ChoiceList(QStringLiteral("Combo1"), QStringLiteral("Display scroll time, seconds"));
    form.Command6 = MeterButton(QStringLiteral("Command6"), QStringLiteral("Scroll  Time Setting"),
        QStringLiteral("Write the display scroll time to the meter"));
    form.cmdDisplayindex = Button(QStringLiteral("cmdDisplayindex"), QStringLiteral("Data Item List"),
        QStringLiteral("Show or hide the list of display item codes"));
    form.txtDisplayIndex = NoteBox(QStringLiteral("txtDisplayIndex"), QStringLiteral("Display item codes"));
    form.txt_Display_Item = NoteBox(QStringLiteral("txt_Display_Item"),
        QStringLiteral("Display items read back from the meter"));

    auto* frame = new QGroupBox(QStringLiteral("Display Setting"));
    auto* grid = new QGridLayout(frame);
    grid->addWidget(Caption(QStringLiteral("Position"), form.Combo_Display_Ser_sel), 0, 0);
    grid->addWidget(form.Combo_Display_Ser_sel, 0, 1);
    grid->addWidget(Caption(QStringLiteral("Item code"), form.Combo_Display_Item_sel), 0, 2);
    grid->addWidget(form.Combo_Display_Item_sel, 0, 3);
    grid->addWidget(form.Command5, 0, 4);
    grid->addWidget(ReadbackField(form, Setting::DisplayItem, QStringLiteral("txt_Meter_DisplayItem")), 0, 5);
    grid->addWidget(Caption(QStringLiteral("Scroll time"), form.Combo1), 1, 0);
    grid->addWidget(form.Combo1, 1, 1);
    grid->addWidget(Heading(QStringLiteral("s")), 1, 2);
    grid->addWidget(form.Command6, 1, 4);
    grid->addWidget(ReadbackField(form, Setting::ScrollTime, QStringLiteral("txt_Meter_ScrollTime")), 1, 5);
    grid->addWidget(form.cmdDisplayindex, 2, 4);
    grid->setColumnStretch(6, 1);

    auto* lists = new QHBoxLayout;
    form.DisplayIndexBox = TitledNotes(QStringLiteral("Item codes"), form.txtDisplayIndex);
    lists->addWidget(form.DisplayIndexBox);
    lists->addWidget(TitledNotes(QStringLiteral("Items set in the meter"), form.txt_Display_Item));
    grid->addLayout(lists, 3, 0, 1, 7);
    grid->setRowStretch(3, 1);
    return frame;
}

QWidget* BuildHistoryFrame(MainForm& form)
{
    auto* table = new QTableWidget(0, 4);
    table->setObjectName(QStringLiteral("tbl_SettingsHistory"));
    table->setAccessibleName(QStringLiteral("Settings written in this session and whether the meter took them"));
    table->setHorizontalHeaderLabels({QStringLiteral("Time"), QStringLiteral("Setting"), QStringLiteral("Change"),
                                      QStringLiteral("Outcome")});
    table->horizontalHeader()->setStretchLastSection(true);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().lineSpacing() + 6);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    form.tbl_SettingsHistory = table;

    auto* frame = new QGroupBox(QStringLiteral("Settings history"));
    auto* column = new QVBoxLayout(frame);
    column->addWidget(table);
    return frame;
}

} // namespace

QWidget* MainForm::BuildMeterSettingTab()
{
    auto* tab = new QWidget;
    auto* left = new QVBoxLayout;
    left->addWidget(BuildCommunicationFrame(*this));
    left->addWidget(BuildMeasurementSettingFrame(*this));
    left->addWidget(BuildClockFrame(*this));
    left->addStretch(1);
    auto* right = new QVBoxLayout;
    right->addWidget(BuildDisplayFrame(*this), 1);
    right->addWidget(BuildConfigurationFrame(*this));
    right->addWidget(BuildHistoryFrame(*this), 1);
    auto* columns = new QHBoxLayout(tab);
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    return tab;
}
