// An independent Modbus master, mbpoll (libmodbus), reads and writes the simulated meter.

#include "SimulatedMeterFixture.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <bit>

class MbpollInteropTest : public QObject, SimulatedMeterFixture {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        m_mbpoll = QStandardPaths::findExecutable(QStringLiteral("mbpoll"));
        if (m_mbpoll.isEmpty())
            QSKIP("mbpoll is not installed");
    }
    void init()
    {
        QVERIFY(begin());
        line.reset(); // mbpoll is the master here
    }
    void cleanup() { end(); }

    void readsHoldingRegisters()
    {
        const QMap<int, QString> values = poll({"-t", "4:hex", "-r", "4096", "-c", "10"});
        QCOMPARE(values.size(), 10);
        for (int reg = 0x1000; reg < 0x100A; ++reg)
            QCOMPARE(values.value(reg).toUShort(nullptr, 16), meter->holding(quint16(reg)));
    }

    void readsMeasurementFloats()
    {
        const QMap<int, QString> values = poll({"-t", "3:float", "-r", "4224", "-c", "4"});
        QCOMPARE(values.size(), 4);
        for (int reg = 0x1080; reg < 0x1088; reg += 2) {
            const auto bits = quint32(meter->input(quint16(reg))) | quint32(meter->input(quint16(reg + 1))) << 16;
            QCOMPARE_LE(std::abs(values.value(reg).toDouble() - std::bit_cast<float>(bits)), 1e-3);
        }
    }

    void writesAHoldingRegister()
    {
        poll({"-t", "4", "-r", "4176"}, {"9"});
        QCOMPARE(meter->holding(0x1050), quint16(9));
    }

private:
    // Runs mbpoll once against the meter; what it printed, register by register.
    QMap<int, QString> poll(const QStringList& options, const QStringList& writeValues = {})
    {
        QProcess mbpoll;
        mbpoll.start(m_mbpoll, QStringList{"-m", "rtu", "-a", "15", "-b", "19200", "-P", "none", "-s", "1",
                                           "-0", "-1", "-o", "1"} + options + QStringList{path} + writeValues);
        const bool finished = mbpoll.waitForFinished(10000);
        const QString output = QString::fromLocal8Bit(mbpoll.readAllStandardOutput());
        if (!finished || mbpoll.exitCode() != 0)
            qWarning().noquote() << output << mbpoll.readAllStandardError();
        QMap<int, QString> values;
        static const QRegularExpression row(QStringLiteral(R"(^\[(\d+)\]:\s+(\S+))"), QRegularExpression::MultilineOption);
        for (const QRegularExpressionMatch& match : row.globalMatch(output))
            values.insert(match.captured(1).toInt(), match.captured(2));
        return values;
    }

    QString m_mbpoll;
};

QTEST_GUILESS_MAIN(MbpollInteropTest)
#include "MbpollInteropTest.moc"
