#pragma once

#include <QString>

// The modal questions and error boxes the core asks the operator. The window shows real
// message boxes; tests answer with a recorder.
class OperatorPrompts {
public:
    virtual ~OperatorPrompts() = default;
    // A message box titled "Error" with the critical-stop icon and an OK button.
    virtual void Critical(const QString& text) = 0;
    // A message box titled "Hint！" with Yes and No buttons; true for Yes.
    virtual bool AskYesNo(const QString& text) = 0;
};
