// report: the commissioning record of one meter, as an A4 PDF or as JSON.
#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "report/ReportPdf.h"
#include "session/CommissioningReport.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QTextStream>

namespace {

const QCommandLineOption kOutput(QStringLiteral("output"), QStringLiteral("The file to write (JSON goes to the standard output without it)."), QStringLiteral("FILE"));
const QCommandLineOption kFormat(QStringLiteral("format"), QStringLiteral("pdf (the default) or json."), QStringLiteral("FORMAT"));
const QCommandLineOption kEngineer(QStringLiteral("engineer"), QStringLiteral("Who commissioned the meter."), QStringLiteral("NAME"));
const QCommandLineOption kSite(QStringLiteral("site"), QStringLiteral("Where the meter is."), QStringLiteral("TEXT"));
const QCommandLineOption kNote(QStringLiteral("note"), QStringLiteral("A remark for the record."), QStringLiteral("TEXT"));

int WriteJson(const QByteArray& json, const QString& path)
{
    if (path.isEmpty())
        return PrintOut(json);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) < 0 || !file.commit())
        return Fail(kExitFileError, QStringLiteral("cannot write %1: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
    return kExitOk;
}

} // namespace

int RunReport(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("report"),
                     QStringLiteral("Reads the meter once and writes its commissioning report: the meter, its settings, "
                                    "its measurements, the phasor diagram and the wiring verdict."), MeterLine{});
    for (const QCommandLineOption& option : {kOutput, kFormat, kEngineer, kSite, kNote})
        line.Add(option);
    if (const auto status = line.Parse(arguments))
        return *status;
    const QString format = line.IsSet(kFormat) ? line.Value(kFormat) : QStringLiteral("pdf");
    if (format != QLatin1String("pdf") && format != QLatin1String("json"))
        return Fail(kExitBadArguments, QStringLiteral("--format must be pdf or json, not \"%1\"").arg(format));
    if (format == QLatin1String("pdf") && !line.IsSet(kOutput))
        return Fail(kExitBadArguments, QStringLiteral("no file given: --output FILE.pdf"));
    const auto options = line.Line();
    if (!options)
        return kExitBadArguments;

    ConsoleSession console(*options);
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    if (!console.NextReading())
        return console.Ended();
    const ReportExtras extras{line.Value(kSite), line.Value(kEngineer), line.Value(kNote),
                              QCoreApplication::applicationVersion(), QDateTime::currentDateTime(), nullptr, {}};
    const CommissioningReport report = BuildReport(console.session(), extras);
    if (format == QLatin1String("json"))
        return WriteJson(ReportJson(report), line.Value(kOutput));
    if (const std::optional<QString> error = WriteReportPdf(report, line.Value(kOutput)))
        return Fail(kExitFileError, *error);
    QTextStream(stdout) << "Wrote the report of the meter " << report.identification << " to "
                        << QDir::toNativeSeparators(line.Value(kOutput)) << Qt::endl;
    return kExitOk;
}
