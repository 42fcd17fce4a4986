#pragma once

#include "ui/LeaveChecks.h"

#include <QObject>

class MainForm;
class MeterSettings;

// Binds the "Meter Settig" tab to the meter's settings: the buttons, the checks of the typed
// fields as they lose the focus, what the meter holds beside each setting, and the history.
class SettingsTabBinding : public QObject {
    Q_OBJECT
public:
    SettingsTabBinding(MainForm& form, MeterSettings& settings);

private:
    void ConnectButtons();
    void ConnectChecks();
    void ShowReadBack();
    void ShowHistory();

    MainForm& m_form;
    MeterSettings& m_settings;
    LeaveChecks m_checks;
};
