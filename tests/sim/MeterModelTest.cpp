// The meter's register image: a consistent three-phase system, reproducible from its seed,
// energy counters, clock, checked writes and load-profile records.

#include "MeterLineClient.h"

#include "sim/MeterModel.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace sim;

namespace {

const QDateTime kSunday = QDateTime(QDate(2026, 11, 15), QTime(23, 59, 7), Qt::UTC);

MeterModel frozenMeter(quint64 seed = 42)
{
    return MeterModel(seed, kSunday, SimClock::Mode::Frozen);
}

// The input floats from 0x107E on, one per register pair: index (reg - 0x107E) / 2.
QList<float> measurementFloats(const MeterModel& meter)
{
    const QList<quint16> words = meter.read(Table::Input, 0x107E, 0x74).values;
    QList<float> floats;
    for (qsizetype i = 0; i + 1 < words.size(); i += 2)
        floats.append(MeterLineClient::floatAt(words, i));
    return floats;
}

float inputFloat(const MeterModel& meter, quint16 reg)
{
    return MeterLineClient::floatAt(meter.read(Table::Input, reg, 2).values, 0);
}

float energySum(const MeterModel& meter, int kind)
{
    float sum = 0;
    for (int phase = 0; phase < 3; ++phase)
        sum += inputFloat(meter, static_cast<quint16>(0x10D4 + 6 * kind + 2 * phase));
    return sum;
}

} // namespace

class MeterModelTest : public QObject {
    Q_OBJECT
private slots:
    void servesAConsistentThreePhaseSystem()
    {
        const MeterModel meter = frozenMeter();
        const QList<float> f = measurementFloats(meter);
        const auto at = [&](int reg) { return double(f[(reg - 0x107E) / 2]); };
        QVERIFY(std::abs(at(0x107E) - 50.0) < 0.1);
        double p = 0, s = 0;
        for (int phase = 0; phase < 3; ++phase) {
            const double v = at(0x1080 + 2 * phase), next = at(0x1080 + 2 * ((phase + 1) % 3));
            const double i = at(0x1090 + 2 * phase), pf = at(0x10B0 + 2 * phase);
            QVERIFY(v > 220 && v < 240);
            QVERIFY(i > 1 && i < 12);
            QVERIFY(pf > 0.7 && pf < 1.0);
            QCOMPARE_LE(std::abs(at(0x1088 + 2 * phase) - std::sqrt(v * v + next * next + v * next)), 1e-3);
            QCOMPARE_LE(std::abs(at(0x1098 + 2 * phase) - v * i * pf / 1000), 1e-5);
            QCOMPARE_LE(std::abs(at(0x10A0 + 2 * phase) - v * i * std::sqrt(1 - pf * pf) / 1000), 1e-4);
            QCOMPARE_LE(std::abs(at(0x10A8 + 2 * phase) - v * i / 1000), 1e-5);
            QCOMPARE(at(0x10B8 + 2 * phase), 120.0 * phase);
            QCOMPARE_LE(std::abs(at(0x10BE + 2 * phase) - 120.0 * phase - std::acos(pf) * 180 / std::numbers::pi), 1e-3);
            p += at(0x1098 + 2 * phase);
            s += at(0x10A8 + 2 * phase);
        }
        QCOMPARE_LE(std::abs(at(0x109E) - p), 1e-4);
        QCOMPARE_LE(std::abs(at(0x10AE) - s), 1e-4);
        QCOMPARE_LE(std::abs(at(0x10B6) - p / s), 1e-5);
        QVERIFY(std::abs(at(0x108E) - 230 * std::sqrt(3.0)) < 10);
        QCOMPARE(meter.input(0x10C4), quint16(5));
        QCOMPARE(meter.input(0x10C5), quint16(1));
    }

    void sameSeedAndMomentServeTheSameRegisters()
    {
        MeterModel first = frozenMeter(7), second = frozenMeter(7);
        for (quint16 start : {0x1000, 0x107E, 0x1180, 0x2000, 0x2100}) {
            const quint16 count = start == 0x1000 ? 0x14 : start == 0x107E ? 0x74 : start == 0x1180 ? 0x16 : 125;
            QCOMPARE(first.read(Table::Input, start, count).values, second.read(Table::Input, start, count).values);
        }
        QVERIFY(measurementFloats(first) != measurementFloats(frozenMeter(8)));
        first.clock().advance(1.0);
        QVERIFY(measurementFloats(first) != measurementFloats(second));
    }

