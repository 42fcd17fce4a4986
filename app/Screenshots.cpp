// Renders each tab of the window to a PNG while on line to the simulated meter, and the
// load-profile tab during and after a download, so that the screen can be looked at without a
// display: qx5820-screenshots OUTPUT_DIR [SECONDS]
#include "connection/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/TrafficView.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTabWidget>
#include <QTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: qx5820-screenshots OUTPUT_DIR [SECONDS]\n");
        return 2;
    }
    const QDir out(args.at(1));
    QDir().mkpath(out.path());
    const int seconds = args.size() > 2 ? args.at(2).toInt() : 3;

    sim::SimulatedMeterHost simulator;
    MainForm form;
    form.session().connection.simulatedMeterDevice = simulator.deviceSource();
    form.Form_Load();
    form.ChooseSimulatedMeter();
    form.show();
    form.On_Line->click();
    // A few settings written, so that the settings tab shows its history.
    form.Combo_CT_Ratio->setEditText(QStringLiteral("200"));
    form.Cmd_CT_Ratio->click();
    form.Combo1->setCurrentIndex(4);
    form.Command6->click();
    form.Comm_SetTime->click();
    form.txtPT1->setText(QStringLiteral("11000"));
    form.txtPT2->setText(QStringLiteral("110"));
    form.Comm_change_VT->click();

    const auto save = [&](const QString& name) {
        const QString file = out.filePath(name);
        if (!form.grab().save(file)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
            app.exit(1);
            return false;
        }
        std::printf("%s\n", qPrintable(file));
        return true;
    };
    // The tabs, then the load-profile tab during and after a download of 60 intervals (into a
    // folder that goes away with the program).
    QTemporaryDir lpFolder;
    form.session().download.programFolder = lpFolder.path();
    // A spoiled reply and a lost one shortly before, so that the traffic shows retries.
    QTimer::singleShot(seconds * 1000 - 600, &form, [&] {
        simulator.injectFault(sim::Fault::badCrc());
        simulator.injectFault(sim::Fault::noReply());
    });
    QTimer::singleShot(seconds * 1000 + 2500, &form, [&] {
        for (int tab = 0; tab < form.tabs->count(); ++tab) {
            form.tabs->setCurrentIndex(tab);
            if (!save(QStringLiteral("tab%1.png").arg(tab)))
                return;
        }
        form.tabs->setCurrentWidget(form.trafficView);
        if (!save(QStringLiteral("traffic.png")))
            return;
        form.Combo_LP_Start_No->setCurrentIndex(1);
        form.Combo_LP_Stop_No->setCurrentIndex(60);
        form.Command8->click();
        QTimer::singleShot(1000, &form, [&] { save(QStringLiteral("lp-downloading.png")); });
    });
    QObject::connect(&form.session().download, &LpDownload::faceChanged, &form, [&](LpDownload::Face face) {
        if (face != LpDownload::Face::Normal || !save(QStringLiteral("lp-finished.png")))
            return;
        // Off line, the real-time values are the last good reading's.
        form.On_Line->click();
        form.tabs->setCurrentIndex(0);
        if (save(QStringLiteral("stale.png")))
            form.close();
    });
    return app.exec();
}
