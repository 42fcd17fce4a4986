// A meter's configuration file: a reading saved and read back, and the file mistakes refused
// before anything is sent, each naming its field.
#include "settings/MeterConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace {

MeterReading Reading()
{
    MeterReading r;
    r.slaveAddress = 15;
    r.baudRateCode = 2;
    r.stopBitCode = 1;
    r.ctRatioRegister = 5;
    r.ptRatio1Register = 1205;
    r.ptRatio2Register = 1.5;
    r.scrollTime = 5;
    r.wiringSetting = 5;
    r.displayItems.fill(101);
    r.loadProfile[0] = {8, 15, {1, 2, 3, 4, 5, 7, 9, 11, 6, 8, 10, 12}, 0, 0};
    r.loadProfile[1] = {4, 30, {6, 12, 13, 14, 1, 2, 3, 4}, 0, 0};
    return r;
}

const ConfigurationSource kSource{QStringLiteral("QX5820  SN004217"), QDateTime(QDate(2026, 11, 21), QTime(13, 5)),
                                  QStringLiteral("1.0")};

// `at` with the value at `path` ("lp_groups.0.codes.3") replaced, or removed for an undefined value.
QJsonValue Changed(const QJsonValue& at, QStringList path, const QJsonValue& value)
{
    const QString key = path.takeFirst();
    if (at.isArray()) {
        QJsonArray array = at.toArray();
        array[key.toInt()] = path.isEmpty() ? value : Changed(array.at(key.toInt()), path, value);
        return array;
    }
    QJsonObject object = at.toObject();
    if (path.isEmpty() && value.isUndefined())
        object.remove(key);
    else
        object[key] = path.isEmpty() ? value : Changed(object.value(key), path, value);
    return object;
}

} // namespace

class MeterConfigurationTest : public QObject {
    Q_OBJECT
private slots:
    void readingRoundTrip()
    {
        const MeterConfiguration saved = ConfigurationOf(Reading(), kSource);
        const ParsedConfiguration loaded = ParseConfiguration(ConfigurationJson(saved));
        QVERIFY2(loaded.configuration, qPrintable(loaded.error));
        QCOMPARE(*loaded.configuration, saved);

        // The meter as saved matches; one with another CT ratio differs there alone.
        MeterReading changed = Reading();
        changed.ctRatioRegister = 200;
        QStringList differing;
        for (const SettingComparison& c : Compare(saved, changed)) {
            if (c.differs)
                differing << QStringLiteral("%1: %2 | %3").arg(SettingName(c.item.setting), c.file, c.meter);
        }
        QCOMPARE(differing, QStringList{"CT ratio: 5 | 200"});
        for (const SettingComparison& c : Compare(saved, Reading()))
            QVERIFY2(!c.differs, qPrintable(SettingName(c.item.setting)));
    }

    void mistakesRefused_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QJsonValue>("value"); // undefined: the field removed
        QTest::addColumn<QString>("refusal");
        const QJsonValue removed(QJsonValue::Undefined);
        QTest::newRow("version") << "format" << QJsonValue(2) << "format: version 2 is not";
        QTest::newRow("no version") << "format" << removed << "format: missing";
        QTest::newRow("no communication") << "communication" << removed << "communication: missing";
        QTest::newRow("address range") << "communication.address" << QJsonValue(0) << "communication.address: Address Range : 1~250！";
        QTest::newRow("baud choice") << "communication.baud" << QJsonValue(4800) << "communication.baud: 4800 is none of 9600, 19200";
        QTest::newRow("ct ratio text") << "ct_ratio" << QJsonValue("5") << "ct_ratio: not a number";
        QTest::newRow("ct ratio whole") << "ct_ratio" << QJsonValue(12.5) << "ct_ratio: CT Ratio Range : 1~2400！";
        QTest::newRow("pt ratio range") << "pt_ratio_1" << QJsonValue(6250.1) << "pt_ratio_1: PT_Ratio Range : 0.1~6250！";
        QTest::newRow("pt ratio register") << "pt_ratio_1" << QJsonValue(5000) << "pt_ratio_1: PT ratio 1 above 3276.7";
        QTest::newRow("pt ratio 2 ratio") << "pt_ratio_2.ratio" << QJsonValue(3) << "pt_ratio_2.ratio: 3 is not primary / secondary";
        QTest::newRow("pt ratio 2 secondary") << "pt_ratio_2.secondary" << removed << "pt_ratio_2.secondary: missing";
        QTest::newRow("wiring word") << "wiring" << QJsonValue("3P5W") << "wiring: \"3P5W\" is none of Auto";
        QTest::newRow("scroll time") << "scroll_time" << QJsonValue(2) << "scroll_time: 2 is none of 3,";
        QTest::newRow("display items count") << "display_items" << QJsonValue(QJsonArray{101}) << "display_items: 1 entries where 50 belong";
        QTest::newRow("display item code") << "display_items.4" << QJsonValue(99) << "display_items[4]: 99 is none of";
        QTest::newRow("group not an object") << "lp_groups.1" << QJsonValue(4) << "lp_groups[1]: not an object";
        QTest::newRow("group channels") << "lp_groups.1.channels" << QJsonValue(9) << "lp_groups[1].channels: 9 is none of";
        QTest::newRow("group interval") << "lp_groups.0.interval" << removed << "lp_groups[0].interval: missing";
        QTest::newRow("group code") << "lp_groups.0.codes.3" << QJsonValue(15) << "lp_groups[0].codes[3]: 15 is none of";
        QTest::newRow("group codes count") << "lp_groups.1.codes" << QJsonValue(QJsonArray{1, 2}) << "lp_groups[1].codes: 2 entries where 8 belong";
    }
    void mistakesRefused()
    {
        QFETCH(QString, path);
        QFETCH(QJsonValue, value);
        QFETCH(QString, refusal);
        const QJsonValue file = QJsonDocument::fromJson(ConfigurationJson(ConfigurationOf(Reading(), kSource))).object();
        const QByteArray changed = QJsonDocument(Changed(file, path.split(QLatin1Char('.')), value).toObject()).toJson();
        const ParsedConfiguration parsed = ParseConfiguration(changed);
        QVERIFY(!parsed.configuration);
        QVERIFY2(parsed.error.startsWith(refusal), qPrintable(parsed.error));
    }
};

QTEST_GUILESS_MAIN(MeterConfigurationTest)
#include "MeterConfigurationTest.moc"
