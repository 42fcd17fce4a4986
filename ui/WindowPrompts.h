#pragma once

#include "ports/OperatorPrompts.h"

class QWidget;

// The operator's questions and errors as modal dialogs over the window.
class WindowPrompts : public OperatorPrompts {
public:
    explicit WindowPrompts(QWidget* owner) : m_owner(owner) {}
    void Critical(const QString& text) override;
    bool AskYesNo(const QString& text) override;
    bool Confirm(const QString& caption, const QString& question) override;

private:
    QWidget* m_owner;
};
