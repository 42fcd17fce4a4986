#pragma once

#include "sim/MeterModel.h"

#include <QMutex>

#include <utility>

namespace sim {

// The register model behind a lock: the meter's thread answers from it while tests and the
// tool's window read and change it from theirs.
class SharedMeterModel {
public:
    explicit SharedMeterModel(MeterModel model) : m_model(std::move(model)) {}

    template <class Function>
    auto with(Function&& function)
    {
        QMutexLocker lock(&m_mutex);
        return std::forward<Function>(function)(m_model);
    }

private:
    QMutex m_mutex;
    MeterModel m_model;
};

} // namespace sim
