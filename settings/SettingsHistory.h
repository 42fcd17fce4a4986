#pragma once

#include "measure/MeterReading.h"
#include "settings/SettingOutcome.h"
#include "settings/SettingWrites.h"

#include <QList>
#include <QObject>

// The setting commands of this run of the tool and how each ended: after a write the following
// ticks' readings are searched for the new value.
class SettingsHistory : public QObject {
    Q_OBJECT
public:
    // Readings searched after a write before it counts as not confirmed.
    static constexpr int kConfirmTicks = 3;
    // The oldest entries go beyond this many.
    static constexpr int kKept = 200;

    // A write the meter acknowledged (`outcome` Waiting): waits for a reading that `shows` it.
    // Anything else is final as it is.
    void Add(const SettingOutcome& outcome, const RegisterWrite& write = {}, const MeterReading& before = {});
    // Each good tick's reading.
    void Observe(const MeterReading& reading);
    // Writes still waiting are not confirmed: the next connection may reach another meter.
    void WentOffLine();

    // Oldest first.
    const QList<SettingOutcome>& Entries() const { return m_entries; }
    // The entry of request `id`; nothing when there is none (yet, or any more).
    const SettingOutcome* Find(quint64 id) const;

signals:
    void changed();
    // An entry reached its final outcome.
    void settled(const SettingOutcome& outcome);

private:
    struct Awaited {
        quint64 id;
        int ticks = 0;
        RegisterWrite write;
        MeterReading before;
    };

    void Settle(quint64 id, SettingOutcome::Result result);
    SettingOutcome* Entry(quint64 id);

    QList<SettingOutcome> m_entries;
    QList<Awaited> m_awaited;
};
