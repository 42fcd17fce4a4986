#include "sim/WiringFault.h"

#include <array>

namespace sim {
namespace {

using Kind = WiringFault::Kind;

struct NamedFault {
    const char* name;
    WiringFault fault;
};

const std::array kNamedFaults{
    NamedFault{"none", {}},
    NamedFault{"reversed-ct-l1", {Kind::ReversedCt, 0, 0}},
    NamedFault{"reversed-ct-l2", {Kind::ReversedCt, 1, 0}},
    NamedFault{"reversed-ct-l3", {Kind::ReversedCt, 2, 0}},
    NamedFault{"swapped-l1-l2", {Kind::SwappedCurrents, 0, 1}},
    NamedFault{"swapped-l2-l3", {Kind::SwappedCurrents, 1, 2}},
    NamedFault{"swapped-l1-l3", {Kind::SwappedCurrents, 0, 2}},
    NamedFault{"missing-l1", {Kind::MissingVoltage, 0, 0}},
    NamedFault{"missing-l2", {Kind::MissingVoltage, 1, 0}},
    NamedFault{"missing-l3", {Kind::MissingVoltage, 2, 0}},
    NamedFault{"reverse-sequence", {Kind::ReverseSequence, 0, 0}},
};

} // namespace

QStringList WiringFault::names()
{
    QStringList all;
    for (const NamedFault& named : kNamedFaults)
        all << QLatin1String(named.name);
    return all;
}

std::optional<WiringFault> WiringFault::parse(const QString& name)
{
    for (const NamedFault& named : kNamedFaults) {
        if (name == QLatin1String(named.name))
            return named.fault;
    }
    return std::nullopt;
}

} // namespace sim
