#include "ui/FormBinding.h"

#include "ui/MainForm.h"
#include "ui/MeterFollowing.h"
#include "ui/StateColours.h"
#include "ui/TrafficView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {

// Keeps the request echo from growing without end while frames are shown.
constexpr int kEchoLines = 500;

} // namespace

FormBinding::FormBinding(MainForm& form)
    : prompts(&form),
      intervalLists(form.Combo_LP_Start_No, form.Combo_LP_Stop_No),
      session(SessionPorts{prompts, intervalLists, clock}),
      settingsTab(form, session, prompts),
      loadProfile(form, session, prompts),
      configuration(form, session, prompts, settingsTab),
      portList(form.Combo_CommPort, session, prompts, &form),
      m_form(form),
      m_screen(form),
      m_display(m_screen),
      // The real-time tab is the first.
      m_staleReadings(*form.tabs->widget(0), *form.lbl_LastGoodReading, session.freshness)
{
    ConnectConnectionControls();
    ConnectStatusArea();
    ConnectRealTimeDisplay();
    ConnectItemLists();
    form.trafficView->Attach(session.traffic);
}

void FormBinding::ConnectConnectionControls()
{
    connect(m_form.Combo_BaudRate_Sel, &QComboBox::currentIndexChanged, this, &FormBinding::ChooseLine);
    connect(m_form.Combo_StopBit, &QComboBox::currentIndexChanged, this, &FormBinding::ChooseLine);
    connect(m_form.Combo_Modbus_add_sel, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            session.ChooseAddress(m_form.Combo_Modbus_add_sel->currentText());
    });
    connect(m_form.On_Line, &QPushButton::clicked, this,
            [this] { session.ToggleOnLine(m_form.Combo_Modbus_add_sel->currentText()); });
    connect(&session, &MeterSession::onLineChanged, this, &FormBinding::ShowOnLineState);
    session.settings.follow = [this](Setting setting, const SettingValue& written) {
        FollowMeter(m_form, session, setting, written);
    };
}

void FormBinding::ConnectStatusArea()
{
    connect(&session, &MeterSession::statusChanged, this, [this](const QString& text) { ShowInReadout(m_form.Text6, text); });
    m_form.Text12->setMaximumBlockCount(kEchoLines);
    connect(&session, &MeterSession::requestEcho, this,
            [this](const QString& echo) { m_form.Text12->appendPlainText(echo.trimmed()); });
    connect(m_form.chk_ShowFrames, &QCheckBox::toggled, this, [this](bool on) { session.ShowFrames(on); });
}

void FormBinding::ConnectRealTimeDisplay()
{
    connect(&session.poll, &PollCycle::blockRead, this,
            [this](MeterReading::Block block, const MeterReading& reading) { m_display.ShowBlock(block, reading); });
    // The meter's list of display items is shown once more after a new item was sent.
    connect(&session.settings, &MeterSettings::displayItemSent, this, [this] { m_display.bDisplayItemSent = kTrue; });
}

// Each button shows and hides its list of item codes, its caption saying what a click does.
void FormBinding::ConnectItemLists()
{
    const auto toggle = [](QPushButton* button, QWidget* list) {
        const bool show = list->isHidden();
        list->setVisible(show);
        button->setText(show ? QStringLiteral("Close Data Item List") : QStringLiteral("Open Data Item List"));
    };
    connect(m_form.cmdDisplayindex, &QPushButton::clicked, this,
            [this, toggle] { toggle(m_form.cmdDisplayindex, m_form.DisplayIndexBox); });
    connect(m_form.cmdLPindexon, &QPushButton::clicked, this,
            [this, toggle] { toggle(m_form.cmdLPindexon, m_form.txtLPindex); });
}

void FormBinding::ChooseLine()
{
    session.ChooseLine(m_form.Combo_BaudRate_Sel->currentText(), m_form.Combo_StopBit->currentText());
}

void FormBinding::ShowOnLineState(bool onLine)
{
    MainForm& f = m_form;
    f.On_Line->setText(onLine ? QStringLiteral("OFF Line") : QStringLiteral("On Line"));
    // On line the port and its speed cannot change; the stop bit and the address can.
    f.Combo_CommPort->setEnabled(!onLine);
    f.Combo_BaudRate_Sel->setEnabled(!onLine);
    f.Combo_Modbus_add_sel->setEnabled(true);
    ShowInReadout(f.txt_Online, onLine ? QStringLiteral("On Line") : QStringLiteral("Off Line"));
    SetBackground(f.txt_Online, onLine ? kOnLineColour : kOffLineColour);
    ShowInReadout(f.txt_OffLineReason, session.OffLineReason());

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
