#include "connection/PollCycle.h"

#include "connection/Connection.h"
#include "link/RtuFrames.h"
#include "measure/FloatDecoding.h"
#include "measure/Screen.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTimer>

namespace {

// The five blocks of the real-time image, read back to back into one buffer.
struct Block {
    qint16 step;
    quint8 function;
    quint16 start;
    quint16 count;
};

constexpr Block kImageBlocks[] = {
    {1, Rtu::kReadHolding, 0x1000, 100},
    {2, Rtu::kReadHolding, 0x1064, 50},
    {3, Rtu::kReadInput, 0x1000, 20},
    {4, Rtu::kReadInput, 0x1080, 90},
    {5, Rtu::kReadInput, 0x1180, 22},
};

} // namespace

PollCycle::PollCycle(Connection& connection, Screen& screen, IntervalLists& lists, QObject* parent)
    : QObject(parent), display(screen), numberLists(screen, lists), m_connection(connection), m_screen(screen)
{
    connect(&m_connection.Timer1Sec, &QTimer::timeout, this, &PollCycle::Timer1Sec_Timer);
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
        m_tickRunning = false;
        // A tick that outlasted the interval swallowed the timer's expiries meanwhile: start
        // the next one now rather than at the timer's next expiry, so that the line is not
        // left idle.
        const bool overran = duration.elapsed() >= m_connection.Timer1Sec.interval();
        if ((overran || m_tickDue) && m_connection.Timer1Sec.isActive())
            QTimer::singleShot(0, this, &PollCycle::Timer1Sec_Timer);
        m_tickDue = false;
    });

    m_screen.SetText(QStringLiteral("txt_Online"), QStringLiteral("On Line"));
    m_connection.link.ResetRxData();
    m_connection.link.bCommOK = kTrue;
    if (!ReadRealTimeImage() || !ReadFrequency())
        return;
    ReadEnergy();
    numberLists.RefreshLpNumberLists();
    m_screen.SetText(QStringLiteral("Text6"), QString());
    if (!CommOK() || !ReadRatios())
        return;
    ReadPtRatio2();
    // Off line, the commands wait for the next connection instead of being dropped unsent.
    pending.Serve([this] { return CommOK() && m_connection.bOnLine.isTrue(); });
}

bool PollCycle::ReadRealTimeImage()
{
    RegisterLink& link = m_connection.link;
    for (const Block& block : kImageBlocks) {
        PollStep = block.step;
        link.ReadRegisters(link.ModbusAddress, block.function, block.start, block.count);
        if (!CommOK())
            return false;
    }
    if (m_connection.bOnLine.isTrue() && link.RxUpperBound() == RealTimeDisplay::kImageSize - 1)
        display.ShowRealTimeData(link.RxData, numberLists.LpListCount);
    return true;
}

bool PollCycle::ReadFrequency()
{
    if (!Read(Rtu::kReadInput, 0x107E, 2))
        return false;
    if (m_connection.bOnLine.isTrue())
        m_screen.SetText(QStringLiteral("txtFrequency"), FormatFixed(FloatAt(m_connection.link.RxData, 0), 2));
    return true;
}

void PollCycle::ReadEnergy()
{
    PollStep = 6;
    if (Read(Rtu::kReadInput, 0x10D4, 30) && m_connection.bOnLine.isTrue())
        display.ShowEnergyData(m_connection.link.RxData);
}

bool PollCycle::ReadRatios()
{
    PollStep = 7;
    if (!Read(Rtu::kReadHolding, 0x1021, 2))
        return false;
    if (!m_connection.bOnLine.isTrue())
        return true;
    const QByteArray& data = m_connection.link.RxData;
    // Both registers are signed 16-bit numbers; a meter reporting one above 32767 is outside
    // what the tool can show or write back, so the tick stops here and says so.
    if (quint8(data.at(0)) >= 0x80 || quint8(data.at(2)) >= 0x80) {
        m_screen.SetText(QStringLiteral("Text6"), QStringLiteral("PT or CT ratio out of range"));
        return false;
    }
    const double pt1 = (quint8(data.at(0)) * 256 + quint8(data.at(1))) / 10.0;
    PtRatio1Value = FormatFixed(pt1, 1).toDouble();
    m_screen.SetText(QStringLiteral("txt_PTRatio"), FormatFixed(pt1, 1));
    m_screen.SetText(QStringLiteral("txt_CTRatio"), FormatFixed(quint8(data.at(2)) * 256 + quint8(data.at(3)), 1));
    return true;
}

void PollCycle::ReadPtRatio2()
{
    // The register holds PT ratio 2 relative to PT ratio 1; the screen shows the product.
    if (Read(Rtu::kReadHolding, 0x4492, 2) && m_connection.bOnLine.isTrue()) {
        const double ratio = FloatAt(m_connection.link.RxData, 0) * PtRatio1Value;
        m_screen.SetText(QStringLiteral("txtPTRatio2"), FormatFixed(ratio, 4));
    }
}

bool PollCycle::Read(quint8 function, quint16 start, quint16 count)
{
    if (!CommOK())
        return false;
    RegisterLink& link = m_connection.link;
    link.ResetRxData();
    link.ReadRegisters(link.ModbusAddress, function, start, count);
    return CommOK();
}

bool PollCycle::CommOK() const
{
    return m_connection.link.bCommOK != kFalse;
}
