// The meter's register image: a consistent three-phase system, reproducible from its seed,
// energy counters, clock, checked writes and load-profile records.

#include "sim/MeterModel.h"

#include <QtTest>

#include <bit>

using namespace sim;

namespace {

MeterModel frozenMeter(quint64 seed = 42)
{
    return MeterModel(seed, QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC), SimClock::Mode::Frozen);
}

// The meter's float at `index` of `words`: low-order register first.
double floatAt(const QList<quint16>& words, qsizetype index)
{
    return std::bit_cast<float>(quint32(words.at(index)) | quint32(words.at(index + 1)) << 16);
}

double inputFloat(const MeterModel& meter, int reg)
{
    return floatAt(meter.read(Table::Input, quint16(reg), 2).values, 0);
}

// Energy of `kind` (kWh delivered, received, kvarh lagging, leading, kVAh), all phases.
double energy(const MeterModel& meter, int kind)
{
    return inputFloat(meter, 0x10D4 + 6 * kind) + inputFloat(meter, 0x10D6 + 6 * kind) + inputFloat(meter, 0x10D8 + 6 * kind);
}

} // namespace

class MeterModelTest : public QObject {
    Q_OBJECT
private slots:
    void servesAConsistentThreePhaseSystem()
    {
        const MeterModel meter = frozenMeter();
        const auto at = [&](int reg) { return inputFloat(meter, reg); };
        QCOMPARE_LE(std::abs(at(0x107E) - 50.0), 0.1);
        double p = 0, s = 0;
        for (int phase = 0; phase < 3; ++phase) {
            const double v = at(0x1080 + 2 * phase), next = at(0x1080 + 2 * ((phase + 1) % 3));
            const double i = at(0x1090 + 2 * phase), pf = at(0x10B0 + 2 * phase);
            QVERIFY(v > 220 && v < 240 && i > 1 && i < 12 && pf > 0.7 && pf < 1.0);
            QCOMPARE_LE(std::abs(at(0x1088 + 2 * phase) - std::sqrt(v * v + next * next + v * next)), 1e-3);
            QCOMPARE_LE(std::abs(at(0x1098 + 2 * phase) - v * i * pf / 1000), 1e-5);
            QCOMPARE_LE(std::abs(at(0x10A0 + 2 * phase) - v * i * std::sqrt(1 - pf * pf) / 1000), 1e-4);
            QCOMPARE_LE(std::abs(at(0x10A8 + 2 * phase) - v * i / 1000), 1e-5);
            QCOMPARE(at(0x10B8 + 2 * phase), 120.0 * phase);
            QCOMPARE_LE(std::abs(at(0x10BE + 2 * phase) - 120.0 * phase - qRadiansToDegrees(std::acos(pf))), 1e-3);
            p += at(0x1098 + 2 * phase);
            s += at(0x10A8 + 2 * phase);
        }
        QCOMPARE_LE(std::abs(at(0x109E) - p), 1e-4);
        QCOMPARE_LE(std::abs(at(0x10AE) - s), 1e-4);
        QCOMPARE_LE(std::abs(at(0x10B6) - p / s), 1e-5);
        QCOMPARE_LE(std::abs(at(0x108E) - 230 * std::sqrt(3.0)), 10);
        QCOMPARE(meter.read(Table::Input, 0x10C4, 2).values, (QList<quint16>{5, 1})); // 4-wire, ABC
        // The same seed at the same moment serves the same; another seed does not.
        const auto all = [](const MeterModel& m) { return m.read(Table::Input, 0x107E, 0x74).values; };
        QCOMPARE(all(meter), all(frozenMeter()));
        QVERIFY(all(meter) != all(frozenMeter(8)));
    }

