// Renders each tab of the window to a PNG while on line to the simulated meter, the
// load-profile tab during and after a download, the plot of the downloaded file and then the
// trends of the session, and the port list open before all that, so that the screen can be
// looked at without a display:
// qx5820-screenshots OUTPUT_DIR [SECONDS]
// With --wiring-fault NAME it renders only the phasor tab, to phasors.png, the meter wired with
// that fault to a balanced load at power factor 0.9 lagging.
#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/LpPlotView.h"
#include "ui/MainForm.h"
#include "ui/TrafficView.h"
#include "ui/TrendView.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTabWidget>
#include <QTimer>

#include <cstdio>
#include <optional>
#include <utility>

namespace {

// The window with its port list open, before going on line locks the list. The open list is a
// window of its own, drawn over the grab of the main one.
bool SavePortList(MainForm& form, const QString& file)
{
    form.Combo_CommPort->showPopup();
    QWidget* popup = form.Combo_CommPort->view()->window();
    QPixmap shot = form.grab();
    QPainter painter(&shot);
    painter.drawPixmap(popup->mapToGlobal(QPoint()) - form.mapToGlobal(QPoint()), popup->grab());
    painter.end();
    form.Combo_CommPort->hidePopup();
    if (!shot.save(file)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
        return false;
    }
    std::printf("%s\n", qPrintable(file));
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption wiringFault(QStringLiteral("wiring-fault"),
        QStringLiteral("Render the phasor tab only, the meter wired with this fault: %1.")
            .arg(sim::WiringFault::names().join(QStringLiteral(", "))), QStringLiteral("NAME"));
    parser.addOption(wiringFault);
    parser.process(app);
    const QStringList args = parser.positionalArguments();
    const std::optional<sim::WiringFault> fault = sim::WiringFault::parse(parser.value(wiringFault));
    if (args.isEmpty() || (parser.isSet(wiringFault) && !fault)) {
        std::fprintf(stderr, "usage: qx5820-screenshots [--wiring-fault NAME] OUTPUT_DIR [SECONDS]\n");
        return 2;
    }
    const QDir out(args.at(0));
    QDir().mkpath(out.path());
    const int seconds = args.size() > 1 ? args.at(1).toInt() : 3;

    sim::MeterModel meter;
    if (parser.isSet(wiringFault)) {
        meter.startWithLoad({0.9, false});
        meter.startWithWiring(*fault);
    }
    sim::SimulatedMeterHost simulator(std::move(meter));
    MainForm form;
    // As on a 1366×768 laptop less its task bar and title bar, whatever screen renders it.
    form.resize(1366, 700);
    form.session().connection.simulatedMeterDevice = simulator.deviceSource();
    form.Form_Load();
    form.ChooseSimulatedMeter();
    form.show();
    if (!SavePortList(form, out.filePath(QStringLiteral("ports.png"))))
        return 1;
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
    if (parser.isSet(wiringFault)) {
        QTimer::singleShot(seconds * 1000, &form, [&] {
            form.tabs->setCurrentWidget(form.findChild<QWidget*>(QStringLiteral("PhasorView")));
            if (save(QStringLiteral("phasors.png")))
                form.close();
        });
        return app.exec();
    }
    // The tabs, then the load-profile tab during and after a download of 60 intervals (into a
    // folder that goes away with the program).
    QTemporaryDir lpFolder;
    form.session().download.programFolder = lpFolder.path();
    // The tabs on a line without trouble; then a spoiled reply and a lost one, so that the
    // traffic shows retries (and the status line keeps the last of them).
    QTimer::singleShot(seconds * 1000, &form, [&] {
        for (int tab = 0; tab < form.tabs->count(); ++tab) {
            form.tabs->setCurrentIndex(tab);
            if (!save(QStringLiteral("tab%1.png").arg(tab)))
                return;
        }
        simulator.injectFault(sim::Fault::badCrc());
        simulator.injectFault(sim::Fault::noReply());
    });
    QTimer::singleShot(seconds * 1000 + 3100, &form, [&] {
        form.tabs->setCurrentWidget(form.trafficView);
        if (!save(QStringLiteral("traffic.png")))
            return;
        // Tabs added after the load-profile tab leave it behind the last one shown.
        for (int tab = 0; tab < form.tabs->count(); ++tab) {
            if (form.tabs->widget(tab)->isAncestorOf(form.Command8))
                form.tabs->setCurrentIndex(tab);
        }
        form.Combo_LP_Start_No->setCurrentIndex(1);
        form.Combo_LP_Stop_No->setCurrentIndex(60);
        form.Command8->click();
    });
    // A third of the way, so that the progress shows a rate and the time left; once the status
    // line has the step's number too.
    QObject::connect(&form.session().download, &LpDownload::rowsSaved, &form, [&] {
        if (form.session().download.LpCurrentIndex == 20)
            QTimer::singleShot(0, &form, [&] { save(QStringLiteral("lp-downloading.png")); });
    });
    QObject::connect(&form.session().download, &LpDownload::finished, &form, [&](LpEnd end) {
        if (end != LpEnd::Finished || !save(QStringLiteral("lp-finished.png")))
            return;
        // The plot tab has opened the file just written; the trends get a few more seconds.
        auto* plot = form.findChild<LpPlotView*>();
        form.tabs->setCurrentWidget(plot);
        // The report is read from the event loop: the picture waits for it, 10 s at most.
        QEventLoop reading;
        QObject::connect(plot, &LpPlotView::shown, &reading, &QEventLoop::quit);
        QTimer::singleShot(10000, &reading, &QEventLoop::quit);
        if (plot->Reading())
            reading.exec();
        if (!save(QStringLiteral("lp-plot.png")))
            return;
        form.tabs->setCurrentWidget(form.findChild<TrendView*>());
        QTimer::singleShot(seconds * 1000, &form, [&] {
            if (!save(QStringLiteral("trends.png")))
                return;
            // Off line, the real-time values are the last good reading's.
            form.On_Line->click();
            form.tabs->setCurrentIndex(0);
            if (save(QStringLiteral("stale.png")))
                form.close();
        });
    });
    return app.exec();
}
