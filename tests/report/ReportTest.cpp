// qx5820 report: the PDF's text section by section, its JSON, and the failures' exit status.
#include "CliRun.h"
#include "ReportFixtures.h"
#include "PtyPair.h"
#include "sim/SimulatedMeterHost.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

class ReportTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("pdftotext (poppler-utils) is not installed");
        QVERIFY(m_dir.isValid());
        for (auto [meter, name] : {std::pair{&m_wellWired, "well"}, std::pair{&m_miswired, "miswired"}}) {
            const sim::SimulatedMeterHost::Started started = meter->listen();
            QVERIFY2(!started.path.isEmpty(), qPrintable(started.error));
            const QString pdf = m_dir.filePath(QLatin1String(name) + QStringLiteral(".pdf"));
            const CliResult result = RunCli({"report", "--port", started.path, "--output", pdf, "--engineer", "A. Tester",
                                             "--site", "Plant 3, feeder 7", "--note", "After the CT swap"});
            QVERIFY2(result.exitCode == 0, result.err.constData());
            m_text[QLatin1String(name)] = PdfText(pdf);
        }
    }

    // Each section of the PDF holds its labels and values, the measurements with their units.
    void sections_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QStringList>("patterns");
        QTest::newRow("header") << "well" << QStringList{"commissioning report", R"(Site\s+Plant 3, feeder 7)", R"(Engineer\s+A\. Tester)",
                                                         R"(Date and time\s+\d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC[+-]\d\d:\d\d)",
                                                         R"(Tool version\s+1\.0)", "Note: After the CT swap"};
        QTest::newRow("meter") << "well" << QStringList{R"(Identification\s+QX5820\s+SN\d+)", R"(Address\s+15\b)", R"(Baud rate\s+(9600|19200)\b)",
                                                        R"(Stop bits\s+1\b)", R"(Meter clock\s+\d{4}-)", R"(PC clock\s+\d{4}-)",
                                                        R"(Meter − PC\s+[-+]?\d+\s*s)", R"(Reading taken \d{4}-.*UTC)"};
        QTest::newRow("settings") << "well" << QStringList{R"(Wiring\s+\S+)", R"(PT ratio 1\s+[\d.]+)", R"(PT ratio 2 \(pri\. ÷ sec\.\)\s+[\d.]+)",
                                                           R"(CT ratio\s+\d+)", R"(Scroll time\s+\d+\s*s)", R"(Display item\s+position 1: \d+)",
                                                           R"(LP group 1\s+\d+ channels every \d+ min)", R"(LP group 2\s+\d+ channels)"};
        QTest::newRow("measurements") << "well" << QStringList{R"(Voltage L1-N\s+2\d\d\.?\d* V\b)", R"(Voltage L1-L2\s+[34]\d\d\.?\d* V\b)",
                                                               R"(Current L1\s+[\d.]+ A\b)", R"(Active power total\s+[\d.]+ kW\b)",
                                                               R"(Power factor average\s+0\.[89]\d*\s)", R"(Current angle L1\s+[\d.]+ °)",
                                                               R"(Frequency\s+(49|50)\.?\d* Hz)", R"(kWh delivered total\s+[\d.]+ kWh)"};
        QTest::newRow("wiring, well") << "well" << QStringList{"Voltages solid, currents dashed", R"(\bV1\b)", R"(\bI3\b)", "All checks passed"};
        QTest::newRow("wiring, CT backwards") << "miswired" << QStringList{"L1: current reversed"};
    }
    void sections()
    {
        QFETCH(QString, report);
        QFETCH(QStringList, patterns);
        const QString text = m_text.value(report);
        for (const QString& pattern : patterns)
            QVERIFY2(QRegularExpression(pattern).match(text).hasMatch(), qPrintable(pattern + QStringLiteral(" not in:\n") + text));
    }

    void json()
    {
        const CliResult result = RunCli({"report", "--port", "sim", "--format", "json", "--engineer", "B"});
        QCOMPARE(result.exitCode, 0);
        const QJsonObject root = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(root["header"]["engineer"].toString(), QStringLiteral("B"));
        QVERIFY(root["meter"]["reading_fresh"].toBool());
        QVERIFY(root["meter"]["identification"].toString().contains(QStringLiteral("SN")));
        QVERIFY(root["settings"]["CT ratio"].isString());
        QVERIFY(qAbs(root["measurements"]["frequency_hz"]["value"].toDouble() - 50) < 1);
        QVERIFY(root["measurements"]["voltage_an_v"]["value"].toDouble() > 100);
        QVERIFY(root["measurements"]["power_factor_avg"]["value"].isDouble());
        QVERIFY(!root["wiring"]["verdict"].toArray().isEmpty());
    }

    void failures_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("err");
        QTest::newRow("no file") << QStringList{"report", "--port", "sim"} << 2 << "--output FILE.pdf";
        QTest::newRow("format") << QStringList{"report", "--port", "sim", "--format", "html"} << 2 << "pdf or json";
        QTest::newRow("unwritable") << QStringList{"report", "--port", "sim", "--output", "DIR/none/r.pdf"} << 6 << "none/r.pdf";
        QTest::newRow("no answer") << QStringList{"report", "--port", "SILENT", "--timeout", "0.05", "--output", "DIR/r.pdf"} << 4 << "";
    }
    void failures()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, err);
        QVERIFY2(m_silent.error().isEmpty(), qPrintable(m_silent.error()));
        arguments.replaceInStrings(QStringLiteral("DIR"), m_dir.path()).replaceInStrings(QStringLiteral("SILENT"), m_silent.first());
        const CliResult result = RunCli(arguments);
        QVERIFY2(result.exitCode == status, result.err.constData());
        QVERIFY2(QString::fromUtf8(result.err).contains(err), result.err.constData());
        QVERIFY(!QFile::exists(m_dir.filePath(QStringLiteral("r.pdf"))));
    }

private:
    QTemporaryDir m_dir;
    sim::SimulatedMeterHost m_wellWired{MeterWired("none")};
    sim::SimulatedMeterHost m_miswired{MeterWired("reversed-ct-l1")};
    PtyPair m_silent;
    QHash<QString, QString> m_text;
};

QTEST_GUILESS_MAIN(ReportTest)
#include "ReportTest.moc"
