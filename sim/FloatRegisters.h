#pragma once

#include <QList>
#include <QtGlobal>

#include <bit>

namespace sim {

// The meter keeps a float as an IEEE-754 single in two registers with the low-order 16 bits
// in the lower register.
inline void putFloat(QList<quint16>& registers, qsizetype at, double value)
{
    const auto bits = std::bit_cast<quint32>(static_cast<float>(value));
    registers[at] = static_cast<quint16>(bits & 0xFFFF);
    registers[at + 1] = static_cast<quint16>(bits >> 16);
}

} // namespace sim
