#pragma once

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "loadprofile/LpDownload.h"
#include "ui/ComboIntervalLists.h"
#include "ui/MessageBoxPrompts.h"
#include "ui/WidgetScreen.h"

#include <QObject>

#include <memory>

class MainForm;
class QWidget;

namespace sim {
class SimulatedMeterHost;
}

// Binds the window's controls to the core: the connection and its port lists, the poll
// cycle, the status texts and the on-line and off-line faces of the window.
class FormBinding : public QObject {
    Q_OBJECT
public:
    explicit FormBinding(MainForm& form);
    ~FormBinding() override;

    // Stops both timers: the start of Form_Load and of Form_Unload.
    void StopTimers();
    // The window closes: the timers stop and every wait ends, so the program ends at once.
    void Form_Unload();
    // The simulated meter behind the port list's last entry; null until it was first chosen.
    sim::SimulatedMeterHost* SimulatedMeter() { return m_simulator.get(); }

    MessageBoxPrompts prompts;
    WidgetScreen screen;
    ComboIntervalLists intervalLists;
    Connection connection;
    PollCycle poll;
    LpDownload download;

private:
    void ConnectConnectionControls();
    void ConnectStatusArea();
    void ApplySettingsString();
    void ShowOnLineState(bool onLine);
    QString StartSimulatedMeter(QString* error);

    MainForm& m_form;
    std::unique_ptr<sim::SimulatedMeterHost> m_simulator;
};
