// The wiring verdict over readings of the simulated meter wired with each fault, at power
// factors from 0.5 lagging to 0.5 leading, and over healthy readings with one thing wrong.
#include "measure/PollPlan.h"
#include "measure/ReadingDecoding.h"
#include "measure/WiringVerdict.h"
#include "sim/MeterModel.h"

#include <QTest>

#include <functional>

using Check = WiringFinding::Check;
using Expected = QList<std::pair<Check, QList<int>>>; // the findings, in order: check and phases

Q_DECLARE_METATYPE(Expected)
Q_DECLARE_METATYPE(sim::LoadCharacter)
Q_DECLARE_METATYPE(std::function<void(MeterReading&)>)

namespace {

// The real-time image the tool would read from `meter`, decoded as a poll tick decodes it.
MeterReading ReadingOf(const sim::MeterModel& meter)
{
    QByteArray image;
    for (std::size_t i = 0; i < PollPlan::kImageBlocks; ++i) {
        const PollBlock& block = PollPlan::kBlocks[i];
        const auto table = block.function == Rtu::kReadHolding ? sim::Table::Holding : sim::Table::Input;
        for (quint16 word : meter.read(table, block.start, block.count).values) {
            image.append(char(word >> 8));
            image.append(char(word & 0xFF));
        }
    }
    MeterReading reading;
    DecodeRealTimeImage(image, reading);
    return reading;
}

// A meter `hours` into its day, wired in `wiringCode` with `fault` to a balanced load.
MeterReading SimulatedReading(const QString& fault, sim::LoadCharacter load, int wiringCode = 5, int hours = 9)
{
    sim::MeterModel meter(7, QDateTime(QDate(2026, 3, 2), QTime(hours, 17, 41), Qt::UTC), sim::SimClock::Mode::Frozen);
    meter.startWithLoad(load);
    meter.startWithWiring(*sim::WiringFault::parse(fault));
    meter.setHolding(sim::Reg::kWiring, quint16(wiringCode));
    return ReadingOf(meter);
}

Expected FindingsOf(const WiringVerdict& verdict)
{
    Expected found;
    for (const WiringFinding& finding : verdict.findings)
        found.append({finding.check, finding.phases});
    return found;
}

const QList<sim::LoadCharacter> kLoads{{1.0, false}, {0.9, false}, {0.5, false}, {0.9, true}, {0.7, true}, {0.5, true}};

QString LoadName(sim::LoadCharacter load)
{
    return QStringLiteral("PF %1 %2").arg(load.powerFactor).arg(load.leading ? "leading" : "lagging");
}

// What the finding's text must say about `fault`: the phases, and for an ambiguous swap which
// pair goes with the load as it is.
QString NamedIn(const QString& fault, sim::LoadCharacter load)
{
    if (fault == "reverse-sequence")
        return QStringLiteral("CBA");
    QString phases = fault.section('-', -2).toUpper();
    if (!fault.startsWith("swapped"))
        return phases.section('-', -1) + ':';
    const QString pair = phases.replace('-', QStringLiteral(" and "));
    if (load.powerFactor != 0.5)
        return pair + ':';
    return pair + (load.leading ? " if it is capacitive" : " if the load is inductive");
}

} // namespace

