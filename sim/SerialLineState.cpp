#include "sim/SerialLineState.h"

#include <termios.h>

#include <algorithm>
#include <array>
#include <utility>

namespace sim {
namespace {

constexpr std::array<std::pair<speed_t, qint32>, 10> kSpeeds{{
    {B1200, 1200}, {B2400, 2400}, {B4800, 4800}, {B9600, 9600}, {B19200, 19200},
    {B38400, 38400}, {B57600, 57600}, {B115200, 115200}, {B230400, 230400}, {B460800, 460800},
}};

constexpr std::chrono::nanoseconds kShortestFrameGap = std::chrono::milliseconds(2);

} // namespace

SerialLineState SerialLineState::read(int fd)
{
    SerialLineState line;
    termios settings{};
    if (tcgetattr(fd, &settings) != 0)
        return line;
    const speed_t speed = cfgetospeed(&settings);
    const auto known = std::find_if(kSpeeds.cbegin(), kSpeeds.cend(), [&](const auto& entry) { return entry.first == speed; });
    line.baud = known == kSpeeds.cend() ? 0 : known->second;
    line.stopBits = (settings.c_cflag & CSTOPB) ? 2 : 1;
    line.bitsPerCharacter = 1 + 8 + ((settings.c_cflag & PARENB) ? 1 : 0) + line.stopBits;
    return line;
}

std::chrono::nanoseconds SerialLineState::characterTime() const
{
    if (baud <= 0)
        return std::chrono::nanoseconds::zero();
    return std::chrono::nanoseconds(qint64(bitsPerCharacter) * 1'000'000'000 / baud);
}

std::chrono::nanoseconds SerialLineState::frameGap() const
{
    return std::max(kShortestFrameGap, characterTime() * 7 / 2);
}

} // namespace sim
