#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A pseudo-terminal joined back to back by socat to a second end: another pseudo-terminal, or
// a TCP port on 127.0.0.1 that takes one connection, as a device server puts a serial line on
// the network. So two programs that each expect a serial device or a network address (our
// master and a libmodbus peer) can talk. Bytes pass unchanged.
class PtyPair {
public:
    enum class Second { PseudoTerminal, TcpPort };

    explicit PtyPair(Second second = Second::PseudoTerminal);
    ~PtyPair();

    // Empty when socat is missing or did not come up; tests skip then.
    QString error() const { return m_error; }
    QString first() const { return m_dir.path() + QStringLiteral("/a"); }
    // The second pseudo-terminal's path, or "tcp://127.0.0.1:<port>".
    QString second() const { return m_second; }

private:
    QTemporaryDir m_dir;
    QProcess m_socat;
    QString m_second;
    QString m_error;
};
