#pragma once

#include "session/MeterSession.h"
#include "ports/Clock.h"
#include "ui/ComboIntervalLists.h"
#include "ui/LeaveChecks.h"
#include "ui/PortListBinding.h"
#include "ui/SettingsTabBinding.h"
#include "ui/StaleReadings.h"
#include "ui/WidgetScreen.h"
#include "ui/WindowPrompts.h"

#include <QObject>

class MainForm;

// Binds the window's controls to the meter session: the ports it writes through, the
// operator's choices and clicks it takes, and the faces of the on-line and off-line states.
class FormBinding : public QObject {
    Q_OBJECT
public:
    explicit FormBinding(MainForm& form);

    WindowPrompts prompts;
    WidgetScreen screen;
    ComboIntervalLists intervalLists;
    SystemClock clock;
    MeterSession session;
    SettingsTabBinding settingsTab;
    PortListBinding portList;

private:
    void ConnectConnectionControls();
    void ConnectStatusArea();
    void ConnectItemLists();
    void ConnectLoadProfile();
    void ChooseLine();
    void ShowOnLineState(bool onLine);

    MainForm& m_form;
    LeaveChecks m_lpChecks;
    StaleReadings m_staleReadings;
};
