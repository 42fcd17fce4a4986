// The one set of rules by which the tool reads numbers the operator typed or picked.
#include "ports/TextNumbers.h"

#include <QLocale>
#include <QTest>

class TextNumbersTest : public QObject {
    Q_OBJECT
private slots:
    void leadingValue_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value");
        QTest::newRow("number then letters") << " 12.5abc" << 12.5;
        QTest::newRow("sign and exponent") << "-3e2x" << -300.0;
        QTest::newRow("point first") << ".5" << 0.5;
        QTest::newRow("decimal comma ends it") << "120,5" << 120.0;
        QTest::newRow("no number at the start") << "abc1" << 0.0;
        QTest::newRow("empty") << "" << 0.0;
    }
    void leadingValue()
    {
        QFETCH(QString, text);
        QFETCH(double, value);
        QCOMPARE(LeadingValue(text), value);
    }

    // Halves go to the even neighbour; what a signed register cannot hold is refused, not
    // wrapped or clamped (a PT ratio 1 of 3276.8 is 32768 tenths: one too many).
    void wholeNumberOf_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("whole"); // -1 for none
        QTest::newRow("blanks around") << " 7 " << 7;
        QTest::newRow("half down to even") << "2.5" << 2;
        QTest::newRow("half up to even") << "3.5" << 4;
        QTest::newRow("largest") << "32767.4" << 32767;
        QTest::newRow("one past the largest") << "32767.5" << -1;
        QTest::newRow("letters after the number") << "12a" << -1;
        QTest::newRow("comma in a point locale") << "1,5" << -1;
        QTest::newRow("empty") << "" << -1;
    }
    void wholeNumberOf()
    {
        QFETCH(QString, text);
        QFETCH(int, whole);
        const auto result = WholeNumberOf(text);
        QCOMPARE(result.has_value(), whole != -1);
        if (result)
            QCOMPARE(int(*result), whole);
    }

    // A comma is a decimal separator only where the locale writes decimals with it; a point
    // is one everywhere; a group separator makes the text no number at all.
    void numericValueFollowsTheLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value"); // -1 for not numeric
        QTest::newRow("en point") << "en_US" << "120.5" << 120.5;
        QTest::newRow("en comma") << "en_US" << "120,5" << -1.0;
        QTest::newRow("en grouped") << "en_US" << "1,500" << -1.0;
        QTest::newRow("de comma") << "de_DE" << "120,5" << 120.5;
        QTest::newRow("de point") << "de_DE" << "120.5" << 120.5;
        QTest::newRow("de grouped") << "de_DE" << "1.500,0" << -1.0;
        QTest::newRow("de exponent") << "de_DE" << "1e3" << 1000.0;
    }
    void numericValueFollowsTheLocale()
    {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(double, value);
        QLocale::setDefault(QLocale(locale));
        const auto result = NumericValue(text);
        QLocale::setDefault(QLocale::c());
        QCOMPARE(result.value_or(-1.0), value);
    }

    void negativeHalvesAndTheLowestValue()
    {
        QCOMPARE(WholeNumber16(-2.5), std::optional<qint16>(-2));
        QCOMPARE(WholeNumber16(-32768.5), std::optional<qint16>(-32768));
        QCOMPARE(WholeNumber16(-32769.0), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TextNumbersTest)
#include "TextNumbersTest.moc"
