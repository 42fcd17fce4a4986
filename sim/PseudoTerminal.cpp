#include "sim/PseudoTerminal.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace sim {

PseudoTerminal::~PseudoTerminal()
{
    close();
}

bool PseudoTerminal::fail(const char* step)
{
    m_error = QStringLiteral("%1: %2").arg(QLatin1String(step), QString::fromLocal8Bit(std::strerror(errno)));
    close();
    return false;
}

void PseudoTerminal::close()
{
    for (int* fd : {&m_keepAlive, &m_master}) {
        if (*fd >= 0)
            ::close(*fd);
        *fd = -1;
    }
}

bool PseudoTerminal::open()
{
    close();
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_master < 0)
        return fail("posix_openpt");
    if (grantpt(m_master) != 0)
        return fail("grantpt");
    if (unlockpt(m_master) != 0)
        return fail("unlockpt");
    char name[128];
    if (ptsname_r(m_master, name, sizeof name) != 0)
        return fail("ptsname_r");
    m_path = QString::fromLocal8Bit(name);
    m_keepAlive = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_keepAlive < 0)
        return fail("open slave");
    termios settings{};
    if (tcgetattr(m_keepAlive, &settings) != 0)
        return fail("tcgetattr");
    cfmakeraw(&settings);
    cfsetspeed(&settings, B19200);
    if (tcsetattr(m_keepAlive, TCSANOW, &settings) != 0)
        return fail("tcsetattr");
    const int flags = fcntl(m_master, F_GETFL);
    if (flags < 0 || fcntl(m_master, F_SETFL, flags | O_NONBLOCK) != 0)
        return fail("fcntl");
    m_error.clear();
    return true;
}

} // namespace sim
