#pragma once

#include "settings/Setting.h"
#include "ui/ControlArray.h"
#include "ui/PortComboBox.h"

#include <QMainWindow>
#include <QMap>

#include <memory>

class FormBinding;
class MeterSession;
class PortListBinding;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTabWidget;
class TrafficView;

// The tool's one window. Its controls are public and carry the names the window's bindings and
// the tests look them up by. The constructor only builds the controls; Form_Load puts them
// into the off-line starting state.
class MainForm : public QMainWindow {
    Q_OBJECT
public:
    explicit MainForm(QWidget* parent = nullptr);
    ~MainForm() override;

    // Fills every choice list and selects its starting entry. A selection made here counts as
    // the operator's: handlers connected to currentIndexChanged beforehand run for it.
    void Form_Load();
    // Chooses the port `option` names, as if the operator had picked it: "sim", a port number
    // as the list counts them, a device path or "tcp://host:port" (the last two are added to
    // the list when new). False, with the reason in `error`, when it names none.
    bool ChoosePort(const QString& option, QString* error);
    // Chooses the simulated meter as the port, as if the operator had picked it.
    void ChooseSimulatedMeter();

    // The conversation with the meter that the window's controls are bound to.
    MeterSession& session();
    // What keeps the port list and the connection's port entries in step.
    PortListBinding& portList();

    // Connection frame, above the tabs. The port list holds the connection's port entries in
    // their order, then "Network...".
    PortComboBox* Combo_CommPort = nullptr;
    QComboBox* Combo_BaudRate_Sel = nullptr;
    QComboBox* Combo_StopBit = nullptr;
    QComboBox* Combo_Modbus_add_sel = nullptr;
    QPushButton* On_Line = nullptr;
    // Scans the chosen port for a meter and takes the address and baud rate it answers at.
    QPushButton* cmd_FindMeter = nullptr;
    QLineEdit* txt_Online = nullptr;
    // Why the tool went off line, when the operator did not ask for it; kept until the next
    // "On Line".
    QLineEdit* txt_OffLineReason = nullptr;

    // Status area, below the tabs.
    QLineEdit* Text6 = nullptr;
    QPlainTextEdit* Text12 = nullptr;
    QCheckBox* chk_ShowFrames = nullptr;

    QTabWidget* tabs = nullptr;

    // "Real time Data" tab. Element numbers follow the meter's data layout: the current, power
    // and power-factor families are numbered 3 to 6 (L1, L2, L3, average or total).
    ControlArray<QLineEdit> txt_V_N{QStringLiteral("txt_V_N")};
    ControlArray<QLineEdit> txt_V_B{QStringLiteral("txt_V_B")};
    ControlArray<QLineEdit> txt_I_Result{QStringLiteral("txt_I_Result")};
    ControlArray<QLineEdit> txt_W_Result{QStringLiteral("txt_W_Result")};
    ControlArray<QLineEdit> txt_Var_Result{QStringLiteral("txt_Var_Result")};
    ControlArray<QLineEdit> txt_VA_Result{QStringLiteral("txt_VA_Result")};
    ControlArray<QLineEdit> txt_PF_Result{QStringLiteral("txt_PF_Result")};
    ControlArray<QLineEdit> txt_V_Angle{QStringLiteral("txt_V_Angle")};
    ControlArray<QLineEdit> txt_I_Angle{QStringLiteral("txt_I_Angle")};
    // Energy k (0 kWh delivered, 1 kWh received, 2 kvarh lagging, 3 kvarh leading, 4 kVAh):
    // element k is the total, 5 + 5t + k phase t (0 = L1, 1 = L2, 2 = L3).
    ControlArray<QLineEdit> txt_kWh{QStringLiteral("txt_kWh")};
    QLineEdit* txtFrequency = nullptr;
    QLineEdit* txt_PTRatio = nullptr;
    QLineEdit* txtPTRatio2 = nullptr;
    QLineEdit* txt_CTRatio = nullptr;
    QLineEdit* Text5 = nullptr;
    QLineEdit* Text3 = nullptr;
    QLineEdit* txt_Wiring = nullptr;
    QLineEdit* txt_Phasor = nullptr;
    // "Last good reading 13:05:07" while the fields show values no longer fresh.
    QLabel* lbl_LastGoodReading = nullptr;

