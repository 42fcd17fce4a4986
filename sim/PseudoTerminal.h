#pragma once

#include <QString>

namespace sim {

// The meter's end of a pseudo-terminal. Clients open slavePath() like a serial port. The
// meter keeps one descriptor of its own open on the slave side (never read): without it the
// master side would see a hang-up each time the client closes the port, and a later open
// would find a dead line.
class PseudoTerminal {
public:
    PseudoTerminal() = default;
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Creates the pair, raw at 19200 8N1 until a client sets the line; false with
    // errorString() on failure.
    bool open();

    int masterFd() const { return m_master; }
    QString slavePath() const { return m_path; }
    QString errorString() const { return m_error; }

private:
    bool fail(const char* step);
    void close();

    int m_master = -1;
    int m_keepAlive = -1;
    QString m_path;
    QString m_error;
};

} // namespace sim
