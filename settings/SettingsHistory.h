#pragma once

#include "link/RegisterLink.h"
#include "settings/Setting.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

struct MeterReading;

// A write to the meter as the history keeps it: what the meter held before and what was sent.
struct SettingChange {
    Setting setting;
    QString from; // empty when no reading held it yet
    QString to;
    // Whether a later reading shows the meter holding the new value.
    std::function<bool(const MeterReading&)> shownBy;
};

struct HistoryEntry {
    QDateTime at;
    Setting setting;
    QString from;
    QString to;
    QString outcome;
};

// The settings written in this run of the tool, and whether the meter took them: after a
// write the following ticks' readings are searched for the new value.
class SettingsHistory : public QObject {
    Q_OBJECT
public:
    // Readings searched after a write before it counts as not confirmed.
    static constexpr int kConfirmTicks = 3;
    // The oldest entries go beyond this many.
    static constexpr int kKept = 200;
    // The outcome of a write while readings are searched for its value, and once one shows it.
    static inline const QString kWaiting = QStringLiteral("waiting for the meter");
    static inline const QString kConfirmed = QStringLiteral("confirmed");
    static QString NotConfirmedText() { return QStringLiteral("not confirmed within %1 ticks").arg(kConfirmTicks); }
    // The outcome of a write that ended without acknowledgement: "refused: exception 3 (...)"
    // when the meter answered with an exception, else "no reply".
    static QString FailureText(TransactionOutcome outcome, quint8 exception);

    // A write the meter acknowledged: waits for the new value to show.
    void Written(const QDateTime& at, SettingChange change);
    // A write that ended without acknowledgement, or a command that sent nothing.
    void Ended(const QDateTime& at, const SettingChange& change, const QString& outcome);
    // Each good tick's reading.
    void Observe(const MeterReading& reading);
    // Writes still waiting are not confirmed: the next connection may reach another meter.
    void WentOffLine();

    // Oldest first.
    const QList<HistoryEntry>& Entries() const { return m_entries; }

signals:
    void changed();

private:
    struct Awaited {
        qint64 entry;
        int ticks = 0;
        std::function<bool(const MeterReading&)> shownBy;
    };

    void Add(const QDateTime& at, const SettingChange& change, const QString& outcome);
    void Settle(qint64 entry, const QString& outcome);

    QList<HistoryEntry> m_entries;
    qint64 m_firstEntry = 0; // sequence number of m_entries.front()
    QList<Awaited> m_awaited;
};
