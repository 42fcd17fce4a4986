#pragma once

#include <QString>

// The modal questions and error boxes the core puts to the operator. The window shows real
// dialogs; a command-line front end or a test answers them itself.
class OperatorPrompts {
public:
    virtual ~OperatorPrompts() = default;
    // A message box titled "Error" with the critical-stop icon and an OK button.
    virtual void Critical(const QString& text) = 0;
    // A message box titled "Hint！" with Yes and No buttons; true for Yes.
    virtual bool AskYesNo(const QString& text) = 0;
    // The confirmation dialog: `question` with OK and Cancel under `caption`; true for OK.
    // Clearing the energy counters and changing or clearing a load-profile group ask here.
    virtual bool Confirm(const QString& caption, const QString& question) = 0;
};
