#include "connection/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/MainForm.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("qx5820-setting"));

    // The tool itself takes no settings from outside the window; this one option only saves
    // a developer from picking the simulated meter by hand.
    QCommandLineParser options;
    options.addHelpOption();
    const QCommandLineOption simulated(QStringLiteral("simulated-meter"),
                                       QStringLiteral("Start with the built-in simulated meter chosen as the port."));
    options.addOption(simulated);
    options.process(app);

    // The port list's last entry is a simulated meter, started on its pseudo-terminal only when
    // the operator goes on line to it. Declared first: it outlives the window that talks to it.
    sim::SimulatedMeterHost simulator;
    MainForm form;
    form.session().connection.simulatedMeterDevice = simulator.deviceSource();
    form.Form_Load();
    if (options.isSet(simulated))
        form.ChooseSimulatedMeter();
    form.show();
    return app.exec();
}
