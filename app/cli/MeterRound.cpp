#include "app/cli/MeterRound.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"

#include <QStringList>

#include <algorithm>

bool MeterRound::Run(const std::function<int()>& each)
{
    bool anyAnswered = false;
    for (const int address : m_console.Addresses()) {
        int status = m_console.TurnTo(address);
        if (status == kExitOk)
            status = each();
        if (status == kExitNoAnswer) {
            if (!m_silent.contains(address))
                m_silent.append(address);
            continue;
        }
        // Failures of the line or the PC concern every meter alike.
        if (status == kExitPortUnusable || status == kExitFileError || status == kExitInterrupted) {
            m_ended = status;
            return false;
        }
        anyAnswered = true;
        m_worst = std::max(m_worst, status);
    }
    if (!anyAnswered)
        m_ended = kExitNoAnswer;
    return anyAnswered;
}

int MeterRound::Finish() const
{
    if (m_ended && *m_ended != kExitNoAnswer)
        return *m_ended;
    if (m_silent.isEmpty())
        return m_worst;
    if (m_console.Addresses().size() == 1)
        return kExitNoAnswer;
    QStringList named;
    for (const int address : m_silent)
        named.append(QString::number(address));
    return Fail(kExitNoAnswer, QStringLiteral("no answer from address%1 %2")
                                   .arg(named.size() == 1 ? QString() : QStringLiteral("es"), named.join(QStringLiteral(", "))));
}
