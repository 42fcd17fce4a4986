// The load-profile download through the window against the simulated meter: its progress
// reaches the range's total and the end names the file written; the plot follows a dark theme.
#include "WindowOnLine.h"
#include "ui/LpPlotView.h"
#include "ui/TimeChart.h"

#include <QAbstractAxis>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int kSettleMs = 10000;

} // namespace

class LoadProfileTabTest : public QObject {
    Q_OBJECT
private slots:
    // 18 intervals end in a short step that reads past the range: the bar still stops at 18.
    void downloadShowsProgressAndTheFile()
    {
        QTemporaryDir folder;
        WindowOnLine window;
        MainForm& f = window.form;
        LpDownload& download = f.session().download;
        download.programFolder = folder.path();
        f.On_Line->click();
        QTRY_VERIFY_WITH_TIMEOUT(download.ValidIntervals(0) >= 18, kSettleMs);
        f.Combo_LP_Start_No->setEditText(QStringLiteral("1"));
        f.Combo_LP_Stop_No->setEditText(QStringLiteral("18"));
        QSignalSpy finished(&download, &LpDownload::finished);
        f.Command8->click();
        QVERIFY(finished.wait(kSettleMs));

        const auto* progress = f.findChild<QProgressBar*>(QStringLiteral("LpDownloadProgress"));
        QCOMPARE(progress->maximum(), 18);
        QCOMPARE(progress->value(), 18);
        QVERIFY(f.findChild<QLabel*>(QStringLiteral("LpDownloadPace"))->text().endsWith(QStringLiteral(" 0:00 left")));
        QVERIFY(QFile::exists(download.LpFilePath));
        QVERIFY(f.findChild<QLabel*>(QStringLiteral("LpDownloadEnd"))->text().endsWith(QDir::toNativeSeparators(download.LpFilePath)));
        QVERIFY(!f.findChild<QPushButton*>(QStringLiteral("LpOpenFolder"))->isHidden());
    }

    void darkPaletteLightensThePlotText()
    {
        WindowOnLine window;
        QPalette dark = window.form.palette();
        dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
        dark.setColor(QPalette::Text, QColor(0xE0, 0xE0, 0xE0));
        dark.setColor(QPalette::Mid, QColor(0x60, 0x60, 0x60));
        window.form.setPalette(dark);
        const QList<QAbstractAxis*> axes = window.form.findChild<LpPlotView*>()->chart->chart()->axes();
        QCOMPARE(axes.size(), 2);
        for (const QAbstractAxis* axis : axes)
            QVERIFY(axis->labelsBrush().color().lightness() > 128);
    }
};

QTEST_MAIN(LoadProfileTabTest)
#include "LoadProfileTabTest.moc"
