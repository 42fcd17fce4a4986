#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class MainForm;

// What the window's command-line options choose in its connection frame; an empty one leaves
// the window's own starting choice.
struct WindowOptions {
    QString port;      // "sim", a port number as the list counts them, a device path or tcp://host:port
    QString baudRate;
    QString stopBits;
    QString address;
};

// What the arguments ask for: the window with `options`, or the end of the program with
// `status` after `text` is printed (on standard output for status 0, on standard error else).
struct WindowStart {
    std::optional<WindowOptions> options;
    int status = 0;
    QString text;
};

// Reads the program's arguments (its name first) and checks each value against the list it
// picks from: help and version give status 0, a bad value or option status 2.
WindowStart ReadWindowOptions(const QStringList& arguments);

// Picks the options' entries in the form's lists after Form_Load, each running its list's
// handler as the operator's pick would. False, with the reason in `error`, when the port names
// no entry.
bool ApplyWindowOptions(MainForm& form, const WindowOptions& options, QString* error);
