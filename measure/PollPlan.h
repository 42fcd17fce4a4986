#pragma once

#include "link/RtuFrames.h"

#include <array>
#include <cstddef>

// The nine register blocks one poll tick reads, in order, and where each register of the
// real-time image lands. Every offset into a reply is derived from this table, so the poll
// cycle, the decoding, the tests and the benchmarks cannot disagree about the layout.
struct PollBlock {
    qint16 step;     // PollStep while the block is read; 0 leaves the previous step standing
    quint8 function; // 3 holding, 4 input
    quint16 start;
    quint16 count;

    constexpr qsizetype dataBytes() const { return 2 * qsizetype(count); }
    constexpr bool holds(quint8 fn, quint16 reg) const { return fn == function && reg >= start && reg - start < count; }
};

namespace PollPlan {

enum BlockIndex : std::size_t { FirstImageBlock = 0, Frequency = 5, Energy, Ratios, PtRatio2 };

inline constexpr std::array<PollBlock, 9> kBlocks{{
    {1, Rtu::kReadHolding, 0x1000, 100}, // settings, clock, load-profile configuration
    {2, Rtu::kReadHolding, 0x1064, 50},  // the rest of the display items
    {3, Rtu::kReadInput, 0x1000, 20},    // meter information, identification text
    {4, Rtu::kReadInput, 0x1080, 90},    // measurements, angles, wiring, phase sequence
    {5, Rtu::kReadInput, 0x1180, 22},    // load-profile counters and record range
    {0, Rtu::kReadInput, 0x107E, 2},     // frequency
    {6, Rtu::kReadInput, 0x10D4, 30},    // energy counters
    {7, Rtu::kReadHolding, 0x1021, 2},   // PT ratio 1 × 10, CT ratio
    {0, Rtu::kReadHolding, 0x4492, 2},   // PT ratio 2 relative to PT ratio 1
}};

// Blocks 1 to 5 are read back to back into one image.
inline constexpr std::size_t kImageBlocks = 5;

constexpr qsizetype ImageSize()
{
    qsizetype size = 0;
    for (std::size_t i = 0; i < kImageBlocks; ++i)
        size += kBlocks[i].dataBytes();
    return size;
}
inline constexpr qsizetype kImageSize = ImageSize();

// Offset in the real-time image of the high byte of register `reg` read with `function`.
// Evaluated at compile time: a register outside the image does not compile.
consteval qsizetype ImageOffset(quint8 function, quint16 reg)
{
    qsizetype offset = 0;
    for (std::size_t i = 0; i < kImageBlocks; ++i) {
        if (kBlocks[i].holds(function, reg))
            return offset + 2 * (reg - kBlocks[i].start);
        offset += kBlocks[i].dataBytes();
    }
    throw "register outside the real-time image";
}
consteval qsizetype Holding(quint16 reg) { return ImageOffset(Rtu::kReadHolding, reg); }
consteval qsizetype Input(quint16 reg) { return ImageOffset(Rtu::kReadInput, reg); }

// Offset of register `reg` in the reply data of block `block`.
consteval qsizetype BlockOffset(BlockIndex block, quint16 reg)
{
    if (!kBlocks[block].holds(kBlocks[block].function, reg))
        throw "register outside the block";
    return 2 * (reg - kBlocks[block].start);
}

// A read request: address, function, start and count (two bytes each), CRC.
inline constexpr qsizetype kReadRequestBytes = 8;

// Bytes on the wire in one tick: nine requests and replies of 5 + 2·count bytes.
constexpr qsizetype TickWireBytes()
{
    qsizetype bytes = 0;
    for (const PollBlock& block : kBlocks)
        bytes += kReadRequestBytes + Rtu::ReadReplyLength(block.count);
    return bytes;
}

} // namespace PollPlan
