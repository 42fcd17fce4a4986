#include "sim/MeterBus.h"

#include "sim/ModbusResponder.h"

#include <algorithm>
#include <optional>

namespace sim {

MeterBus::MeterBus(std::vector<MeterModel> meters)
{
    Q_ASSERT(!meters.empty());
    for (MeterModel& meter : meters)
        m_meters.emplace_back(std::move(meter));
}

BusMeter* MeterBus::find(quint8 address)
{
    const auto it = std::find_if(m_meters.begin(), m_meters.end(), [&](BusMeter& meter) { return meter.address() == address; });
    return it == m_meters.end() ? nullptr : &*it;
}

QByteArray MeterBus::answer(BusMeter& meter, const QByteArray& request)
{
    const std::optional<quint16> address = ModbusResponder::valueWritten(request, Reg::kSlaveAddress);
    if (address && *address <= 0xFF) {
        BusMeter* holder = find(quint8(*address));
        if (holder && holder != &meter)
            return ModbusResponder::exceptionReply(quint8(request.at(0)), quint8(request.at(1)), quint8(ModbusError::IllegalDataValue));
    }
    return meter.model.with([&](MeterModel& model) { return ModbusResponder::answer(model, request); });
}

} // namespace sim
