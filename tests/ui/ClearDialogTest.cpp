// The confirmation dialog answers true only for OK; Cancel, Escape and the close box all
// count as "no", also after an earlier OK on the same dialog. An OK given after the line
// changed under the open question sends nothing to the meter connected now.

#include "WindowOnLine.h"
#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/Dialog_Clr_kWh.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

namespace {

// Runs `answer` on the dialog once it is up and waiting modally.
void WhenShown(const std::function<void(Dialog_Clr_kWh*)>& answer)
{
    QTimer::singleShot(0, [answer] {
        auto* dialog = qobject_cast<Dialog_Clr_kWh*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        answer(dialog);
    });
}

// Whether the meter received a write starting at register `reg`.
bool Written(const sim::SimulatedMeterHost& meter, quint16 reg)
{
    for (const sim::LoggedRequest& request : meter.requestLog()) {
        const quint8 function = quint8(request.frame[1]);
        if ((function == 0x06 || function == 0x10) && (quint8(request.frame[2]) << 8 | quint8(request.frame[3])) == reg)
            return true;
    }
    return false;
}

} // namespace

class ClearDialogTest : public QObject {
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("confirmed");
        QTest::newRow("OK") << 0 << true;
        QTest::newRow("Cancel") << 1 << false;
        QTest::newRow("close box") << 2 << false;
        QTest::newRow("Escape") << 3 << false;
    }

    void answers()
    {
        QFETCH(int, answer);
        QFETCH(bool, confirmed);
        QWidget owner;
        QString question;
        QString caption;
        WhenShown([&](Dialog_Clr_kWh* dialog) {
            question = dialog->Label1->text();
            caption = dialog->windowTitle();
            switch (answer) {
            case 0: dialog->OKButton->click(); break;
            case 1: dialog->CancelButton->click(); break;
            case 2: dialog->close(); break;
            default: QTest::keyClick(dialog, Qt::Key_Escape); break;
            }
        });
        QCOMPARE(Dialog_Clr_kWh::confirm(&owner, "Clear kWh", "Clear all total kWh？"), confirmed);
        QCOMPARE(question, QStringLiteral("Clear all total kWh？"));
        QCOMPARE(caption, QStringLiteral("Clear kWh"));
    }

    void eachShowingStartsUnconfirmed()
    {
        Dialog_Clr_kWh dialog;
        QCOMPARE(dialog.objectName(), QStringLiteral("Dialog_Clr_kWh"));
        WhenShown([](Dialog_Clr_kWh* shown) { shown->OKButton->click(); });
        dialog.exec();
        QCOMPARE(dialog.bClearConfirmed, kTrue);

        Bool16 whileShown = kTrue;
        WhenShown([&](Dialog_Clr_kWh* shown) {
            whileShown = shown->bClearConfirmed;
            shown->close();
        });
        dialog.exec();
        QCOMPARE(whileShown, kFalse);
        QCOMPARE(dialog.bClearConfirmed, kFalse);
    }

    // Each question of the window: while it is open the meter's port fails and the tool goes on
    // line again; the OK given then belongs to the connection that is gone.
    void anOkAfterTheLineChangedSendsNothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("question");
        QTest::addColumn<int>("reg");
        QTest::newRow("Clr kWh") << "Command1" << "Clear all total kWh？" << 0x1012;
        QTest::newRow("Clear Group1 Data") << "Comm_Clr_G1_Data" << "Clear Group1 Data？" << 0x1033;
        QTest::newRow("Clear Group2 Data") << "Comm_Clr_G2_Data" << "Clear Group2 Data？" << 0x1042;
        QTest::newRow("group 1 channel count") << "Comm_LP_G1_Set" << "Warning : You will delete Load Profile Data "
                                               << 0x1034;
    }

    void anOkAfterTheLineChangedSendsNothing()
    {
        QFETCH(QString, button);
        QFETCH(QString, question);
        QFETCH(int, reg);
        WindowOnLine window;
        sim::SimulatedMeterHost& meter = window.meter;
        MainForm& form = window.form;
        MeterSession& session = form.session();
        form.On_Line->click();
        QVERIFY(session.OnLine());
        // A channel count other than the meter's, so that the group's set-up asks.
        QTRY_VERIFY(!form.Text_LP_Data_Counter(0)->text().isEmpty());
        form.Combo_G1_Setting(0)->setCurrentIndex(form.Text_LP_Data_Counter(0)->text().toInt() % 12);

        QString asked;
        QStringList errors;
        int stage = 0;
        QTimer answer;
        connect(&answer, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                errors.append(box->text());
                box->accept();
                return;
            }
            auto* dialog = qobject_cast<Dialog_Clr_kWh*>(modal);
            if (dialog == nullptr)
                return;
            if (stage == 0) {
                asked = dialog->Label1->text();
                meter.stop(); // the port fails
                stage = 1;
            } else if (stage == 1 && !session.OnLine()) {
                form.On_Line->click(); // starts the meter again
                stage = 2;
            } else if (stage == 2 && session.OnLine()) {
                dialog->OKButton->click();
                stage = 3;
            }
        });
        answer.start(10);
        form.findChild<QPushButton*>(button)->click();
        answer.stop();
        QCOMPARE(stage, 3);
        QCOMPARE(asked, question);
        QCOMPARE(errors, QStringList{QStringLiteral("Comm Port Error！")});

        QSignalSpy readings(&session.poll, &PollCycle::readingTaken);
        QTRY_VERIFY_WITH_TIMEOUT(readings.size() >= 3, 10000);
        QVERIFY(session.OnLine());
        QVERIFY(!Written(meter, quint16(reg)));
        QCOMPARE(form.tbl_SettingsHistory->rowCount(), 1);
        QCOMPARE(form.tbl_SettingsHistory->item(0, 3)->text(),
                 QStringLiteral("not sent: the tool went off line after it was asked for; ask again on this connection"));
    }
};

QTEST_MAIN(ClearDialogTest)
#include "ClearDialogTest.moc"
