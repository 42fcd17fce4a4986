#include "settings/SettingsHistory.h"

#include "settings/SettingTable.h"

void SettingsHistory::Add(const SettingOutcome& outcome, const RegisterWrite& write, const MeterReading& before)
{
    m_entries.append(outcome);
    if (m_entries.size() > kKept)
        m_entries.removeFirst();
    if (outcome.Final())
        emit settled(outcome);
    else
        m_awaited.append({outcome.id, 0, write, before});
    emit changed();
}

void SettingsHistory::Observe(const MeterReading& reading)
{
    for (qsizetype i = m_awaited.size() - 1; i >= 0; --i) {
        Awaited& awaited = m_awaited[i];
        ++awaited.ticks;
        const SettingOutcome* entry = Find(awaited.id);
        if (entry && SpecOf(entry->setting).shows(reading, awaited.write, awaited.before))
            Settle(awaited.id, SettingOutcome::Confirmed);
        else if (awaited.ticks >= kConfirmTicks)
            Settle(awaited.id, SettingOutcome::NotConfirmed);
        else
            continue;
        m_awaited.removeAt(i);
    }
}

void SettingsHistory::WentOffLine()
{
    const QList<Awaited> awaited = std::exchange(m_awaited, {});
    for (const Awaited& write : awaited)
        Settle(write.id, SettingOutcome::OffLineUnconfirmed);
}

const SettingOutcome* SettingsHistory::Find(quint64 id) const
{
    for (const SettingOutcome& entry : m_entries) {
        if (entry.id == id)
            return &entry;
    }
    return nullptr;
}

SettingOutcome* SettingsHistory::Entry(quint64 id)
{
    return const_cast<SettingOutcome*>(std::as_const(*this).Find(id));
}

void SettingsHistory::Settle(quint64 id, SettingOutcome::Result result)
{
    SettingOutcome* entry = Entry(id);
    if (entry == nullptr)
        return;
    entry->result = result;
    const SettingOutcome settledNow = *entry;
    emit settled(settledNow);
    emit changed();
}
