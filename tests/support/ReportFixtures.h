#pragma once

#include "sim/MeterModel.h"
#include "sim/WiringFault.h"

#include <QLatin1String>
#include <QProcess>
#include <QString>
#include <QStringList>

// A simulated meter on a balanced load at power factor 0.9 lagging, wired with `fault`
// ("none" for none): the default load is unbalanced, which the wiring verdict rightly reports.
inline sim::MeterModel MeterWired(const char* fault)
{
    sim::MeterModel meter;
    meter.startWithLoad({0.9, false});
    meter.startWithWiring(*sim::WiringFault::parse(QLatin1String(fault)));
    return meter;
}

// The text of a PDF file as pdftotext lays it out; empty when it could not be read.
inline QString PdfText(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")});
    return process.waitForFinished(30000) ? QString::fromUtf8(process.readAllStandardOutput()) : QString();
}
