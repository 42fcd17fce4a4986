#include "connection/PollCycle.h"

#include "connection/Connection.h"
#include "measure/FixedFormat.h"
#include "measure/ReadingDecoding.h"
#include "ports/Clock.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTimer>

using PollPlan::kBlocks;

PollCycle::PollCycle(Connection& connection, const Clock& clock, QObject* parent)
    : QObject(parent), m_connection(connection), m_clock(clock)
{
    connect(&m_connection.Timer1Sec, &QTimer::timeout, this, &PollCycle::Timer1Sec_Timer);
    // A new connection may reach another meter: nothing read before counts as known.
    connect(&m_connection, &Connection::onLineChanged, this, [this](bool onLine) {
        if (onLine)
            m_reading.known = 0;
    });
}

void PollCycle::Timer1Sec_Timer()
{
    if (m_tickRunning) {
        m_tickDue = true;
        return;
    }
    m_tickRunning = true;
    QElapsedTimer duration;
    duration.start();
    const auto done = qScopeGuard([this, &duration] {
        emit tickEnded(m_reading);
        StartNextTickIfDue(duration.elapsed());
    });

    m_reading.fresh = 0;
    m_reading.takenAt = m_clock.Now();
    m_connection.link.ResetRxData();
    m_connection.link.bCommOK = kTrue;
    if (!ReadRealTimeImage() || !ReadFrequency())
        return;
    // Even when the energy block gave up, the lists follow the last count the meter reported
    // and the status line is cleared; the reason for going off line stays in its own field.
    // Only a line that went away mid-read ends the tick at once.
    const TransactionResult energy = ReadEnergy();
    if (energy.kind == TransactionResult::Abandoned)
        return;
    emit intervalCountsDue(m_reading);
    m_connection.status.Set(QString());
    if (!energy.good() || !ReadRatios() || !ReadPtRatio2())
        return;
    emit readingTaken(m_reading);
    emit commandsDue();
}

void PollCycle::StartNextTickIfDue(qint64 elapsedMs)
{
    m_tickRunning = false;
    // A tick that outlasted the interval swallowed the timer's expiries meanwhile: start the
    // next one now rather than at the timer's next expiry, so that the line is not left idle.
    const bool overran = elapsedMs >= m_connection.Timer1Sec.interval();
    if ((overran || m_tickDue) && m_connection.Timer1Sec.isActive())
        QTimer::singleShot(0, this, &PollCycle::Timer1Sec_Timer);
    m_tickDue = false;
}

bool PollCycle::ReadRealTimeImage()
{
    RegisterLink& link = m_connection.link;
    // The five blocks append to one image; RxData was emptied at the start of the tick.
    for (std::size_t i = 0; i < PollPlan::kImageBlocks; ++i) {
        const PollBlock& block = kBlocks[i];
        PollStep = block.step;
        if (!link.ReadRegisters(link.ModbusAddress, block.function, block.start, block.count).good())
            return false;
    }
    if (link.RxUpperBound() == PollPlan::kImageSize - 1) {
        DecodeRealTimeImage(link.RxData, m_reading);
        emit blockRead(MeterReading::RealTimeImage, m_reading);
    }
    return true;
}

bool PollCycle::ReadFrequency()
{
    if (!Read(kBlocks[PollPlan::Frequency]).good())
        return false;
    DecodeFrequency(m_connection.link.RxData, m_reading);
    emit blockRead(MeterReading::Frequency, m_reading);
    return true;
}

TransactionResult PollCycle::ReadEnergy()
{
    const TransactionResult result = Read(kBlocks[PollPlan::Energy]);
    if (result.good()) {
        DecodeEnergy(m_connection.link.RxData, m_reading);
        emit blockRead(MeterReading::Energy, m_reading);
    }
    return result;
}

bool PollCycle::ReadRatios()
{
    if (!Read(kBlocks[PollPlan::Ratios]).good())
        return false;
    DecodeRatios(m_connection.link.RxData, m_reading);
    // PT ratio 1 as the operator sees it, to one decimal: the meter holds PT ratio 2 relative
    // to it. A register beyond the signed range is still the meter's ratio and is used as such.
    PtRatio1Value = FormatFixed(m_reading.ptRatio1Register / 10.0, 1).toDouble();
    emit blockRead(MeterReading::Ratios, m_reading);
    return true;
}

bool PollCycle::ReadPtRatio2()
{
    if (!Read(kBlocks[PollPlan::PtRatio2]).good())
        return false;
    DecodePtRatio2(m_connection.link.RxData, PtRatio1Value, m_reading);
    emit blockRead(MeterReading::PtRatio2, m_reading);
    return true;
}

TransactionResult PollCycle::Read(const PollBlock& block)
{
    if (block.step != 0)
        PollStep = block.step;
    RegisterLink& link = m_connection.link;
    link.ResetRxData();
    return link.ReadRegisters(link.ModbusAddress, block.function, block.start, block.count);
}
