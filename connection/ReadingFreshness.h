#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

class Connection;
class PollCycle;
struct MeterReading;

// Whether the values on screen are still the meter's: they are while on line and the latest
// poll tick read every block. Otherwise they are the last good reading's, and a presenter shows
// them as such, with its time. Before the first good reading there is nothing to mark.
class ReadingFreshness : public QObject {
    Q_OBJECT
public:
    ReadingFreshness(Connection& connection, PollCycle& poll, QObject* parent = nullptr);

    bool Stale() const { return m_lastGood.isValid() && !(m_onLine && m_lastTickGood); }
    // "Last good reading 13:05:07" while stale; empty otherwise.
    QString Note() const;

signals:
    // Emitted only when Stale() changed, or while stale the time of the last good reading.
    void changed();

private:
    void TickEnded(const MeterReading& reading);
    void Update(bool onLine, bool lastTickGood, const QDateTime& lastGood);

    bool m_onLine = false;
    bool m_lastTickGood = false;
    QDateTime m_lastGood;
};
