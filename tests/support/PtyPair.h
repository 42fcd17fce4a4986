#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// Two pseudo-terminals joined back to back by socat, so that two programs that each expect a
// serial device (our master and a libmodbus peer) can talk. Bytes pass unchanged.
class PtyPair {
public:
    PtyPair();
    ~PtyPair();

    // Empty when socat is missing or did not come up; tests skip then.
    QString error() const { return m_error; }
    QString first() const { return m_dir.path() + QStringLiteral("/a"); }
    QString second() const { return m_dir.path() + QStringLiteral("/b"); }

private:
    QTemporaryDir m_dir;
    QProcess m_socat;
    QString m_error;
};
