#pragma once

#include <QtGlobal>

#include <chrono>

namespace sim {

// The speed and framing the master has set on the line. A pseudo-terminal carries no real
// baud rate, but both its ends share one termios, so reading it on the meter's side tells
// what the master's port was set to. (Linux ptys always report 8 data bits without parity,
// whatever the master asked for; the stop bits, CSTOPB, do carry over.)
struct SerialLineState {
    qint32 baud = 0;          // 0: no speed the meter knows; characters then take no time
    int stopBits = 1;          // 1 or 2
    int bitsPerCharacter = 10; // start bit, 8 data bits, parity bit if any, stop bits

    static SerialLineState read(int fd);

    std::chrono::nanoseconds characterTime() const;
    // The gap that ends a frame: 3.5 characters, but never under 2 ms, as slaves do at
    // high speeds where 3.5 characters is too short to time reliably.
    std::chrono::nanoseconds frameGap() const;
};

} // namespace sim
