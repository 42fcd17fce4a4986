// The configuration buttons through the window against the simulated meter: a saved file
// applied after the meter's registers changed writes them back (several display items one after
// another) and the history shows each confirmed; a file of another format is refused with
// nothing sent; the meter's values are taken into the setting fields.
#include "WindowOnLine.h"
#include "session/MeterSession.h"
#include "settings/SettingWrites.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/ApplyConfigurationDialog.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int kSettleMs = 10000;
using Registers = QMap<int, int>; // register → value

} // namespace

class ConfigurationTest : public QObject {
    Q_OBJECT
private slots:
    void savedFileWritesTheChangedSettingsBack_data()
    {
        QTest::addColumn<Registers>("changes");
        QTest::newRow("CT ratio") << Registers{{SettingRegister::kCtRatio, 150}};
        QTest::newRow("CT ratio and two display items")
            << Registers{{SettingRegister::kCtRatio, 150}, {0x1052, 1}, {0x1053, 2}};
    }

    void savedFileWritesTheChangedSettingsBack()
    {
        QFETCH(Registers, changes);
        WindowOnLine window;
        sim::SimulatedMeterHost& meter = window.meter;
        MainForm& form = window.form;
        MeterSession& session = form.session();
        QVERIFY(!form.cmd_SaveConfig->isEnabled());
        form.On_Line->click();
        QTRY_VERIFY_WITH_TIMEOUT(form.cmd_SaveConfig->isEnabled(), kSettleMs);
        Registers saved;
        for (auto change = changes.begin(); change != changes.end(); ++change) {
            saved.insert(change.key(), meter.holding(quint16(change.key())));
            QVERIFY(saved[change.key()] != change.value());
        }
        const quint16 savedCt = quint16(saved[SettingRegister::kCtRatio]);

        // Answers each modal dialog as the operator would: the file, then Apply.
        QTemporaryDir dir;
        QString file = dir.filePath(QStringLiteral("meter.json"));
        QStringList errors;
        int differences = -1;
        QTimer answer;
        connect(&answer, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* files = qobject_cast<QFileDialog*>(modal)) {
                // Typed into the name field: selectFile leaves a focused field as it is.
                files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(file);
                QMetaObject::invokeMethod(files, "accept");
            } else if (auto* apply = qobject_cast<ApplyConfigurationDialog*>(modal)) {
                differences = apply->tbl_Differences->rowCount();
                apply->ApplyButton->click();
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                errors.append(box->text());
                box->accept();
            }
        });
        answer.start(10);

        form.cmd_SaveConfig->click();
        QVERIFY(QFileInfo::exists(file));
        for (auto change = changes.begin(); change != changes.end(); ++change)
            meter.setHolding(quint16(change.key()), quint16(change.value()));
        QTRY_COMPARE_WITH_TIMEOUT(int(session.Reading().ctRatioRegister), changes[SettingRegister::kCtRatio], kSettleMs);

        form.cmd_ApplyConfig->click();
        QCOMPARE(differences, int(changes.size()));
        const int rows = int(changes.size());
        QTRY_COMPARE_WITH_TIMEOUT(form.tbl_SettingsHistory->rowCount(), rows, kSettleMs);
        for (int row = 0; row < rows; ++row)
            QTRY_COMPARE_WITH_TIMEOUT(form.tbl_SettingsHistory->item(row, 3)->text(), QStringLiteral("confirmed"), kSettleMs);
        for (auto was = saved.begin(); was != saved.end(); ++was)
            QCOMPARE(int(meter.holding(quint16(was.key()))), was.value());
        QVERIFY(errors.isEmpty());

        // Refused whole, named by its field: nothing is asked or sent.
        file = dir.filePath(QStringLiteral("future.json"));
        QFile future(file);
        QVERIFY(future.open(QIODevice::WriteOnly));
        future.write(R"({"format": 2})");
        future.close();
        differences = -1;
        form.cmd_ApplyConfig->click();
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors[0].contains(QStringLiteral("refused: format: version 2")), qPrintable(errors[0]));
        QCOMPARE(differences, -1);
        QCOMPARE(form.tbl_SettingsHistory->rowCount(), rows);
        answer.stop();

        form.Combo_CT_Ratio->setEditText(QStringLiteral("7"));
        form.cmd_TakeMeterValues->click();
        QCOMPARE(form.Combo_CT_Ratio->currentText(), QString::number(savedCt));
    }
};

QTEST_MAIN(ConfigurationTest)
#include "ConfigurationTest.moc"
