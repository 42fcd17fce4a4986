#pragma once

#include "sim/SteadyTime.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace sim {

struct ReceivedFrame {
    QByteArray bytes;        // address to CRC; the CRC is good
    SteadyTime firstByteAt;  // when the read that brought its first byte returned
    SteadyTime lastByteAt;
};

// Cuts the bytes the meter receives into request frames, as an RTU slave does. The requests
// it serves have a length it knows from their first bytes (functions 3, 4 and 6: 8 bytes;
// 16: 9 + the byte count); a frame of any other function ends at a silence of 3.5
// characters. Bytes that cannot be a frame (a bad CRC, an overlong run) are garbage: they
// and everything up to the next silence are dropped, which is how a slave finds the start
// of the next frame.
class RequestAssembler {
public:
    // Bytes that arrived together at `at`; the frames they complete.
    QList<ReceivedFrame> append(const QByteArray& bytes, SteadyTime at);
    // The line has been quiet for 3.5 characters: a frame of unknown length ends here (if
    // its CRC is good), an unfinished one is dropped, and garbage skipping ends.
    std::optional<ReceivedFrame> silence();

private:
    // The length of the frame in the buffer, once its first bytes tell it.
    std::optional<qsizetype> knownLength() const;
    void discard();

    QByteArray m_buffer;
    SteadyTime m_firstByteAt;
    SteadyTime m_lastByteAt;
    bool m_skipping = false;
};

} // namespace sim
