#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <sys/resource.h>

#include <fstream>
#include <string>

// Process CPU time (user + system) in seconds.
inline double CpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Resident set size in KiB, from /proc.
inline long ResidentKiB()
{
    std::ifstream status("/proc/self/status");
    std::string key;
    long value = 0;
    while (status >> key) {
        if (key == "VmRSS:") {
            status >> value;
            return value;
        }
        status.ignore(1 << 12, '\n');
    }
    return -1;
}

// Time on the wire of `bytes` characters at `baud`, 8 data bits, no parity, one stop bit:
// 10 bits per character.
inline double WireMs(qint64 bytes, int baud)
{
    return 1000.0 * 10.0 * double(bytes) / baud;
}
