#include "measure/DisplayItemNames.h"

#include <array>

namespace {

// Codes 1 to 12: meter information and communication settings.
constexpr std::array<const char*, 12> kInfoItems = {
    "Meter ID 1", "Meter ID 2", "Date", "Time", "Modbus Slave Address", "Modbus BaudRate",
    "PT Ratio * CT Ratio", "PT Ratio", "CT Ratio", "Kt", "Reset Counter", "Modbus Stop Bit",
};

// Codes 101 to 141: measurements.
constexpr std::array<const char*, 41> kMeasurementItems = {
    "Vln_a", "Vln_b", "Vln_c", "Vln_avg", "Vll_ab", "Vll_bc", "Vll_ca", "Vll_avg",
    "I_a", "I_b", "I_c", "I_avg", "kW_a", "kW_b", "kW_c", "kW_total",
    "kvar_a", "kvar_b", "kvar_c", "kvar_total", "kVA_a", "kVA_b", "kVA_c", "kVA_total",
    "PF_a", "PF_b", "PF_c", "PF_avg", "PhaseAngle_V_a", "PhaseAngle_V_b", "PhaseAngle_V_c",
    "PhaseAngle_I_a", "PhaseAngle_I_b", "PhaseAngle_I_c", "kWh_deliver", "kWh_receiver",
    "kvarh_lagging", "kvarh_leading", "kVAh", "Demand_Time_Remain", "Demand - kW",
};

} // namespace

QString DisplayItemName(int code)
{
    if (code >= 1 && code <= int(kInfoItems.size()))
        return QLatin1String(kInfoItems[std::size_t(code - 1)]);
    if (code >= 101 && code < 101 + int(kMeasurementItems.size()))
        return QLatin1String(kMeasurementItems[std::size_t(code - 101)]);
    return QString();
}
