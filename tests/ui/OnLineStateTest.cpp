// The window going on line and off line: what start-up selected, the faces of both states,
// the controls that follow them, port errors, closing the window while the line is busy, and
// finding a meter's address and baud rate.
#include "ReportFixtures.h"
#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/FindMeterDialog.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

const char* const kMeterControls[] = {
    "cmd_Test_Modbus", "Cmd_Modbus_BaudRate", "Cmd_PT_Ratio", "Cmd_CT_Ratio", "Command5", "Command6",
    "Comm_SetTime", "Cmd_Dis_MFGSerial", "Command8", "Command7", "Comm_LP_G1_Set", "Comm_LP_G2_Set",
    "Comm_Clr_G1_Data", "Comm_Clr_G2_Data", "Combo_LP_Read_Group_Sel1", "Command1", "Combo4",
    "Comm_Change_StopBit", "Comm_ChangeWiring", "Comm_change_VT",
};

bool TwoStopBitsOn(const QString& device)
{
    const int fd = ::open(device.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios line{};
    const bool ok = fd >= 0 && ::tcgetattr(fd, &line) == 0;
    if (fd >= 0)
        ::close(fd);
    return ok && (line.c_cflag & CSTOPB);
}

} // namespace

class OnLineStateTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_form = std::make_unique<MainForm>();
        m_form->session().connection.simulatedMeterDevice = m_meter.deviceSource();
        m_form->Form_Load();
        m_errors.clear();
    }
    void cleanup() { m_form.reset(); }

    void startUpSelectionsReachTheConnection()
    {
        const Connection& connection = m_form->session().connection;
        QCOMPARE(connection.PortNumber(), 3);
        QCOMPARE(connection.Settings(), QStringLiteral("19200,n,8,1"));
        QCOMPARE(connection.link.ModbusAddress, qint16(15));
        QVERIFY(!connection.Timer1Sec.isActive());
        QVERIFY(!m_form->session().download.Timer_RS_Lpf.isActive());
    }

    void onLineAndOffLineFaces()
    {
        MainForm& f = *m_form;
        for (const char* name : kMeterControls)
            QVERIFY2(!f.findChild<QWidget*>(QLatin1String(name))->isEnabled(), name);
        QCOMPARE(f.Text_Max_int_num(1)->text(), QStringLiteral("100"));
        f.ChooseSimulatedMeter();
        f.On_Line->click();
        QVERIFY(f.session().connection.bOnLine.isTrue());
        QCOMPARE(f.On_Line->text(), QStringLiteral("OFF Line"));
        QCOMPARE(f.txt_Online->text(), QStringLiteral("On Line"));
        QCOMPARE(f.txt_Online->palette().color(QPalette::Base), QColor(0x80, 0xFF, 0x80));
        QVERIFY(!f.Combo_CommPort->isEnabled());
        QVERIFY(!f.Combo_BaudRate_Sel->isEnabled());
        QVERIFY(f.Combo_StopBit->isEnabled());
        QVERIFY(f.Combo_Modbus_add_sel->isEnabled());
        for (const char* name : kMeterControls)
            QVERIFY2(f.findChild<QWidget*>(QLatin1String(name))->isEnabled(), name);
        QVERIFY(f.Command11->isEnabled()); // its start-up state, until the first change to off line

        f.On_Line->click();
        QVERIFY(!f.session().connection.bOnLine.isTrue());
        QCOMPARE(f.On_Line->text(), QStringLiteral("On Line"));
        QCOMPARE(f.txt_Online->text(), QStringLiteral("Off Line"));
        QCOMPARE(f.txt_OffLineReason->text(), QString()); // the operator asked for it
        QCOMPARE(f.txt_Online->palette().color(QPalette::Base), QColor(0xFF, 0xC0, 0xC0));
        QVERIFY(f.Combo_CommPort->isEnabled());
        for (const char* name : kMeterControls)
            QVERIFY2(!f.findChild<QWidget*>(QLatin1String(name))->isEnabled(), name);
        QVERIFY(!f.Command11->isEnabled());

        f.On_Line->click();
        QVERIFY(f.session().connection.bOnLine.isTrue());
        QVERIFY(!f.Command11->isEnabled()); // nothing enables it again
    }

    void aStopBitPickedOnLineReachesThePortAtOnce()
    {
        m_form->ChooseSimulatedMeter();
        m_form->On_Line->click();
        const QString device = m_form->session().connection.port.Device();
        QVERIFY(!TwoStopBitsOn(device));
        m_form->Combo_StopBit->setCurrentIndex(1);
        QCOMPARE(m_form->session().connection.Settings(), QStringLiteral("19200,n,8,2"));
        QVERIFY(TwoStopBitsOn(device));
        QVERIFY(m_form->session().connection.bOnLine.isTrue());
    }

    void aPortThatCannotOpenIsReported()
    {
        m_form->Combo_CommPort->setCurrentIndex(14); // port 15: no such device here
        answerMessageBoxes();
        m_form->On_Line->click();
        QCOMPARE(m_errors, QStringList{QStringLiteral("Error: Comm Port Error！")});
        QVERIFY2(m_form->Text6->text().startsWith(QStringLiteral("Comm Port Error: /dev/ttyS14: ")),
                 qPrintable(m_form->Text6->text())); // the status line says which port and why
        QCOMPARE(m_form->txt_OffLineReason->text(), m_form->Text6->text());
        QVERIFY(!m_form->session().connection.bOnLine.isTrue());
        QVERIFY(!m_form->Command11->isEnabled()); // the error takes the off-line path too
    }

    void closingWhileATickWaitsEndsEverything()
    {
        MainForm& f = *m_form;
        f.ChooseSimulatedMeter();
        f.show();
        f.On_Line->click();
        QTimer::singleShot(30, &f, [&f] { f.close(); });
        f.session().poll.Timer1Sec_Timer();
        QVERIFY(!f.session().connection.bOnLine.isTrue());
        QVERIFY(!f.session().connection.Timer1Sec.isActive());
        QVERIFY(!f.isVisible());
    }

    // Off line the wiring verdict is its reading's, greyed and timed: never the meter's green pass.
    void theWiringVerdictGoesStaleOffLine()
    {
        MainForm& f = *m_form;
        f.session().connection.simulatedMeterDevice = m_balanced.deviceSource();
        f.ChooseSimulatedMeter();
        f.On_Line->click();
        const auto* headline = f.findChild<QLabel*>(QStringLiteral("lbl_WiringHeadline"));
        const auto background = [headline] { return headline->palette().color(headline->backgroundRole()); };
        const QColor green(0x80, 0xFF, 0x80);
        QTRY_VERIFY_WITH_TIMEOUT(headline->text().startsWith(QStringLiteral("All checks passed (reading of ")), 10000);
        QCOMPARE(background(), green);
        const QString taken = headline->text().section(QStringLiteral("(reading of "), 1);
        f.On_Line->click();
        QVERIFY2(headline->text().startsWith(QStringLiteral("No longer the meter's: All checks passed")), qPrintable(headline->text()));
        QVERIFY(headline->text().endsWith(QStringLiteral("(reading of ") + taken));
        QVERIFY(background() != green);
    }

    // "Find meter…" scans the chosen port; "Use it" puts what answered into the connection frame.
    void findMeterFillsTheAddressAndBaudRate()
    {
        MainForm& f = *m_form;
        f.ChooseSimulatedMeter();
        f.Combo_Modbus_add_sel->setCurrentIndex(f.Combo_Modbus_add_sel->findText(QStringLiteral("30")));
        f.Combo_BaudRate_Sel->setCurrentIndex(f.Combo_BaudRate_Sel->findText(QStringLiteral("9600")));
        QTimer::singleShot(0, this, [] {
            QWidget* modal = QApplication::activeModalWidget();
            auto* dialog = qobject_cast<FindMeterDialog*>(modal);
            if (dialog == nullptr) {
                if (modal != nullptr)
                    modal->close();
                return;
            }
            connect(dialog, &FindMeterDialog::scanEnded, dialog->use, &QPushButton::click);
            QTimer::singleShot(30'000, dialog, &QDialog::reject);
        });
        f.cmd_FindMeter->click();
        QCOMPARE(f.Combo_Modbus_add_sel->currentText(), QStringLiteral("15"));
        QCOMPARE(f.Combo_BaudRate_Sel->currentText(), QStringLiteral("19200"));
        QCOMPARE(f.session().connection.Address(), 15);
        QCOMPARE(f.session().connection.BaudRate(), QStringLiteral("19200"));
    }

private:
    // Answers the next modal message box with its default button and notes "title: text".
    void answerMessageBoxes()
    {
        QTimer::singleShot(10, this, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) {
                answerMessageBoxes();
                return;
            }
            m_errors.append(box->windowTitle() + QStringLiteral(": ") + box->text());
            box->accept();
        });
    }

    sim::SimulatedMeterHost m_meter; // outlives the window that talks to it
    sim::SimulatedMeterHost m_balanced{MeterWired("none")};
    std::unique_ptr<MainForm> m_form;
    QStringList m_errors;
};

QTEST_MAIN(OnLineStateTest)
#include "OnLineStateTest.moc"
