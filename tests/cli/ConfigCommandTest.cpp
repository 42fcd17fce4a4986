// config save, diff and apply against one simulated meter kept across commands.
#include "CliRun.h"
#include "sim/MeterRegisters.h"
#include "sim/SimulatedMeterHost.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

class ConfigCommandTest : public QObject {
    Q_OBJECT
private slots:
    void saveDiffApply()
    {
        sim::SimulatedMeterHost meter;
        const QString port = meter.listen().path;
        QVERIFY(!port.isEmpty());
        QTemporaryDir dir;
        const QString file = dir.filePath("meter.json");
        const auto run = [&port](QStringList arguments) { return RunCli(arguments + QStringList{"--port", port}); };

        const CliResult save = run({"config", "save", file});
        QVERIFY2(save.exitCode == 0, save.err.constData());
        QCOMPARE(run({"config", "save", dir.filePath("none/meter.json")}).exitCode, 6);
        QCOMPARE(run({"set", "ct-ratio", "200"}).exitCode, 0);
        QCOMPARE(run({"set", "wiring", "3P3W 2CT"}).exitCode, 0);

        const CliResult differs = run({"config", "diff", file});
        QCOMPARE(differs.exitCode, 1);
        QCOMPARE(differs.out.count("≠ "), 2);
        QVERIFY2(differs.out.contains("≠ CT ratio: file 5, meter 200\n"), differs.out.constData());
        QVERIFY2(differs.out.contains("≠ Wiring: file 3P4W, meter 3P3W 2CT\n"), differs.out.constData());

        const CliResult apply = run({"config", "apply", file});
        QVERIFY2(apply.exitCode == 0, apply.err.constData());
        QCOMPARE(QString::fromUtf8(apply.out), "CT ratio: 200 → 5: confirmed\nWiring: 3P3W 2CT → 3P4W: confirmed\n");
        QCOMPARE(meter.holding(sim::Reg::kCtRatio), 5);
        QCOMPARE(run({"config", "diff", file}).exitCode, 0);
        const CliResult again = run({"config", "apply", file});
        QCOMPARE(again.exitCode, 0);
        QCOMPARE(again.out, QByteArray("The meter matches the file: nothing was written.\n"));

        // A new channel count deletes the group's records: only with --yes.
        QFile edited(file);
        QVERIFY(edited.open(QIODevice::ReadWrite));
        QJsonObject root = QJsonDocument::fromJson(edited.readAll()).object();
        QJsonArray groups = root["lp_groups"].toArray();
        QJsonObject group = groups[1].toObject();
        group["channels"] = 6;
        groups[1] = group;
        root["lp_groups"] = groups;
        edited.resize(0);
        edited.write(QJsonDocument(root).toJson());
        edited.close();
        const CliResult refused = run({"config", "apply", file});
        QCOMPARE(refused.exitCode, 5);
        QVERIFY2(refused.err.contains("not sent: Load Profile: Warning : You will delete Load Profile Data"), refused.err.constData());
        QCOMPARE(run({"config", "diff", file}).exitCode, 1);

        // A file the checks refuse is refused whole before anything goes on line.
        root["format"] = 2;
        QVERIFY(edited.open(QIODevice::WriteOnly | QIODevice::Truncate));
        edited.write(QJsonDocument(root).toJson());
        edited.close();
        const qsizetype requests = meter.requestLog().size();
        const CliResult unknown = run({"config", "apply", file, "--yes"});
        QCOMPARE(unknown.exitCode, 2);
        QVERIFY2(unknown.err.contains("format"), unknown.err.constData());
        QCOMPARE(meter.requestLog().size(), requests);
    }
};

QTEST_GUILESS_MAIN(ConfigCommandTest)
#include "ConfigCommandTest.moc"