    void energyRisesWithPowerAndClears()
    {
        MeterModel meter = frozenMeter();
        const float delivered = energySum(meter, 0), received = energySum(meter, 1), apparent = energySum(meter, 4);
        const double kw = inputFloat(meter, 0x109E);
        meter.clock().advance(3600);
        const double gained = energySum(meter, 0) - delivered;
        QVERIFY2(gained > 0.8 * kw && gained < 1.2 * kw, qPrintable(QString::number(gained)));
        QCOMPARE(energySum(meter, 1), received);
        QVERIFY(energySum(meter, 4) - apparent > gained);

        QCOMPARE(meter.write(0x1012, {0x55}), ModbusError::None);
        QCOMPARE(meter.holding(0x1012), quint16(0));
        for (int kind = 0; kind < 5; ++kind)
            QCOMPARE(energySum(meter, kind), 0.0f);
        meter.clock().advance(60);
        QVERIFY(energySum(meter, 0) > 0);
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

    void writesAreCheckedWhole_data()
    {
        QTest::addColumn<quint16>("start");
        QTest::addColumn<QList<quint16>>("values");
        QTest::addColumn<ModbusError>("error");
        QTest::newRow("address 0") << quint16(0x1000) << QList<quint16>{0} << ModbusError::IllegalDataValue;
        QTest::newRow("baud code 3") << quint16(0x1000) << QList<quint16>{20, 3} << ModbusError::IllegalDataValue;
        QTest::newRow("13 channels") << quint16(0x1034) << QList<quint16>{13} << ModbusError::IllegalDataValue;
        QTest::newRow("scroll time 2") << quint16(0x1050) << QList<quint16>{2} << ModbusError::IllegalDataValue;
        QTest::newRow("past the block") << quint16(0x10FF) << QList<quint16>{1, 1} << ModbusError::IllegalDataAddress;
        QTest::newRow("input-only register") << quint16(0x2000) << QList<quint16>{1} << ModbusError::IllegalDataAddress;
        QTest::newRow("PT ratio 2") << quint16(0x4492) << QList<quint16>{0, 0x42C8} << ModbusError::None;
    }
    void writesAreCheckedWhole()
    {
        QFETCH(quint16, start);
        QFETCH(QList<quint16>, values);
        QFETCH(ModbusError, error);
        MeterModel meter = frozenMeter();
        const QList<quint16> before = meter.read(Table::Holding, 0x1000, 1).values;
        QCOMPARE(meter.write(start, values), error);
        if (error == ModbusError::None)
            QCOMPARE(meter.read(Table::Holding, start, quint16(values.size())).values, values);
        else
            QCOMPARE(meter.read(Table::Holding, 0x1000, 1).values, before);
    }

    void recordsFollowTheLoadAtIntervalSpacing()
    {
        MeterModel meter = frozenMeter();
        QCOMPARE(meter.input(0x1190), quint16(1440));
        QCOMPARE(meter.input(0x1191), quint16(960));
        QCOMPARE(meter.input(0x1192), quint16(65536 / 38));
        QCOMPARE(meter.read(Table::Input, 0x1194, 2).values, (QList<quint16>{1, 1440}));
        meter.setHolding(0x104D, 1439);
        const QList<quint16> area = meter.read(Table::Input, 0x2000, 125).values;
        const qsizetype length = 3 + 2 * 8; // default codes 1, 2, 3, 4, 5, 7, 9, 11
        // The last record ends on the quarter hour before the clock (23:59:07), the one
        // before a quarter hour earlier.
        QCOMPARE(area.mid(0, 3), (QList<quint16>{(26 << 8) | 11, (15 << 8) | 23, (30 << 8) | 0}));
        QCOMPARE(area.mid(length, 3), (QList<quint16>{(26 << 8) | 11, (15 << 8) | 23, (45 << 8) | 0}));
        const auto value = [&](int record, int channel) { return double(MeterLineClient::floatAt(area, record * length + 3 + 2 * channel)); };
        QVERIFY(std::abs(value(1, 0) - 230) < 5);                   // Vln avg
        QVERIFY(value(1, 1) > 1 && value(1, 1) < 12);               // I avg
        QVERIFY(value(1, 2) > 0 && value(1, 4) > value(1, 2));      // kW avg below kVA avg
        QVERIFY(value(1, 5) > value(0, 5));                         // kWh+ total rises
        QVERIFY(std::abs((value(1, 5) - value(0, 5)) - value(1, 2) / 4) < 1e-2); // by kW × ¼ h
        QVERIFY(std::all_of(area.cbegin() + 2 * length, area.cend(), [](quint16 v) { return v == 0; }));

        // Group 2's last record covers the same quarter hour: codes 6, 12, 13, 14.
        meter.setHolding(0x104D, 960);
        const QList<quint16> group2 = meter.read(Table::Input, 0x2100, 11).values;
        const auto interval = [&](int channel) { return double(MeterLineClient::floatAt(group2, 3 + 2 * channel)); };
        QCOMPARE(group2.mid(0, 3), area.mid(length, 3));
        QVERIFY(std::abs(interval(1) - value(1, 2) / 4) < 1e-4);        // kWh = kW × ¼ h
        QVERIFY(std::abs(interval(0) - interval(1) / interval(3)) < 1e-5); // PF = kWh / kVAh
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
        QCOMPARE(meter.input(0x1191), quint16(0));
        QCOMPARE(meter.input(0x1193), quint16(65536 / 14));
        meter.clock().advance(15 * 60);
        QCOMPARE(meter.read(Table::Input, 0x1190, 2).values, (QList<quint16>{1, 1}));
    }
};

QTEST_GUILESS_MAIN(MeterModelTest)
#include "MeterModelTest.moc"
