// The "Meter Settig" tab against the simulated meter on a paced line: the meter's address (a
// listed one, then one above the list) and then its baud rate changed through the buttons while
// polling goes on, what the meter holds shown beside each setting, the history, a value typed
// after its click, the checks of typed fields and the item lists.
#include "WindowOnLine.h"

#include <QApplication>
#include <QComboBox>
#include <QFocusEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

namespace {

constexpr int kSettleMs = 10000;

} // namespace

class SettingsTabTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_on = std::make_unique<WindowOnLine>(true); }
    void cleanup() { m_on.reset(); }

    void addressThenBaudRateChangeWhilePollingGoesOn()
    {
        MainForm& f = m_on->form;
        f.On_Line->click();
        QVERIFY(f.session().connection.bOnLine.isTrue());
        QSignalSpy onLine(&f.session(), &MeterSession::onLineChanged);
        QTRY_COMPARE_WITH_TIMEOUT(meterNow(Setting::Address), QStringLiteral("15"), kSettleMs);

        f.Combo_Modbus_add->setCurrentIndex(19);
        QCOMPARE(meterNow(Setting::Address), QStringLiteral("≠ 15")); // marked before it is sent
        f.cmd_Test_Modbus->click();
        QTRY_COMPARE_WITH_TIMEOUT(meterNow(Setting::Address), QStringLiteral("20"), kSettleMs);
        QCOMPARE(f.Combo_Modbus_add_sel->currentText(), QStringLiteral("20"));
        QTRY_COMPARE_WITH_TIMEOUT(newestOutcome(), QStringLiteral("confirmed"), kSettleMs);
        // Above the listed addresses the new one is appended to the address list and picked.
        f.Combo_Modbus_add->setEditText(QStringLiteral("100"));
        f.cmd_Test_Modbus->click();
        QTRY_COMPARE_WITH_TIMEOUT(meterNow(Setting::Address), QStringLiteral("100"), kSettleMs);
        QCOMPARE(f.Combo_Modbus_add_sel->currentIndex(), 247);
        QCOMPARE(f.Combo_Modbus_add_sel->currentText(), QStringLiteral("100"));
        QTRY_COMPARE_WITH_TIMEOUT(newestOutcome(), QStringLiteral("confirmed"), kSettleMs);

        for (int index : {0, 1}) {
            f.Combo_Modbus_BaudRate->setCurrentIndex(index);
            f.Cmd_Modbus_BaudRate->click();
            const QString baud = f.Combo_Modbus_BaudRate->currentText();
            QTRY_COMPARE_WITH_TIMEOUT(meterNow(Setting::BaudRate), baud, kSettleMs);
            QCOMPARE(f.Combo_BaudRate_Sel->currentIndex(), index);
            QTRY_COMPARE_WITH_TIMEOUT(newestOutcome(), QStringLiteral("confirmed"), kSettleMs);
            QCOMPARE(f.tbl_SettingsHistory->item(0, 2)->text(),
                     QStringLiteral("%1 → %2").arg(index == 0 ? "19200" : "9600", baud));
        }
        QCOMPARE(m_on->meter.holding(0x1000), quint16(100));
        QCOMPARE(f.tbl_SettingsHistory->rowCount(), 4);
        QVERIFY(onLine.isEmpty());
    }

    // The tick reads the field when it serves the click, and checks it then: a CT ratio typed
    // after the click, with the focus still in the field, is refused and never written.
    void textTypedAfterTheClickIsCheckedWhenServed()
    {
        MainForm& f = m_on->form;
        MeterSession& session = f.session();
        f.On_Line->click();
        session.connection.Timer1Sec.stop(); // the test runs the ticks
        f.Combo_CT_Ratio->setEditText(QStringLiteral("100"));
        f.Cmd_CT_Ratio->click();
        QLineEdit* typing = f.Combo_CT_Ratio->lineEdit();
        typing->selectAll();
        QTest::keyClicks(typing, "0");
        QCOMPARE(f.Combo_CT_Ratio->currentText(), QStringLiteral("0"));
        session.poll.Timer1Sec_Timer();

        for (const sim::LoggedRequest& request : m_on->meter.requestLog())
            QVERIFY(quint8(request.frame[1]) != 0x10); // nothing written
        QCOMPARE(newestOutcome(), QStringLiteral("not sent: CT Ratio Range : 1~2400！"));
        QCOMPARE(f.Text6->text(), QStringLiteral("CT Ratio Range : 1~2400！; nothing was sent."));
        QVERIFY(session.OnLine());
    }

    // A check runs when the focus moves on within the window, not when the field's own list
    // drops down.
    void aTypedFieldIsCheckedAsItLosesTheFocus()
    {
        MainForm& f = m_on->form;
        f.Combo_CT_Ratio->setEditText(QStringLiteral("12.5"));
        QFocusEvent popup(QEvent::FocusOut, Qt::PopupFocusReason);
        QApplication::sendEvent(f.Combo_CT_Ratio, &popup);
        QCOMPARE(f.Combo_CT_Ratio->currentText(), QStringLiteral("12.5"));

        QStringList shown;
        QTimer::singleShot(0, [&shown] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            shown << box->windowTitle() << box->text();
            box->accept();
        });
        QFocusEvent tab(QEvent::FocusOut, Qt::TabFocusReason);
        QApplication::sendEvent(f.Combo_CT_Ratio, &tab);
        QCOMPARE(shown, QStringList({"Error", "CT Ratio Range : 1~2400！"}));
        QCOMPARE(f.Combo_CT_Ratio->currentText(), QString());
    }

    void theItemListButtonsShowAndHideTheirLists()
    {
        MainForm& f = m_on->form;
        using Toggle = std::pair<QPushButton*, QWidget*>;
        for (auto [button, list] : {Toggle(f.cmdDisplayindex, f.DisplayIndexBox), Toggle(f.cmdLPindexon, f.txtLPindex)}) {
            QVERIFY(!list->isHidden());
            button->click();
            QVERIFY(list->isHidden());
            QCOMPARE(button->text(), QStringLiteral("Open Data Item List"));
            button->click();
            QVERIFY(!list->isHidden());
            QCOMPARE(button->text(), QStringLiteral("Close Data Item List"));
        }
    }

private:
    QString meterNow(Setting setting) const { return m_on->form.SettingReadbacks.value(setting)->text(); }
    QString newestOutcome() const
    {
        const QTableWidgetItem* item = m_on->form.tbl_SettingsHistory->item(0, 3);
        return item ? item->text() : QString();
    }

    std::unique_ptr<WindowOnLine> m_on;
};

QTEST_MAIN(SettingsTabTest)
#include "SettingsTabTest.moc"
