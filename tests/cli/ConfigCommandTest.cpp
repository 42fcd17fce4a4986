// config save, diff and apply against one simulated meter kept across commands, and on a bus
// where one file serves several meters.
#include "CliRun.h"
#include "sim/MeterRegisters.h"
#include "sim/BusMeters.h"
#include "sim/SimulatedMeterHost.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <vector>

namespace {

// The registers of the meter at `address` on `line`.
quint16 HoldingOf(sim::SimulatedMeterHost& line, quint8 address, quint16 reg)
{
    sim::SharedMeterModel* meter = line.meter(address);
    return meter ? meter->with([reg](sim::MeterModel& m) { return m.holding(reg); }) : 0;
}

QJsonObject JsonFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

} // namespace

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

    // One meter's settings carried to the others of its line, a silent one among them.
    void fleet()
    {
        sim::SimulatedMeterHost line(sim::BusMeters(3));
        QVERIFY(line.setSilent(3));
        const QString port = line.listen().path;
        QVERIFY(!port.isEmpty());
        QTemporaryDir dir;
        const QString file = dir.filePath("template.json");
        const auto run = [&port](QStringList arguments, const QString& addresses) {
            return RunCli(arguments + QStringList{"--port", port, "--address", addresses, "--timeout", "0.1"});
        };

        for (const QStringList& set : {QStringList{"ct-ratio", "300"}, {"scroll-time", "7"}, {"display-item", "1", "105"},
                                       {"display-item", "2", "106"}, {"wiring", "3P3W 2CT"}})
            QCOMPARE(run(QStringList{"set"} + set, "1").exitCode, 0);
        QCOMPARE(run({"config", "save", file}, "1").exitCode, 0);

        const CliResult apply = run({"config", "apply", file}, "2,3");
        QVERIFY2(apply.exitCode == 4, apply.err.constData());
        QVERIFY2(apply.err.endsWith("qx5820: no answer from address 3\n"), apply.err.constData());
        QCOMPARE(QString::fromUtf8(apply.out), "address 2:\n"
                                               "Modbus address: 2 → 1: left as it is (--with-communication writes it)\n"
                                               "CT ratio: 5 → 300: confirmed\n"
                                               "Scroll time: 5 s → 7 s: confirmed\n"
                                               "Display item: position 1: 101 Vln_a → position 1: 105 Vll_ab: confirmed\n"
                                               "Display item: position 2: 102 Vln_b → position 2: 106 Vll_bc: confirmed\n"
                                               "Wiring: 3P4W → 3P3W 2CT: confirmed\n"
                                               "address 3:\n");
        QCOMPARE(HoldingOf(line, 2, sim::Reg::kCtRatio), 300);
        QCOMPARE(HoldingOf(line, 2, sim::Reg::kSlaveAddress), 2);
        QCOMPARE(HoldingOf(line, 3, sim::Reg::kCtRatio), 5);

        QCOMPARE(run({"config", "diff", file}, "2").exitCode, 0);
        line.clearRequestLog();
        const CliResult again = run({"config", "apply", file}, "2");
        QVERIFY2(again.exitCode == 0, again.err.constData());
        const QList<sim::LoggedRequest> sent = line.requestLog();
        QVERIFY(!sent.isEmpty());
        QVERIFY(std::none_of(sent.begin(), sent.end(), [](const sim::LoggedRequest& r) {
            return r.frame.at(1) == 6 || r.frame.at(1) == 16;
        }));

        // A file per meter, named after its identification.
        QCOMPARE(run({"config", "save", dir.filePath("fleet")}, "1,2").exitCode, 0);
        for (const int address : {1, 2}) {
            const QString name = QStringLiteral("QX5820_SN%1.json").arg(sim::MeterModel::kSerialNumber + address - 1, 6, 10, QLatin1Char('0'));
            const QJsonObject saved = JsonFile(dir.filePath("fleet/" + name));
            QCOMPARE(saved["communication"].toObject()["address"].toInt(), address);
            QCOMPARE(saved["ct_ratio"].toInt(), 300);
            QCOMPARE(saved["wiring"].toString(), "3P3W 2CT");
        }
    }
};

QTEST_GUILESS_MAIN(ConfigCommandTest)
#include "ConfigCommandTest.moc"
