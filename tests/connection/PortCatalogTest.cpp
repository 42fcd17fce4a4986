// The port list built from the ports the system reports, and built again when it is opened.
#include "connection/PortCatalog.h"

#include <QTest>

namespace {

// "ttyUSB0" or "ttyUSB0:FT232R USB UART", as the system would report /dev/ttyUSB0.
QList<FoundPort> Found(const QStringList& ports)
{
    QList<FoundPort> found;
    for (const QString& port : ports) {
        const QString name = port.section(QLatin1Char(':'), 0, 0);
        found.append({QStringLiteral("/dev/") + name, name, port.section(QLatin1Char(':'), 1), QString(), QString()});
    }
    return found;
}

// The labels past the numbered ports.
QStringList LabelsAfterNumbered(const QList<PortEntry>& entries)
{
    QStringList labels;
    for (const PortEntry& entry : entries.mid(PortCatalog::kNumberedPorts))
        labels.append(entry.label);
    return labels;
}

const QString kSim = QStringLiteral("Simulated meter");

} // namespace

class PortCatalogTest : public QObject {
    Q_OBJECT
private slots:
    void foundPortsFollowTheNumberedOnes_data()
    {
        QTest::addColumn<QStringList>("found");
        QTest::addColumn<QStringList>("labels");
        QTest::newRow("nothing found") << QStringList() << QStringList{kSim};
        QTest::newRow("with a description") << QStringList{"ttyUSB0:FT232R USB UART"}
                                            << QStringList{"ttyUSB0 — FT232R USB UART", kSim};
        QTest::newRow("without a description") << QStringList{"ttyACM0"} << QStringList{"ttyACM0", kSim};
        QTest::newRow("in device order, each once") << QStringList{"ttyUSB1", "ttyACM0:Probe", "ttyUSB1"}
                                                    << QStringList{"ttyACM0 — Probe", "ttyUSB1", kSim};
        QTest::newRow("numbered devices not again") << QStringList{"ttyS0", "ttyS14:16550A"} << QStringList{kSim};
    }
    void foundPortsFollowTheNumberedOnes()
    {
        QFETCH(QStringList, found);
        QFETCH(QStringList, labels);
        const QList<PortEntry> entries = PortCatalog::Build(Found(found));
        // Each numbered entry says which device it opens, its number first.
        QCOMPARE(entries.at(0).label, QStringLiteral("1 — /dev/ttyS0"));
        QCOMPARE(entries.at(14).label, QStringLiteral("15 — /dev/ttyS14"));
        QCOMPARE(LabelsAfterNumbered(entries), labels);
        QVERIFY(entries.last().simulated);
    }

    // The list is built from `before`, with `named` added by hand and `chosen` picked, then
    // built again on the ports found `now`.
    void refreshingKeepsTheChoice_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("named");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QStringList>("now");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QString>("chosenLabel");
        const QString gateway = QStringLiteral("tcp://gw:4001");
        QTest::newRow("a new adapter comes before the simulated meter")
            << QStringList{"ttyUSB1"} << QStringList{gateway} << gateway << QStringList{"ttyUSB0:FT232R", "ttyUSB1"}
            << QStringList{"ttyUSB0 — FT232R", "ttyUSB1", kSim, gateway} << gateway;
        QTest::newRow("the chosen adapter stays while unplugged")
            << QStringList{"ttyUSB1"} << QStringList() << QStringLiteral("/dev/ttyUSB1") << QStringList()
            << QStringList{kSim, "ttyUSB1"} << QStringLiteral("ttyUSB1");
        QTest::newRow("an unplugged adapter not chosen goes")
            << QStringList{"ttyUSB1"} << QStringList{gateway} << QStringLiteral("3") << QStringList()
            << QStringList{kSim, gateway} << QStringLiteral("3 — /dev/ttyS2");
        QTest::newRow("a device named by hand, once found, moves to the found ones")
            << QStringList() << QStringList() << QStringLiteral("/dev/ttyUSB1") << QStringList{"ttyUSB1:Probe"}
            << QStringList{"ttyUSB1 — Probe", kSim} << QStringLiteral("ttyUSB1 — Probe");
    }
    void refreshingKeepsTheChoice()
    {
        QFETCH(QStringList, before);
        QFETCH(QStringList, named);
        QFETCH(QString, chosen);
        QFETCH(QStringList, now);
        QFETCH(QStringList, labels);
        QFETCH(QString, chosenLabel);
        QList<PortEntry> entries = PortCatalog::Build(Found(before));
        QString error;
        for (const QString& option : named)
            QVERIFY(PortCatalog::Locate(entries, option, &error));
        const std::optional<int> index = PortCatalog::Locate(entries, chosen, &error);
        QVERIFY(index);
        const QList<PortEntry> refreshed = PortCatalog::Refresh(entries, *index, Found(now));
        QCOMPARE(LabelsAfterNumbered(refreshed), labels);
        const int chosenNow = PortCatalog::IndexOf(refreshed, entries.at(*index));
        QVERIFY(chosenNow >= 0);
        QCOMPARE(refreshed.at(chosenNow).label, chosenLabel);
    }
};

QTEST_GUILESS_MAIN(PortCatalogTest)
#include "PortCatalogTest.moc"
