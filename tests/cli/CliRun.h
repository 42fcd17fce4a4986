#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

// The command-line tool run as a user runs it: its exit status and what it printed.
struct CliResult {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

inline CliResult RunCli(const QStringList& arguments,
                        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                        int timeoutMs = 60000)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(QX5820_CLI), arguments);
    CliResult result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        result.err = "the tool did not end in time";
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}
