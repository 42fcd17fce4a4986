#include "ui/ConfigurationWrites.h"

#include "session/MeterSession.h"

#include <iterator>
#include <utility>

ConfigurationWrites::ConfigurationWrites(MeterSession& session) : m_session(session)
{
    connect(&session.settings.history, &SettingsHistory::changed, this, &ConfigurationWrites::Next);
}

void ConfigurationWrites::Send(const QList<ConfiguredSetting>& items, quint64 askedOn)
{
    for (const ConfiguredSetting& item : items)
        m_queued.append({item, askedOn});
    Next();
}

// A request changes the history at once: the change is taken up when this round ends.
void ConfigurationWrites::Next()
{
    if (m_requesting) {
        m_again = true;
        return;
    }
    m_requesting = true;
    do {
        m_again = false;
        RequestFree();
    } while (m_again);
    m_requesting = false;
}

void ConfigurationWrites::RequestFree()
{
    for (auto id = m_waiting.begin(); id != m_waiting.end();) {
        const SettingOutcome* outcome = m_session.settings.history.Find(*id);
        id = outcome != nullptr && outcome->Final() ? m_waiting.erase(id) : std::next(id);
    }
    QList<std::pair<ConfiguredSetting, quint64>> later;
    for (const auto& [item, askedOn] : std::as_const(m_queued)) {
        if (m_waiting.contains(item.setting))
            later.append({item, askedOn});
        else
            m_waiting.insert(item.setting, m_session.Request(item.setting, FixedValue(item.value), askedOn));
    }
    m_queued = later;
}
