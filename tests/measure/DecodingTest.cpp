// Meter floats: ordinary values, the special classes and their signs.
#include "measure/FloatDecoding.h"

#include <QTest>

#include <cmath>

Q_DECLARE_METATYPE(FloatBytes)

class DecodingTest : public QObject {
    Q_OBJECT
private slots:
    void decodes_data()
    {
        QTest::addColumn<FloatBytes>("bytes");
        QTest::addColumn<double>("expected");
        QTest::addColumn<bool>("negativeSign");
        QTest::newRow("1.0") << FloatBytes{0x00, 0x00, 0x3F, 0x80} << 1.0 << false;
        QTest::newRow("-2.0") << FloatBytes{0x00, 0x00, 0xC0, 0x00} << -2.0 << true;
        QTest::newRow("50.0 Hz") << FloatBytes{0x00, 0x00, 0x42, 0x48} << 50.0 << false;
        QTest::newRow("low word carries mantissa") << FloatBytes{0x40, 0x00, 0x43, 0x66} << 230.25 << false;
        QTest::newRow("+infinity shows 1") << FloatBytes{0x00, 0x00, 0x7F, 0x80} << 1.0 << false;
        QTest::newRow("-infinity shows -1") << FloatBytes{0x00, 0x00, 0xFF, 0x80} << -1.0 << true;
        QTest::newRow("not-a-number shows 0") << FloatBytes{0x00, 0x01, 0x7F, 0x80} << 0.0 << false;
        QTest::newRow("smallest subnormal") << FloatBytes{0x00, 0x01, 0x00, 0x00} << std::ldexp(1.0, -149) << false;
        QTest::newRow("largest subnormal") << FloatBytes{0xFF, 0xFF, 0x00, 0x7F}
                                           << std::ldexp(1.0, -126) - std::ldexp(1.0, -149) << false;
        QTest::newRow("+0") << FloatBytes{0x00, 0x00, 0x00, 0x00} << 0.0 << false;
        QTest::newRow("-0") << FloatBytes{0x00, 0x00, 0x80, 0x00} << 0.0 << true;
    }
    void decodes()
    {
        QFETCH(FloatBytes, bytes);
        QFETCH(double, expected);
        QFETCH(bool, negativeSign);
        double result = 12345.0;
        Trans_4Bytes_to_Float(bytes, result);
        QCOMPARE(result, expected);
        QCOMPARE(std::signbit(result), negativeSign);
    }

    void everyNormalValueIsExact()
    {
        // Against the machine's own reading of the same bits, over a spread of patterns.
        for (quint32 bits = 0x00800000; bits < 0x7F800000; bits += 0x00123457) {
            float machine = 0;
            std::memcpy(&machine, &bits, sizeof machine);
            const FloatBytes bytes{quint8(bits >> 8), quint8(bits), quint8(bits >> 24), quint8(bits >> 16)};
            double result = 0;
            Trans_4Bytes_to_Float(bytes, result);
            QCOMPARE(result, double(machine));
        }
    }
};

QTEST_GUILESS_MAIN(DecodingTest)
#include "DecodingTest.moc"
