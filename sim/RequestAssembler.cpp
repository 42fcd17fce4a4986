#include "sim/RequestAssembler.h"

#include "link/Crc16.h"
#include "link/RtuFrames.h"

namespace sim {
namespace {

constexpr qsizetype kMaxFrame = 256;      // the longest RTU frame
constexpr qsizetype kShortestFrame = 4;   // address, function, CRC
constexpr qsizetype kFixedRequest = 8;
constexpr qsizetype kWriteMultipleHeader = 7;

bool crcGood(const QByteArray& frame)
{
    return frame.size() >= kShortestFrame && ModbusCrcBytes(frame, frame.size() - 2) == frame.right(2);
}

bool hasFixedLength(quint8 function)
{
    return function == Rtu::kReadHolding || function == Rtu::kReadInput || function == Rtu::kWriteSingle;
}

// Frames of these functions end when their length is reached, never at a silence.
bool endsByLength(quint8 function)
{
    return hasFixedLength(function) || function == Rtu::kWriteMultiple;
}

} // namespace

std::optional<qsizetype> RequestAssembler::knownLength() const
{
    if (m_buffer.size() < 2)
        return std::nullopt;
    const auto function = static_cast<quint8>(m_buffer.at(1));
    if (hasFixedLength(function))
        return kFixedRequest;
    if (function == Rtu::kWriteMultiple && m_buffer.size() >= kWriteMultipleHeader)
        return kWriteMultipleHeader + static_cast<quint8>(m_buffer.at(6)) + 2;
    return std::nullopt;
}

QList<ReceivedFrame> RequestAssembler::append(const QByteArray& bytes, SteadyTime at)
{
    QList<ReceivedFrame> frames;
    if (m_skipping || bytes.isEmpty())
        return frames;
    if (m_buffer.isEmpty())
        m_firstByteAt = at;
    m_buffer.append(bytes);
    m_lastByteAt = at;
    while (!m_buffer.isEmpty()) {
        const std::optional<qsizetype> length = knownLength();
        if (!length) {
            if (m_buffer.size() > kMaxFrame)
                discard();
            break;
        }
        if (m_buffer.size() < *length)
            break;
        const QByteArray frame = m_buffer.left(*length);
        m_buffer.remove(0, *length);
        if (!crcGood(frame)) {
            discard();
            break;
        }
        frames.append({frame, m_firstByteAt, at});
        m_firstByteAt = at;
    }
    return frames;
}

std::optional<ReceivedFrame> RequestAssembler::silence()
{
    const QByteArray frame = m_buffer;
    const bool wasSkipping = m_skipping;
    m_buffer.clear();
    m_skipping = false;
    if (wasSkipping || !crcGood(frame) || endsByLength(static_cast<quint8>(frame.at(1))))
        return std::nullopt;
    return ReceivedFrame{frame, m_firstByteAt, m_lastByteAt};
}

void RequestAssembler::discard()
{
    m_buffer.clear();
    m_skipping = true;
}

} // namespace sim
