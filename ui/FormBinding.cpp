#include "ui/FormBinding.h"

#include "ui/MainForm.h"
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
      screen(form),
      intervalLists(form.Combo_LP_Start_No, form.Combo_LP_Stop_No),
      session(SessionPorts{screen, screen, prompts, intervalLists, clock}),
      settingsTab(form, session.settings),
      portList(form.Combo_CommPort, session, prompts, &form),
      m_form(form),
      // The real-time tab is the first.
      m_staleReadings(*form.tabs->widget(0), *form.lbl_LastGoodReading, session.freshness)
{
    ConnectConnectionControls();
    ConnectStatusArea();
    ConnectItemLists();
    ConnectLoadProfile();
    form.trafficView->Attach(session.traffic);
}

void FormBinding::ConnectLoadProfile()
{
    MainForm& f = m_form;
    LpGroupSettings& groups = session.lpGroups;
    connect(f.Comm_LP_G1_Set, &QPushButton::clicked, &groups, &LpGroupSettings::Comm_LP_G1_Set_Click);
    connect(f.Comm_LP_G2_Set, &QPushButton::clicked, &groups, &LpGroupSettings::Comm_LP_G2_Set_Click);
    connect(f.Comm_Clr_G1_Data, &QPushButton::clicked, &groups, &LpGroupSettings::Comm_Clr_G1_Data_Click);
    connect(f.Comm_Clr_G2_Data, &QPushButton::clicked, &groups, &LpGroupSettings::Comm_Clr_G2_Data_Click);

    LpDownload& download = session.download;
    connect(f.Command8, &QPushButton::clicked, &download, &LpDownload::Command8_Click);
    m_lpChecks.Add(f.Combo_LP_Start_No, [&download] { download.Combo_LP_Start_No_Validate(); });
    m_lpChecks.Add(f.Combo_LP_Stop_No, [&download] { download.Combo_LP_Stop_No_Validate(); });
    connect(&download, &LpDownload::faceChanged, this, [this](LpDownload::Face face, const QString& caption) {
        m_form.Command8->setText(caption);
        if (face == LpDownload::Face::Normal)
            ClearBackground(m_form.Command8);
        else
            SetBackground(m_form.Command8, face == LpDownload::Face::Reading ? kOnLineColour : kResumableColour);
    });
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
}

void FormBinding::ConnectStatusArea()
{
    m_form.Text12->setMaximumBlockCount(kEchoLines);
    connect(&session, &MeterSession::requestEcho, this,
            [this](const QString& echo) { m_form.Text12->appendPlainText(echo.trimmed()); });
    connect(m_form.chk_ShowFrames, &QCheckBox::toggled, this, [this](bool on) { session.ShowFrames(on); });
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
