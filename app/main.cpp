#include "session/MeterSession.h"
#include "sim/SimulatedMeterHost.h"
#include "ui/MainForm.h"
#include "ui/WindowOptions.h"

#include <QApplication>

#include <cstdio>

namespace {

// Without one, Qt would abort as the application is made.
bool HasDisplay(const QStringList& arguments)
{
#ifdef Q_OS_LINUX
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || arguments.contains(QStringLiteral("-platform"));
#else
    Q_UNUSED(arguments);
    return true;
#endif
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication::setApplicationName(QStringLiteral("qx5820-setting"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
    WindowStart start;
    QStringList arguments;
    {
        // No window yet: the help and bad values are answered without a display.
        const QCoreApplication probe(argc, argv);
        arguments = QCoreApplication::arguments();
        start = ReadWindowOptions(arguments);
    }
    if (!start.options) {
        std::fputs(qPrintable(start.text), start.status == 0 ? stdout : stderr);
        return start.status;
    }
    if (!HasDisplay(arguments)) {
        std::fprintf(stderr,
                     "%s: no display to open the window on (neither DISPLAY nor WAYLAND_DISPLAY is set).\n"
                     "Start it under a virtual X server:  xvfb-run -a %s\n"
                     "or with no screen at all:           QT_QPA_PLATFORM=offscreen %s\n",
                     argv[0], argv[0], argv[0]);
        return 1;
    }

    QApplication app(argc, argv);
    // The port list's simulated meter, started on its pseudo-terminal only when the operator
    // goes on line to it. Declared first: it outlives the window that talks to it.
    sim::SimulatedMeterHost simulator;
    MainForm form;
    form.session().connection.simulatedMeterDevice = simulator.deviceSource();
    form.Form_Load();
    if (QString error; !ApplyWindowOptions(form, *start.options, &error)) {
        std::fprintf(stderr, "%s: --port: %s\n", argv[0], qPrintable(error));
        return 2;
    }
    form.show();
    return app.exec();
}
