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