    // "Meter Settig" tab.
    QComboBox* Combo_Modbus_add = nullptr;
    QPushButton* cmd_Test_Modbus = nullptr;
    QComboBox* Combo_Modbus_BaudRate = nullptr;
    QPushButton* Cmd_Modbus_BaudRate = nullptr;
    QComboBox* Combo_SetStopBit = nullptr;
    QPushButton* Comm_Change_StopBit = nullptr;
    QComboBox* Combo_SetWiring = nullptr;
    QPushButton* Comm_ChangeWiring = nullptr;
    QComboBox* Combo_PT_Ratio = nullptr;
    QPushButton* Cmd_PT_Ratio = nullptr;
    QLineEdit* txtPT1 = nullptr;
    QLineEdit* txtPT2 = nullptr;
    QPushButton* Comm_change_VT = nullptr;
    QComboBox* Combo_CT_Ratio = nullptr;
    QPushButton* Cmd_CT_Ratio = nullptr;
    QPushButton* Comm_SetTime = nullptr;
    QPushButton* Command1 = nullptr;
    QPushButton* Cmd_Dis_MFGSerial = nullptr;
    QComboBox* Combo_Display_Ser_sel = nullptr;
    QComboBox* Combo_Display_Item_sel = nullptr;
    QPushButton* Command5 = nullptr;
    QComboBox* Combo1 = nullptr;
    QPushButton* Command6 = nullptr;
    QPushButton* cmdDisplayindex = nullptr;
    QPlainTextEdit* txtDisplayIndex = nullptr;
    // The item code list with its caption: what cmdDisplayindex shows and hides.
    QWidget* DisplayIndexBox = nullptr;
    QPlainTextEdit* txt_Display_Item = nullptr;
    // What the meter holds now, beside each setting.
    QMap<Setting, QLineEdit*> SettingReadbacks;
    QTableWidget* tbl_SettingsHistory = nullptr;
    // The meter's configuration as a file, and its values taken into the fields above.
    QPushButton* cmd_SaveConfig = nullptr;
    QPushButton* cmd_ApplyConfig = nullptr;
    QPushButton* cmd_TakeMeterValues = nullptr;
    QPushButton* cmd_CommissioningReport = nullptr;

    // "Load Profile" tab. Setting element 0 is the channel count, 1 the interval in minutes,
    // 2 onward the channel codes. Status element 0 is group 1, element 1 group 2.
    ControlArray<QComboBox> Combo_G1_Setting{QStringLiteral("Combo_G1_Setting")};
    ControlArray<QComboBox> Combo_G2_Setting{QStringLiteral("Combo_G2_Setting")};
    QPushButton* Comm_LP_G1_Set = nullptr;
    QPushButton* Comm_Clr_G1_Data = nullptr;
    QPushButton* Comm_LP_G2_Set = nullptr;
    QPushButton* Comm_Clr_G2_Data = nullptr;
    ControlArray<QLineEdit> Text_LP_Data_Counter{QStringLiteral("Text_LP_Data_Counter")};
    ControlArray<QLineEdit> Text_LP_interval{QStringLiteral("Text_LP_interval")};
    ControlArray<QLineEdit> Text_Valid_int_num{QStringLiteral("Text_Valid_int_num")};
    ControlArray<QLineEdit> Text_Max_int_num{QStringLiteral("Text_Max_int_num")};
    ControlArray<QLineEdit> Text_LP_G1_Data{QStringLiteral("Text_LP_G1_Data")};
    ControlArray<QLineEdit> Text_LP_G2_Data{QStringLiteral("Text_LP_G2_Data")};
    QPlainTextEdit* txtLPindex = nullptr;
    QPushButton* cmdLPindexon = nullptr;
    QComboBox* Combo_LP_Read_Group_Sel = nullptr;
    QComboBox* Combo_LP_Start_No = nullptr;
    QComboBox* Combo_LP_Stop_No = nullptr;
    QPushButton* Command8 = nullptr;
    QComboBox* Combo_LP_Read_Group_Sel1 = nullptr;
    QComboBox* Combo4 = nullptr;
    QPushButton* Command7 = nullptr;
    QPushButton* Command11 = nullptr;

    // "Traffic" tab: the frames on the line and their counters.
    TrafficView* trafficView = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::unique_ptr<FormBinding> m_binding;

    // Opens within the screen's available area, at the laid-out size when there is room for it.
    void FitOnScreen();
    QWidget* BuildConnectionFrame();
    void FindMeter();
    QWidget* BuildStatusArea();
    QWidget* BuildRealTimeTab();
    QWidget* BuildMeterSettingTab();
    QWidget* BuildLoadProfileTab();
};
