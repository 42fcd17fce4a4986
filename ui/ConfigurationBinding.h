#pragma once

#include "ui/ConfigurationWrites.h"

#include <QObject>

class MainForm;
class MeterSession;
class OperatorPrompts;
class SettingsTabBinding;

// Binds the "Configuration" buttons: the latest reading saved as a configuration file, a file
// applied through the session's pending commands after the operator saw what differs, and the
// meter's values taken into the setting fields so that the operator edits what it holds, and
// the commissioning report.
class ConfigurationBinding : public QObject {
    Q_OBJECT
public:
    ConfigurationBinding(MainForm& form, MeterSession& session, OperatorPrompts& prompts,
                         const SettingsTabBinding& settingsTab);

private:
    void SaveConfiguration();
    void ApplyConfiguration();
    void TakeMeterValues();
    void WriteReport();
    void ShowEnabled();

    MainForm& m_form;
    MeterSession& m_session;
    OperatorPrompts& m_prompts;
    const SettingsTabBinding& m_settingsTab;
    ConfigurationWrites m_writes;
};
