#include "connection/MeterScan.h"

#include "connection/Connection.h"
#include "connection/LineSettings.h"
#include "connection/TcpTransport.h"
#include "link/RtuFrames.h"
#include "measure/ReadingFields.h"

namespace {

// The first three settings registers (address, baud-rate and stop-bit codes): a short reply,
// 11 bytes, that any QX-5820 gives whatever its configuration.
constexpr quint16 kSettingsStart = 0x1000;
constexpr quint16 kSettingsCount = 3;
// The meter's 16-character identification text.
constexpr quint16 kIdentificationStart = 0x100C;
constexpr quint16 kIdentificationCount = 8;

} // namespace

MeterScan::MeterScan(QObject* parent) : QObject(parent), m_link(m_port, m_onLine)
{
}

bool MeterScan::Run(const Plan& plan, QString* error)
{
    m_found.clear();
    m_stopped = false;
    const QStringList rates = TcpTransport::IsAddress(plan.device) ? plan.baudRates.mid(0, 1) : plan.baudRates;
    const int total = int(rates.size()) * (plan.last - plan.first + 1);
    int done = 0;
    for (const QString& rate : rates) {
        if (!Sweep(plan, rate, done, total, error))
            return false;
        if (m_stopped || (!m_found.isEmpty() && !plan.all))
            break;
    }
    return true;
}

void MeterScan::Stop()
{
    m_stopped = true;
    m_onLine.set(false); // ends the wait under way
}

bool MeterScan::Sweep(const Plan& plan, const QString& baudRate, int& done, int total, QString* error)
{
    const auto settings = LineSettings::Parse(SettingsString(baudRate, plan.stopBits));
    if (!settings) {
        *error = QStringLiteral("settings \"%1\" cannot be applied").arg(SettingsString(baudRate, plan.stopBits));
        return false;
    }
    if (!m_port.open(plan.device, *settings, error))
        return false;
    m_onLine.set(true);
    m_link.BuildCrcTables();
    for (int address = plan.first; address <= plan.last && !m_stopped; ++address, ++done) {
        emit trying(address, baudRate, done, total);
        if (Probe(address, plan.replyTimeoutMs)) {
            m_found.append({address, baudRate, Identification()});
            emit found(m_found.last());
            if (!plan.all)
                break;
        }
    }
    m_onLine.set(false);
    m_port.close();
    return true;
}

bool MeterScan::Probe(int address, qint32 replyTimeoutMs)
{
    m_link.ModbusAddress = qint16(address);
    m_link.attempts = 1;
    m_link.replyTimeoutMs = replyTimeoutMs;
    m_link.ResetRxData();
    return m_link.ReadRegisters(m_link.ModbusAddress, Rtu::kReadHolding, kSettingsStart, kSettingsCount).good();
}

// Asked with the ordinary patience now that the meter is known to be there.
QString MeterScan::Identification()
{
    m_link.attempts = 2;
    m_link.replyTimeoutMs = RegisterLink::kReplyTimeoutMs;
    m_link.ResetRxData();
    if (!m_link.ReadRegisters(m_link.ModbusAddress, Rtu::kReadInput, kIdentificationStart, kIdentificationCount).good())
        return QString();
    return IdentificationText(m_link.RxData.left(2 * kIdentificationCount));
}
