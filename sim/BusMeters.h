#pragma once

#include "sim/MeterModel.h"

#include <QList>

#include <vector>

namespace sim {

// The meters of one RS-485 line, one per address, told apart as meters of one batch are: the
// n-th (from 0) runs from `seed` + n, with the serial number and identification n after the
// first's, and answers at addresses[n].
std::vector<MeterModel> BusMeters(const QList<quint8>& addresses, quint64 seed = 1);

// Meters at addresses 1 to `count`.
std::vector<MeterModel> BusMeters(int count, quint64 seed = 1);

} // namespace sim
