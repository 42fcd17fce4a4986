#include "sim/BusMeters.h"

#include "sim/MeterRegisters.h"

namespace sim {

std::vector<MeterModel> BusMeters(const QList<quint8>& addresses, quint64 seed)
{
    std::vector<MeterModel> meters;
    meters.reserve(std::size_t(addresses.size()));
    for (qsizetype n = 0; n < addresses.size(); ++n) {
        MeterModel& meter = meters.emplace_back(seed + quint64(n));
        meter.startWithSerialNumber(MeterModel::kSerialNumber + quint32(n));
        meter.setHolding(Reg::kSlaveAddress, addresses[n]);
    }
    return meters;
}

std::vector<MeterModel> BusMeters(int count, quint64 seed)
{
    QList<quint8> addresses;
    for (int address = 1; address <= count; ++address)
        addresses.append(quint8(address));
    return BusMeters(addresses, seed);
}

} // namespace sim
