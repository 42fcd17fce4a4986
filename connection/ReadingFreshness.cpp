#include "connection/ReadingFreshness.h"

#include "connection/Connection.h"
#include "connection/PollCycle.h"

namespace {

constexpr unsigned kAllBlocks = MeterReading::RealTimeImage | MeterReading::Frequency | MeterReading::Energy
    | MeterReading::Ratios | MeterReading::PtRatio2;

} // namespace

ReadingFreshness::ReadingFreshness(Connection& connection, PollCycle& poll, QObject* parent) : QObject(parent)
{
    connect(&connection, &Connection::onLineChanged, this,
            [this](bool onLine) { Update(onLine, false, m_lastGood); }); // a new line has read nothing yet
    connect(&poll, &PollCycle::tickEnded, this, &ReadingFreshness::TickEnded);
}

QString ReadingFreshness::Note() const
{
    return Stale() ? QStringLiteral("Last good reading %1").arg(m_lastGood.toString(QStringLiteral("HH:mm:ss")))
                   : QString();
}

void ReadingFreshness::TickEnded(const MeterReading& reading)
{
    const bool good = (reading.fresh & kAllBlocks) == kAllBlocks;
    Update(m_onLine, good, good ? reading.takenAt : m_lastGood);
}

void ReadingFreshness::Update(bool onLine, bool lastTickGood, const QDateTime& lastGood)
{
    const bool wasStale = Stale();
    const QDateTime before = m_lastGood;
    m_onLine = onLine;
    m_lastTickGood = lastTickGood;
    m_lastGood = lastGood;
    if (Stale() != wasStale || (Stale() && m_lastGood != before))
        emit changed();
}