    void energyRisesWithPowerAndClears()
    {
        MeterModel meter = frozenMeter();
        const double delivered = energy(meter, 0), received = energy(meter, 1), apparent = energy(meter, 4);
        const double kw = inputFloat(meter, 0x109E);
        meter.clock().advance(3600);
        const double gained = energy(meter, 0) - delivered;
        QVERIFY2(gained > 0.8 * kw && gained < 1.2 * kw, qPrintable(QString::number(gained)));
        QCOMPARE(energy(meter, 1), received);
        QVERIFY(energy(meter, 4) - apparent > gained);

        QCOMPARE(meter.write(0x1012, {0x55}), ModbusError::None);
        QCOMPARE(meter.holding(0x1012), quint16(0));
        for (int kind = 0; kind < 5; ++kind)
            QCOMPARE(energy(meter, kind), 0.0);
        meter.clock().advance(60);
        QVERIFY(energy(meter, 0) > 0);
        // The quarter hour just ended, the clear in it, still records what was drawn in it.
        meter.setHolding(0x104D, meter.input(0x1191));
        const QList<quint16> record = meter.read(Table::Input, 0x2100, 11).values; // codes 6, 12, 13, 14
        QCOMPARE(record.mid(0, 3), (QList<quint16>{(26 << 8) | 11, (16 << 8) | 1, 0}));
        QVERIFY(floatAt(record, 5) > kw / 5 && floatAt(record, 7) > 0);
    }

