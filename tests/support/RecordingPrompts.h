#pragma once

#include "ports/OperatorPrompts.h"

#include <QStringList>

// Answers the operator's questions in tests and keeps what was asked.
class RecordingPrompts : public OperatorPrompts {
public:
    void Critical(const QString& text) override { errors.append(text); }
    bool AskYesNo(const QString& text) override
    {
        questions.append(text);
        return answerYes;
    }

    bool Confirm(const QString& caption, const QString& question) override
    {
        questions.append(caption + QStringLiteral(": ") + question);
        return answerYes;
    }

    QStringList errors;
    QStringList questions;
    bool answerYes = true;
};
