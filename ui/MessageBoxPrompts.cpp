#include "ui/MessageBoxPrompts.h"

#include <QMessageBox>

void MessageBoxPrompts::Critical(const QString& text)
{
    QMessageBox::critical(m_owner, QStringLiteral("Error"), text, QMessageBox::Ok);
}

bool MessageBoxPrompts::AskYesNo(const QString& text)
{
    return QMessageBox::question(m_owner, QStringLiteral("Hint！"), text, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}
