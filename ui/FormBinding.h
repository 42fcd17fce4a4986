#pragma once

#include "ports/Clock.h"
#include "session/MeterSession.h"
#include "ui/ComboIntervalLists.h"
#include "ui/ConfigurationBinding.h"
#include "ui/LoadProfileBinding.h"
#include "ui/PortListBinding.h"
#include "ui/RealTimeDisplay.h"
#include "ui/SettingsTabBinding.h"
#include "ui/StaleReadings.h"
#include "ui/WidgetScreen.h"
#include "ui/WindowPrompts.h"

#include <QObject>

class MainForm;

// Binds the window's controls to the meter session: the ports it writes through, the
// operator's choices and clicks it takes, the readings it shows, and the faces of the on-line
// and off-line states.
class FormBinding : public QObject {
    Q_OBJECT
public:
    explicit FormBinding(MainForm& form);

    WindowPrompts prompts;
    ComboIntervalLists intervalLists;
    SystemClock clock;
    MeterSession session;
    SettingsTabBinding settingsTab;
    LoadProfileBinding loadProfile;
    ConfigurationBinding configuration;
    PortListBinding portList;

private:
    void ConnectConnectionControls();
    void ConnectStatusArea();
    void ConnectRealTimeDisplay();
    void ConnectItemLists();
    void ChooseLine();
    void ShowOnLineState(bool onLine);

    MainForm& m_form;
    WidgetScreen m_screen;
    RealTimeDisplay m_display;
    StaleReadings m_staleReadings;
};
