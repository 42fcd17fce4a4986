#include "connection/PollCycle.h"

#include "connection/Connection.h"
#include "measure/FixedFormat.h"
#include "measure/ReadingDecoding.h"
#include "ports/Clock.h"
#include "ports/Screen.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTimer>

using PollPlan::kBlocks;

PollCycle::PollCycle(Connection& connection, Screen& screen, IntervalLists& lists, const Clock& clock,
                     QObject* parent)
    : QObject(parent), display(screen), numberLists(screen, lists), m_connection(connection), m_screen(screen),
      m_clock(clock)
{
    connect(&m_connection.Timer1Sec, &QTimer::timeout, this, &PollCycle::Timer1Sec_Timer);
    // A new connection may reach another meter: nothing read before counts as known.
    connect(&m_connection, &Connection::onLineChanged, this, [this](bool onLine) {
        if (onLine)
            m_reading.known = 0;
    });
}

void PollCycle::SetRoutine(PendingCommands::Flag flag, std::function<void()> routine)
{
    if (flag == &PendingCommands::bPendingDisplayItem) {
        // The meter's display list is read back and shown once the new item was sent.
        routine = [this, send = std::move(routine)] {
            send();
            display.bDisplayItemSent = kTrue;
        };
    }
    pending.SetRoutine(flag, std::move(routine));
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

    m_screen.SetText(QStringLiteral("txt_Online"), QStringLiteral("On Line"));
    m_reading.fresh = 0;
    m_reading.takenAt = m_clock.Now();
    m_connection.link.ResetRxData();
    m_connection.link.bCommOK = kTrue;
    if (!ReadRealTimeImage() || !ReadFrequency())
        return;
    // Even when the energy block gave up, the lists follow the last count the meter reported
    // and the status line is cleared; the reason for going off line stays in its own field.
    // Only a line that went away mid-read ends the tick at once.
    const TransactionOutcome energy = ReadEnergy();
    if (energy == TransactionOutcome::Abandoned)
        return;
    numberLists.RefreshLpNumberLists(m_reading);
    m_screen.SetText(QStringLiteral("Text6"), QString());
    if (energy != TransactionOutcome::Good || !ReadRatios() || !ReadPtRatio2())
        return;
    emit readingTaken(m_reading);
    pending.Serve([this] { return m_connection.link.bCommOK != kFalse && m_connection.bOnLine.isTrue(); });
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
        if (link.ReadRegisters(link.ModbusAddress, block.function, block.start, block.count) != TransactionOutcome::Good)
            return false;
    }
    if (link.RxUpperBound() == PollPlan::kImageSize - 1) {
        DecodeRealTimeImage(link.RxData, m_reading);
        display.ShowRealTimeData(m_reading);
        numberLists.WarnIfListsWillChange(m_reading);
    }
    return true;
}

bool PollCycle::ReadFrequency()
{
    if (Read(kBlocks[PollPlan::Frequency]) != TransactionOutcome::Good)
        return false;
    DecodeFrequency(m_connection.link.RxData, m_reading);
    display.ShowFrequency(m_reading);
    return true;
}

TransactionOutcome PollCycle::ReadEnergy()
{
    const TransactionOutcome outcome = Read(kBlocks[PollPlan::Energy]);
    if (outcome == TransactionOutcome::Good) {
        DecodeEnergy(m_connection.link.RxData, m_reading);
        display.ShowEnergyData(m_reading);
    }
    return outcome;
}

bool PollCycle::ReadRatios()
{
    if (Read(kBlocks[PollPlan::Ratios]) != TransactionOutcome::Good)
        return false;
    DecodeRatios(m_connection.link.RxData, m_reading);
    // PT ratio 1 as the operator sees it, to one decimal: the meter holds PT ratio 2 relative
    // to it. A register beyond the signed range is still the meter's ratio and is used as such.
    PtRatio1Value = FormatFixed(m_reading.ptRatio1Register / 10.0, 1).toDouble();
    display.ShowRatios(m_reading);
    return true;
}

bool PollCycle::ReadPtRatio2()
{
    if (Read(kBlocks[PollPlan::PtRatio2]) != TransactionOutcome::Good)
        return false;
    DecodePtRatio2(m_connection.link.RxData, PtRatio1Value, m_reading);
    display.ShowPtRatio2(m_reading);
    return true;
}

TransactionOutcome PollCycle::Read(const PollBlock& block)
{
    if (block.step != 0)
        PollStep = block.step;
    RegisterLink& link = m_connection.link;
    link.ResetRxData();
    return link.ReadRegisters(link.ModbusAddress, block.function, block.start, block.count);
}
