#pragma once

#include "connection/OperatorPrompts.h"

class QWidget;

// The operator's questions and errors as modal message boxes over the window.
class MessageBoxPrompts : public OperatorPrompts {
public:
    explicit MessageBoxPrompts(QWidget* owner) : m_owner(owner) {}
    void Critical(const QString& text) override;
    bool AskYesNo(const QString& text) override;

private:
    QWidget* m_owner;
};
