#pragma once

#include <QStringList>

// The commands of qx5820, each given the arguments after its name; each returns the exit
// status (ExitCodes.h).
int RunPorts(const QStringList& arguments);
int RunRead(const QStringList& arguments);
int RunWatch(const QStringList& arguments);
int RunSet(const QStringList& arguments);
int RunScan(const QStringList& arguments);
int RunLp(const QStringList& arguments);
int RunConfig(const QStringList& arguments);
int RunReport(const QStringList& arguments);
int RunWiring(const QStringList& arguments);

// The sub-commands of lp, and what "lp report --help" and "lp --help" say of the report.
int RunLpReport(const QStringList& arguments);
extern const QString kLpReportDescription;
