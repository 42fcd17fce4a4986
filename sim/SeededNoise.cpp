#include "sim/SeededNoise.h"

namespace sim {
namespace {

// splitmix64's finaliser: neighbouring inputs give unrelated outputs.
quint64 mix(quint64 x)
{
    x += 0x9E3779B97F4A7C15ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

double unit(quint64 bits)
{
    return double(bits >> 11) * 0x1.0p-53;
}

} // namespace

double SeededNoise::at(qint64 slot, int channel) const
{
    const quint64 key = mix(mix(m_seed) ^ static_cast<quint64>(slot)) ^ static_cast<quint64>(channel);
    return 2.0 * unit(mix(key)) - 1.0;
}

double SeededNoise::constant(int channel) const
{
    return unit(mix(mix(m_seed ^ 0xC0FFEEULL) ^ static_cast<quint64>(channel)));
}

} // namespace sim
