#include "sim/Fault.h"

#include "sim/ModbusResponder.h"

#include <algorithm>

namespace sim {
namespace {

QList<WireSegment> inPieces(const QByteArray& reply, int pieces, int gapMs)
{
    QList<WireSegment> segments;
    const qsizetype count = std::clamp<qsizetype>(pieces, 1, reply.size());
    for (qsizetype i = 0; i < count; ++i) {
        const qsizetype from = reply.size() * i / count;
        const qsizetype to = reply.size() * (i + 1) / count;
        segments.append({reply.mid(from, to - from), std::chrono::milliseconds(i == 0 ? 0 : gapMs)});
    }
    return segments;
}

// Alternating all-ones and all-zeros bytes: what a disturbed idle line tends to deliver.
QByteArray lineNoise(int count)
{
    QByteArray noise;
    for (int i = 0; i < count; ++i)
        noise.append(static_cast<char>(i % 2 == 0 ? 0xFF : 0x00));
    return noise;
}

} // namespace

QList<WireSegment> Fault::shape(const QByteArray& reply) const
{
    QByteArray bytes = reply;
    switch (kind) {
    case Kind::NoReply:
        return {};
    case Kind::BadCrc:
        bytes[bytes.size() - 1] = static_cast<char>(~bytes.back());
        return {{bytes}};
    case Kind::WrongAddress:
        bytes[0] = static_cast<char>(static_cast<quint8>(bytes[0]) + 1);
        return {{ModbusResponder::sealed(bytes.chopped(2))}};
    case Kind::Split:
        return inPieces(bytes, pieces, gapMs);
    case Kind::Late:
        return {{bytes, std::chrono::milliseconds(delayMs)}};
    case Kind::Noise:
        return {{lineNoise(noiseBytes) + bytes}};
    case Kind::Exception:
        break;
    }
    return {{bytes}};
}

} // namespace sim
