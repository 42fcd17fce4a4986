#include "settings/SettingsHistory.h"

#include "link/RtuFrames.h"

QString SettingsHistory::FailureText(TransactionOutcome outcome, quint8 exception)
{
    if (outcome == TransactionOutcome::Abandoned)
        return QStringLiteral("no reply: the line went away");
    if (exception != 0)
        return QStringLiteral("refused: exception %1 (%2)").arg(exception).arg(Rtu::ExceptionName(exception));
    return QStringLiteral("no reply");
}

void SettingsHistory::Written(const QDateTime& at, SettingChange change)
{
    Add(at, change, kWaiting);
    m_awaited.append({m_firstEntry + m_entries.size() - 1, 0, std::move(change.shownBy)});
}

void SettingsHistory::Ended(const QDateTime& at, const SettingChange& change, const QString& outcome)
{
    Add(at, change, outcome);
}

void SettingsHistory::Observe(const MeterReading& reading)
{
    for (qsizetype i = m_awaited.size() - 1; i >= 0; --i) {
        Awaited& awaited = m_awaited[i];
        ++awaited.ticks;
        if (awaited.shownBy(reading))
            Settle(awaited.entry, kConfirmed);
        else if (awaited.ticks >= kConfirmTicks)
            Settle(awaited.entry, NotConfirmedText());
        else
            continue;
        m_awaited.removeAt(i);
    }
}

void SettingsHistory::WentOffLine()
{
    for (const Awaited& awaited : std::as_const(m_awaited))
        Settle(awaited.entry, QStringLiteral("not confirmed: the tool went off line"));
    m_awaited.clear();
}

void SettingsHistory::Add(const QDateTime& at, const SettingChange& change, const QString& outcome)
{
    m_entries.append({at, change.setting, change.from, change.to, outcome});
    if (m_entries.size() > kKept) {
        m_entries.removeFirst();
        ++m_firstEntry;
    }
    emit changed();
}

void SettingsHistory::Settle(qint64 entry, const QString& outcome)
{
    const qint64 index = entry - m_firstEntry;
    if (index >= 0 && index < m_entries.size())
        m_entries[index].outcome = outcome;
    emit changed();
}
