// The configuration buttons through the window against the simulated meter: a saved file
// applied after the meter's registers changed writes them back (several display items one after
// another) and the history shows each confirmed; a file of another format is refused with
// nothing sent; the meter's values are taken into the setting fields; the commissioning report
// is written through its dialog, on line and off.
#include "ReportFixtures.h"
#include "WindowOnLine.h"
#include "session/CommissioningReport.h"
#include "session/MeterSession.h"
#include "settings/SettingWrites.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/ApplyConfigurationDialog.h"
#include "ui/CommissioningReportDialog.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int kSettleMs = 10000;
using Registers = QMap<int, int>; // register → value

// Writes the report as the dialog's Write button does; the PDF's text.
QString WriteReport(MainForm& form, const QString& path)
{
    CommissioningReportDialog dialog(form);
    dialog.txt_Engineer->setText(QStringLiteral("A. Tester"));
    dialog.txt_File->setText(path);
    const std::optional<QString> error = dialog.Write();
    return error ? *error : PdfText(path);
}

} // namespace

class ConfigurationTest : public QObject {
    Q_OBJECT
private slots:
    void savedFileWritesTheChangedSettingsBack()
    {
        const Registers changes{{SettingRegister::kCtRatio, 150}, {0x1052, 1}, {0x1053, 2}};
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

    // The report holds the trend's extremes and the history as the window shows them; off line
    // its reading is dated and not called current. A file that cannot be written is named.
    void commissioningReportFromTheWindow()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("pdftotext (poppler-utils) is not installed");
        WindowOnLine window;
        MainForm& form = window.form;
        QVERIFY(!form.cmd_CommissioningReport->isEnabled());
        form.On_Line->click();
        QTRY_VERIFY_WITH_TIMEOUT(form.cmd_CommissioningReport->isEnabled(), kSettleMs);
        form.Combo1->setCurrentIndex(form.Combo1->currentIndex() == 1 ? 2 : 1);
        form.Command6->click();
        QTRY_COMPARE_WITH_TIMEOUT(form.tbl_SettingsHistory->rowCount(), 1, kSettleMs);
        QTRY_COMPARE_WITH_TIMEOUT(form.tbl_SettingsHistory->item(0, 3)->text(), QStringLiteral("confirmed"), kSettleMs);
        const QString written = form.tbl_SettingsHistory->item(0, 0)->text();

        QTemporaryDir dir;
        const QString onLine = WriteReport(form, dir.filePath(QStringLiteral("on.pdf")));
        QVERIFY2(onLine.contains(QRegularExpression(written + R"(\s+Scroll.*→.*confirmed)")), qPrintable(onLine));
        QVERIFY2(onLine.contains(QRegularExpression(R"((?m)^Frequency\s+[\d.]+\s+Hz\s+[\d.]+\s+[\d.]+$)")), qPrintable(onLine.section(QStringLiteral("Measurements"), 1)));
        QVERIFY(!onLine.contains(QStringLiteral("not current")));

        form.On_Line->click();
        const QString taken = TimeWithOffset(form.session().Reading().takenAt);
        const QString offLine = WriteReport(form, dir.filePath(QStringLiteral("off.pdf")));
        QVERIFY2(offLine.contains(QStringLiteral("Reading taken %1 (not current").arg(taken)), qPrintable(offLine));

        const QString blocked = dir.filePath(QStringLiteral("missing/report.pdf"));
        QVERIFY(WriteReport(form, blocked).startsWith(QStringLiteral("cannot write %1: ").arg(QDir::toNativeSeparators(blocked))));
    }
};

QTEST_MAIN(ConfigurationTest)
#include "ConfigurationTest.moc"
