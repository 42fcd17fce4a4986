#pragma once

#include <QtGlobal>

namespace sim {

// Reproducible randomness: the same seed, slot and channel give the same number on every run
// and every machine, so a simulated meter can be replayed exactly.
class SeededNoise {
public:
    explicit SeededNoise(quint64 seed) : m_seed(seed) {}

    // Uniform in [-1, 1] for one channel in one time slot.
    double at(qint64 slot, int channel) const;
    // Uniform in [0, 1), fixed for the seed: the meter's own constants.
    double constant(int channel) const;

private:
    quint64 m_seed;
};

} // namespace sim
