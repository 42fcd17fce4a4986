#include "ui/WindowPrompts.h"

#include "ui/Dialog_Clr_kWh.h"

#include <QMessageBox>

void WindowPrompts::Critical(const QString& text)
{
    QMessageBox::critical(m_owner, QStringLiteral("Error"), text, QMessageBox::Ok);
}

bool WindowPrompts::AskYesNo(const QString& text)
{
    return QMessageBox::question(m_owner, QStringLiteral("Hint！"), text, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

bool WindowPrompts::Confirm(const QString& caption, const QString& question)
{
    return Dialog_Clr_kWh::confirm(m_owner, caption, question);
}
