// Renders each tab of the window to a PNG while on line to the simulated meter, so that the
// screen can be looked at without a display: qx5820-screenshots OUTPUT_DIR [SECONDS]
#include "connection/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
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

    QTimer::singleShot(seconds * 1000, &form, [&] {
        for (int tab = 0; tab < form.tabs->count(); ++tab) {
            form.tabs->setCurrentIndex(tab);
            const QString file = out.filePath(QStringLiteral("tab%1.png").arg(tab));
            if (!form.grab().save(file)) {
                std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
                app.exit(1);
                return;
            }
            std::printf("%s\n", qPrintable(file));
        }
        form.close();
    });
    return app.exec();
}