class WiringVerdictTest : public QObject {
    Q_OBJECT
private slots:
    void eachFaultGivesExactlyItsFinding_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<sim::LoadCharacter>("load");
        QTest::addColumn<Expected>("expected");
        const QList<std::pair<QString, Expected>> faults{
            {"none", {}},
            {"reversed-ct-l1", {{Check::CurrentDirection, {0}}}},
            {"reversed-ct-l2", {{Check::CurrentDirection, {1}}}},
            {"reversed-ct-l3", {{Check::CurrentDirection, {2}}}},
            {"swapped-l1-l2", {{Check::CurrentSwap, {0, 1}}}},
            {"swapped-l2-l3", {{Check::CurrentSwap, {1, 2}}}},
            {"swapped-l1-l3", {{Check::CurrentSwap, {0, 2}}}},
            {"missing-l1", {{Check::Voltage, {0}}}},
            {"missing-l2", {{Check::Voltage, {1}}}},
            {"missing-l3", {{Check::Voltage, {2}}}},
            {"reverse-sequence", {{Check::PhaseSequence, {}}}},
        };
        for (const sim::LoadCharacter& load : kLoads) {
            for (auto [fault, expected] : faults) {
                // At a power factor of 0.5 a swap on an inductive load reads as another swap on
                // a capacitive one: the finding names both, so it concerns all three phases.
                if (load.powerFactor == 0.5 && fault.startsWith("swapped"))
                    expected.first().second = {0, 1, 2};
                QTest::addRow("%s, %s", qPrintable(fault), qPrintable(LoadName(load))) << fault << load << expected;
            }
        }
    }
    void eachFaultGivesExactlyItsFinding()
    {
        QFETCH(QString, fault);
        QFETCH(sim::LoadCharacter, load);
        QFETCH(Expected, expected);
        // Several moments of the day, each with its own noise and load.
        for (int hours : {3, 9, 15, 21}) {
            const WiringVerdict verdict = JudgeWiring(SimulatedReading(fault, load, 5, hours));
            QCOMPARE(FindingsOf(verdict), expected);
            QCOMPARE(verdict.Passed(), expected.isEmpty());
            if (expected.isEmpty())
                QCOMPARE(verdict.Lines(), QStringList{QStringLiteral("All checks passed")});
            else
                QVERIFY2(verdict.findings.first().text.contains(NamedIn(fault, load)), qPrintable(verdict.findings.first().text));
        }
    }

    // Only what the wiring mode measures is judged.
    void judgesWhatTheWiringModeMeasures_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("wiringCode");
        QTest::addColumn<Expected>("expected");
        QTest::newRow("1P2W healthy") << "none" << 1 << Expected{};
        QTest::newRow("1P2W, its CT reversed") << "reversed-ct-l1" << 1 << Expected{{Check::CurrentDirection, {0}}};
        QTest::newRow("1P2W ignores L2 and L3") << "reversed-ct-l2" << 1 << Expected{};
        QTest::newRow("1P2W has no sequence") << "reverse-sequence" << 1 << Expected{};
        QTest::newRow("1P3W, L2 without voltage") << "missing-l2" << 2 << Expected{{Check::Voltage, {1}}};
        QTest::newRow("3P3W healthy") << "none" << 4 << Expected{};
        QTest::newRow("3P3W, L3 open: two line voltages low")
            << "missing-l3" << 4 << Expected{{Check::Voltage, {1, 2}}, {Check::Voltage, {2, 0}}};
        QTest::newRow("3P3W reverse sequence") << "reverse-sequence" << 3 << Expected{{Check::PhaseSequence, {}}};
    }
    void judgesWhatTheWiringModeMeasures()
    {
        QFETCH(QString, fault);
        QFETCH(int, wiringCode);
        QFETCH(Expected, expected);
        QCOMPARE(FindingsOf(JudgeWiring(SimulatedReading(fault, {0.9, false}, wiringCode))), expected);
    }

    // A healthy reading with one thing wrong that no wiring fault of the simulator makes.
    void findsWhatTheMeterReports_data()
    {
        QTest::addColumn<std::function<void(MeterReading&)>>("change");
        QTest::addColumn<Expected>("expected");
        using Change = std::function<void(MeterReading&)>;
        QTest::newRow("L1 voltage 5 % high") << Change([](MeterReading& r) { r.phaseVoltage[0] *= 1.05; })
                                             << Expected{{Check::VoltageUnbalance, {0}}};
        QTest::newRow("L1 voltage 2 % high passes") << Change([](MeterReading& r) { r.phaseVoltage[0] *= 1.02; }) << Expected{};
        QTest::newRow("L2 voltage at 70 %") << Change([](MeterReading& r) { r.phaseVoltage[1] *= 0.7; })
                                            << Expected{{Check::Voltage, {1}}};
        QTest::newRow("L2 current 40 % high") << Change([](MeterReading& r) { r.current[1] *= 1.4; })
                                              << Expected{{Check::CurrentUnbalance, {1}}};
        QTest::newRow("L3 current 15 % low passes") << Change([](MeterReading& r) { r.current[2] *= 0.85; }) << Expected{};
        QTest::newRow("L3 power factor 0.3") << Change([](MeterReading& r) { r.powerFactor[2] = 0.3; })
                                             << Expected{{Check::PowerFactor, {2}}};
        QTest::newRow("L1 power factor negative, power positive")
            << Change([](MeterReading& r) { r.powerFactor[0] = -r.powerFactor[0]; }) << Expected{{Check::PowerFactor, {0}}};
        QTest::newRow("L2 power negative, angle fine")
            << Change([](MeterReading& r) { r.activePower[1] = -r.activePower[1]; r.powerFactor[1] = -r.powerFactor[1]; })
            << Expected{{Check::CurrentDirection, {1}}};
        QTest::newRow("no wiring recognised") << Change([](MeterReading& r) { r.wiringCode = 0; })
                                              << Expected{{Check::Wiring, {}}};
        QTest::newRow("sequence unknown") << Change([](MeterReading& r) { r.phaseSequenceCode = 0; })
                                          << Expected{{Check::PhaseSequence, {}}};
    }
    void findsWhatTheMeterReports()
    {
        QFETCH(std::function<void(MeterReading&)>, change);
        QFETCH(Expected, expected);
        MeterReading reading = SimulatedReading("none", {0.95, false});
        change(reading);
        QCOMPARE(FindingsOf(JudgeWiring(reading)), expected);
    }

    void withoutLoadCurrentTheCtsAreNotJudged()
    {
        MeterReading reading = SimulatedReading("reversed-ct-l2", {0.9, false});
        reading.current = {0, 0, 0, 0};
        const WiringVerdict verdict = JudgeWiring(reading);
        QVERIFY(verdict.findings.isEmpty());
        QVERIFY(!verdict.Passed());
        QVERIFY(!verdict.Lines().contains(QStringLiteral("All checks passed")));
    }
};

QTEST_GUILESS_MAIN(WiringVerdictTest)
#include "WiringVerdictTest.moc"
