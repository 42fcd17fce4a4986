#include "ui/FormBinding.h"

#include "sim/SimulatedMeterHost.h"
#include "ui/MainForm.h"
#include "ui/StateColours.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include <cmath>

namespace {

// Keeps the request echo from growing without end while frames are shown.
constexpr int kEchoLines = 500;

// A list's text as the 16-bit whole number the meter tool takes: rounded to nearest, halves
// to even.
qint16 WholeNumberOf(const QString& text)
{
    return qint16(qBound(-32768.0, std::nearbyint(text.toDouble()), 32767.0));
}

} // namespace

FormBinding::FormBinding(MainForm& form)
    : prompts(&form),
      screen(form),
      intervalLists(form.Combo_LP_Start_No, form.Combo_LP_Stop_No),
      connection(prompts),
      poll(connection, screen, intervalLists),
      m_form(form)
{
    connection.simulatedMeterDevice = [this](QString* error) { return StartSimulatedMeter(error); };
    ConnectConnectionControls();
    ConnectStatusArea();
}

FormBinding::~FormBinding() = default;

void FormBinding::ConnectConnectionControls()
{
    connect(m_form.Combo_CommPort, &QComboBox::currentIndexChanged, this,
            [this](int index) { connection.Combo_CommPort_Click(index); });
    connect(m_form.Combo_BaudRate_Sel, &QComboBox::currentIndexChanged, this, &FormBinding::ApplySettingsString);
    connect(m_form.Combo_StopBit, &QComboBox::currentIndexChanged, this, &FormBinding::ApplySettingsString);
    connect(m_form.Combo_Modbus_add_sel, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            connection.link.ModbusAddress = WholeNumberOf(m_form.Combo_Modbus_add_sel->currentText());
    });
    connect(m_form.On_Line, &QPushButton::clicked, this, [this] {
        connection.SetPortEntries(m_form.PortEntries);
        connection.On_Line_Click(m_form.Combo_Modbus_add_sel->currentText());
    });
    connect(&connection, &Connection::onLineChanged, this, &FormBinding::ShowOnLineState);
}

void FormBinding::ConnectStatusArea()
{
    m_form.Text12->setMaximumBlockCount(kEchoLines);
    connect(&connection.link, &RegisterLink::statusText, m_form.Text6, &QLineEdit::setText);
    connect(&connection, &Connection::portFailed, this,
            [this](const QString& detail) { m_form.Text6->setText(QStringLiteral("Comm Port Error: ") + detail); });
    connect(&connection.link, &RegisterLink::requestEcho, this, [this](const QString& echo) {
        m_form.Text12->appendPlainText(echo.trimmed());
    });
    connect(m_form.chk_ShowFrames, &QCheckBox::toggled, this,
            [this](bool on) { connection.link.bShowFrames = toBool16(on); });
}

void FormBinding::ApplySettingsString()
{
    connection.SetSettings(m_form.Combo_BaudRate_Sel->currentText() + QStringLiteral(",n,8,")
                           + m_form.Combo_StopBit->currentText());
}

void FormBinding::ShowOnLineState(bool onLine)
{
    MainForm& f = m_form;
    f.On_Line->setText(onLine ? QStringLiteral("OFF Line") : QStringLiteral("On Line"));
    f.txt_Online->setText(onLine ? QStringLiteral("On Line") : QStringLiteral("Off Line"));
    if (!onLine && download.StopForOffLine())
        SetBackground(f.Command8, kResumableColour);
    // On line the port and its speed cannot change; the stop bit and the address can.
    f.Combo_CommPort->setEnabled(!onLine);
    f.Combo_BaudRate_Sel->setEnabled(!onLine);
    f.Combo_Modbus_add_sel->setEnabled(true);
    SetBackground(f.txt_Online, onLine ? kOnLineColour : kOffLineColour);

    // Command11 is disabled with the others but never enabled again: its viewer is not served.
    const QList<QWidget*> meterControls = {
        f.cmd_Test_Modbus, f.Cmd_Modbus_BaudRate, f.Cmd_PT_Ratio, f.Cmd_CT_Ratio, f.Command5,
        f.Command6, f.Comm_SetTime, f.Cmd_Dis_MFGSerial, f.Command8, f.Command7, f.Comm_LP_G1_Set,
        f.Comm_LP_G2_Set, f.Comm_Clr_G1_Data, f.Comm_Clr_G2_Data, f.Combo_LP_Read_Group_Sel1,
        f.Command1, f.Combo4, f.Comm_Change_StopBit, f.Comm_ChangeWiring, f.Comm_change_VT,
    };
    for (QWidget* control : meterControls)
        control->setEnabled(onLine);
    if (!onLine)
        f.Command11->setEnabled(false);
}

void FormBinding::StopTimers()
{
    connection.Timer1Sec.stop();
    download.Timer_RS_Lpf.stop();
}

void FormBinding::Form_Unload()
{
    StopTimers();
    if (connection.bOnLine.isTrue())
        connection.GoOffLine();
}

QString FormBinding::StartSimulatedMeter(QString* error)
{
    if (!m_simulator)
        m_simulator = std::make_unique<sim::SimulatedMeterHost>();
    const auto started = m_simulator->start();
    *error = started.error;
    return started.path;
}
