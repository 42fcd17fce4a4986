// The checks of the typed setting fields, and the pure side of the setting writes: what each
// choice turns into before it goes on the wire.
#include "settings/InputChecks.h"
#include "settings/SettingWrites.h"

#include <QTest>

class InputChecksTest : public QObject {
    Q_OBJECT
private slots:
    void typedFields_data()
    {
        QTest::addColumn<TypedField>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        const auto ct = TypedField::CtRatio;
        const auto pt = TypedField::PtRatio;
        const auto add = TypedField::NewAddress;
        const auto sel = TypedField::TalkAddress;
        QTest::newRow("ct 0 out of range") << ct << "0" << false;
        QTest::newRow("ct 2400") << ct << "2400" << true;
        QTest::newRow("ct 2400.5 out of range") << ct << "2400.5" << false;
        QTest::newRow("ct 12.5 not whole") << ct << "12.5" << false;
        QTest::newRow("ct abc not numeric") << ct << "abc" << false;
        QTest::newRow("ct empty") << ct << "" << false;
        QTest::newRow("new address 0") << add << "0" << false;
        QTest::newRow("new address 250") << add << "250" << true;
        QTest::newRow("new address 251") << add << "251" << false;
        QTest::newRow("talk address 0 is taken") << sel << "0" << true;
        QTest::newRow("talk address -1") << sel << "-1" << false;
        QTest::newRow("talk address 12.5") << sel << "12.5" << false;
        QTest::newRow("talk address x") << sel << "x" << false;
        QTest::newRow("talk address empty") << sel << "" << false;
        QTest::newRow("pt 0.1") << pt << "0.1" << true;
        QTest::newRow("pt 6250") << pt << "6250" << true;
        QTest::newRow("pt 0.05") << pt << "0.05" << false;
        QTest::newRow("pt 6250.1") << pt << "6250.1" << false;
        QTest::newRow("pt fraction") << pt << "120.55" << true;
        QTest::newRow("pt empty") << pt << "" << false;
    }
    void typedFields()
    {
        QFETCH(TypedField, field);
        QFETCH(QString, text);
        QFETCH(bool, accepted);
        const FieldCheck check = CheckTypedField(field, text);
        QCOMPARE(check.accepted, accepted);
        const QString message = field == TypedField::CtRatio ? "CT Ratio Range : 1~2400！"
            : field == TypedField::PtRatio                   ? "PT_Ratio Range : 0.1~6250！"
                                                             : "Address Range : 1~250！";
        QCOMPARE(check.message, accepted ? QString() : message);
    }

    // Values a signed register cannot hold, and ratios that make no single, are never written.
    void unwritableChoices()
    {
        QCOMPARE(SettingWrites::PtRatio1(3276.7)->values, QList<quint16>{32767});
        QVERIFY(!SettingWrites::PtRatio1(3276.8));
        QVERIFY(!SettingWrites::PtRatio1(6250));
        QVERIFY(!SettingWrites::WholeNumber(0x1022, 32767.5));
        QVERIFY(!SettingWrites::PtRatio2(11000, 0));
        QVERIFY(!SettingWrites::PtRatio2(0, 110));
    }
};

QTEST_GUILESS_MAIN(InputChecksTest)
#include "InputChecksTest.moc"