    // Whatever the wiring, the powers, power factors and angles of a phase tell one story, and
    // its energy counters follow the sign of its powers.
    void measurementsFollowTheWiring_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<bool>("leading");
        for (const QString& fault : WiringFault::names())
            for (bool leading : {false, true})
                QTest::addRow("%s, %s", qPrintable(fault), leading ? "leading" : "lagging") << fault << leading;
    }
    void measurementsFollowTheWiring()
    {
        QFETCH(QString, fault);
        QFETCH(bool, leading);
        MeterModel meter = frozenMeter();
        meter.startWithLoad({0.8, leading});
        meter.startWithWiring(*WiringFault::parse(fault));
        const auto at = [&](int reg, int phase) { return inputFloat(meter, reg + 2 * phase); };
        QCOMPARE(meter.input(0x10C5), quint16(fault == "reverse-sequence" ? 2 : 1));
        std::array<double, 5> before{};
        for (int kind = 0; kind < 5; ++kind)
            before[kind] = energy(meter, kind);
        double p = 0, q = 0;
        for (int phase = 0; phase < 3; ++phase) {
            const double v = at(0x1080, phase), i = at(0x1090, phase), pf = at(0x10B0, phase);
            const double kw = at(0x1098, phase), kvar = at(0x10A0, phase), kva = at(0x10A8, phase);
            QCOMPARE_LE(std::abs(kva - v * i / 1000), 1e-5);
            QCOMPARE_LE(std::abs(kw - kva * pf), 1e-5);
            QCOMPARE_LE(std::abs(std::hypot(kw, kvar) - kva), 1e-4);
            if (v > 0) {
                const double between = qDegreesToRadians(at(0x10BE, phase) - at(0x10B8, phase));
                QCOMPARE_LE(std::abs(std::cos(between) - pf), 1e-5);
                QCOMPARE_LE(std::abs(std::sin(between) * kva - kvar), 1e-4);
            }
            p += kw;
            q += kvar;
        }
        meter.clock().advance(3600);
        // Over the hour: the net active and reactive energy, within the load's daily swing.
        const double netKwh = (energy(meter, 0) - before[0]) - (energy(meter, 1) - before[1]);
        const double netKvarh = (energy(meter, 2) - before[2]) - (energy(meter, 3) - before[3]);
        QCOMPARE_LE(std::abs(netKwh - p), 0.1 * std::abs(p) + 0.05);
        QCOMPARE_LE(std::abs(netKvarh - q), 0.1 * std::abs(q) + 0.05);
    }

    void clockRunsAndIsSetByWrites()
    {
        MeterModel meter = frozenMeter();
        QCOMPARE(meter.read(Table::Holding, 0x1023, 7).values, (QList<quint16>{26, 11, 15, 23, 59, 7, 0}));
        meter.clock().advance(60);
        QCOMPARE(meter.read(Table::Holding, 0x1023, 7).values, (QList<quint16>{26, 11, 16, 0, 0, 7, 1}));
        QCOMPARE(meter.write(0x1023, {24, 2, 29, 12, 30, 0, 4}), ModbusError::None);
        QCOMPARE(meter.read(Table::Holding, 0x1023, 7).values, (QList<quint16>{24, 2, 29, 12, 30, 0, 4}));
        QCOMPARE(meter.write(0x1024, {2, 30}), ModbusError::IllegalDataValue);
        QCOMPARE(meter.holding(0x1025), quint16(29));
    }

    void writesAreCheckedWhole()
    {
        MeterModel meter = frozenMeter();
        const QList<quint16> before = meter.read(Table::Holding, 0x1000, 0x100).values;
        QCOMPARE(meter.write(0x1000, {20, 3}), ModbusError::IllegalDataValue); // address 20 fine, baud code 3 not
        QCOMPARE(meter.write(0x10FF, {1, 1}), ModbusError::IllegalDataAddress); // past the settings
        QCOMPARE(meter.read(Table::Holding, 0x1000, 0x100).values, before);
        QCOMPARE(meter.write(0x4492, {0, 0x42C8}), ModbusError::None); // PT ratio 2: 100.0
        QCOMPARE(meter.read(Table::Holding, 0x4492, 2).values, (QList<quint16>{0, 0x42C8}));
    }

    void recordsFollowTheLoadAtIntervalSpacing()
    {
        MeterModel meter = frozenMeter();
        QCOMPARE(meter.read(Table::Input, 0x1190, 6).values, (QList<quint16>{1440, 960, 65536 / 38, 65536 / 22, 1, 1440}));
        meter.setHolding(0x104D, 1439);
        const QList<quint16> area = meter.read(Table::Input, 0x2000, 125).values;
        const qsizetype length = 3 + 2 * 8; // default codes 1, 2, 3, 4, 5, 7, 9, 11
        // The last record ends on the quarter hour before the clock (23:59:07), the one
        // before a quarter hour earlier.
        QCOMPARE(area.mid(0, 3), (QList<quint16>{(26 << 8) | 11, (15 << 8) | 23, (30 << 8) | 0}));
        QCOMPARE(area.mid(length, 3), (QList<quint16>{(26 << 8) | 11, (15 << 8) | 23, (45 << 8) | 0}));
        const auto value = [&](int record, int channel) { return floatAt(area, record * length + 3 + 2 * channel); };
        QCOMPARE_LE(std::abs(value(1, 0) - 230), 5);                // Vln avg
        QVERIFY(value(1, 1) > 1 && value(1, 1) < 12);               // I avg
        QVERIFY(value(1, 2) > 0 && value(1, 4) > value(1, 2));      // kW avg below kVA avg
        QCOMPARE_LE(std::abs(value(1, 5) - value(0, 5) - value(1, 2) / 4), 1e-2); // kWh+ rises by kW × ¼ h
        QCOMPARE(area.mid(2 * length), QList<quint16>(125 - 2 * length, 0)); // no third record

        // Group 2's last record covers the same quarter hour: codes 6, 12, 13, 14.
        meter.setHolding(0x104D, 960);
        const QList<quint16> group2 = meter.read(Table::Input, 0x2100, 11).values;
        const auto interval = [&](int channel) { return floatAt(group2, 3 + 2 * channel); };
        QCOMPARE(group2.mid(0, 3), area.mid(length, 3));
        QCOMPARE_LE(std::abs(interval(1) - value(1, 2) / 4), 1e-4);        // kWh = kW × ¼ h
        QCOMPARE_LE(std::abs(interval(0) - interval(1) / interval(3)), 1e-5); // PF = kWh / kVAh
        QVERIFY(interval(2) > 0 && interval(2) < interval(3));
    }

    void clearsAndRecountsEmptyTheirGroupOnly()
    {
        MeterModel meter = frozenMeter();
        QCOMPARE(meter.write(0x1033, {0x33}), ModbusError::None);
        QCOMPARE(meter.read(Table::Input, 0x1190, 2).values, (QList<quint16>{0, 960}));
        QCOMPARE(meter.holding(0x1033), quint16(0));
        QCOMPARE(meter.write(0x1043, {4, 15}), ModbusError::None); // unchanged: data kept
        QCOMPARE(meter.input(0x1191), quint16(960));
        QCOMPARE(meter.write(0x1043, {2}), ModbusError::None);
        QCOMPARE(meter.read(Table::Input, 0x1191, 3).values, (QList<quint16>{0, 65536 / 38, 65536 / 14}));
        meter.clock().advance(15 * 60);
        QCOMPARE(meter.read(Table::Input, 0x1190, 2).values, (QList<quint16>{1, 1}));
    }

    void aLongHistoryStaysPlausibleAndSurvivesAClear()
    {
        // Group 1 records codes 1 to 12, group 2 codes 6, 12, 13, 14, 1 to 4; each the most
        // quarter hours the counters can count (682 days), the last ending at 23:45 before
        // the clock's 23:59:07.
        MeterModel meter = frozenMeter();
        meter.setHolding(0x1034, 12);
        meter.setHolding(0x1043, 8);
        meter.startWithHistory(0, 65535);
        meter.startWithHistory(1, 70000);
        QCOMPARE(meter.read(Table::Input, 0x1190, 4).values, (QList<quint16>{65535, 65535, 65535, 65535}));
        const QDateTime last(QDate(2026, 11, 15), QTime(23, 45), Qt::UTC);

        for (int g = 0; g < 2; ++g) {
            const int channels = g == 0 ? 12 : 8, length = 3 + 2 * channels;
            std::array<double, 12> previous{}; // running totals start above zero
            for (const int first : {1, 32768, 65532}) {
                meter.setHolding(0x104D, quint16(first));
                const QList<quint16> area = meter.read(Table::Input, g == 0 ? 0x2000 : 0x2100, 125).values;
                for (int n = first; (n - first + 1) * length <= 125; ++n) {
                    const QList<quint16> record = area.mid((n - first) * length, length);
                    if (n > 65535) {
                        QCOMPARE(record, QList<quint16>(length, 0));
                        continue;
                    }
                    const QDateTime stamp(QDate(2000 + (record[0] >> 8), record[0] & 0xFF, record[1] >> 8),
                                          QTime(record[1] & 0xFF, record[2] >> 8, record[2] & 0xFF), Qt::UTC);
                    QCOMPARE(stamp, last.addSecs(-15 * 60 * qint64(65535 - n)));
                    for (int k = 0; k < channels; ++k) {
                        const int code = meter.holding(quint16((g == 0 ? 0x1036 : 0x1045) + k));
                        const double value = floatAt(record, 3 + 2 * k);
                        // Totals (7 to 11) never fall, interval energies (12 to 14) never go negative.
                        const double floor = code >= 12 ? 0.0 : code >= 7 ? previous[k] : -INFINITY;
                        QVERIFY2(value >= floor, qPrintable(QStringLiteral("group %1, record %2, code %3: %4 below %5")
                                                               .arg(g + 1).arg(n).arg(code).arg(value).arg(floor)));
                        previous[k] = value;
                    }
                }
            }
        }

        // A clear or another channel count empties the group; the memory stays as large.
        QCOMPARE(meter.write(0x1033, {0x33}), ModbusError::None);
        QCOMPARE(meter.write(0x1043, {4}), ModbusError::None);
        QCOMPARE(meter.read(Table::Input, 0x1190, 4).values, (QList<quint16>{0, 0, 65535, 65535}));
    }
};

QTEST_GUILESS_MAIN(MeterModelTest)
#include "MeterModelTest.moc"
