#pragma once

#include "sim/MeterModel.h"

#include <QByteArray>

#include <optional>

namespace sim {

// How the meter answers one request frame: the reply a Modbus RTU slave sends for functions
// 3, 4, 6 and 16, or an exception reply. Frames are whole, address to CRC, CRC included.
namespace ModbusResponder {

// The reply to `request`, whose CRC has been checked. Writes change `model`.
QByteArray answer(MeterModel& model, const QByteArray& request);

// The value a write request (function 6, or a well-formed 16) puts at `reg`; nothing when it
// leaves `reg` alone.
std::optional<quint16> valueWritten(const QByteArray& request, quint16 reg);

// Address, function with its top bit set, the code, CRC: 5 bytes.
QByteArray exceptionReply(quint8 address, quint8 function, quint8 code);

// `body` with its two CRC bytes appended.
QByteArray sealed(QByteArray body);

} // namespace ModbusResponder
} // namespace sim
