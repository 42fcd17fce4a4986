#pragma once

#include "session/CommissioningReport.h"

#include <QString>

#include <optional>

// Writes the report as an A4 PDF: a title, the header, the meter, its settings, the
// measurements, the phasor diagram and the wiring verdict, and the history when there is one.
// The file is replaced only when all of it was written; the error names the file and why.
std::optional<QString> WriteReportPdf(const CommissioningReport& report, const QString& path);
