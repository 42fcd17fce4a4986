// An independent Modbus master, mbpoll (libmodbus), reads and writes the simulated meter: it
// would not agree with the meter on a mistake that the meter and our master share.

#include "MeterLine.h"

#include <bit>

class MbpollInteropTest : public QObject, MeterLine {
    Q_OBJECT
private slots:
    void init()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("mbpoll")).isEmpty())
            QSKIP("mbpoll is not installed");
        QVERIFY(begin());
        port.close(); // mbpoll is the master here
    }

    void readsFloats()
    {
        const QMap<int, QString> values = poll({"-t", "3:float", "-r", "4224", "-c", "4"}); // phase voltages
        QCOMPARE(values.size(), 4);
        for (int reg = 0x1080; reg < 0x1088; reg += 2) {
            const auto bits = quint32(meter->input(quint16(reg))) | quint32(meter->input(quint16(reg + 1))) << 16;
            QCOMPARE_LE(std::abs(values.value(reg).toDouble() - std::bit_cast<float>(bits)), 1e-3);
        }
    }

    void writesRegisters()
    {
        poll({"-t", "4", "-r", "4176"}, {"9", "1"});
        QCOMPARE(meter->holding(0x1050), quint16(9));
        QCOMPARE(meter->holding(0x1051), quint16(1));
    }

private:
    // Runs mbpoll once against the meter; what it printed, register by register.
    QMap<int, QString> poll(const QStringList& options, const QStringList& writeValues = {})
    {
        QProcess mbpoll;
        const QStringList line{"-m", "rtu", "-a", "15", "-b", "19200", "-P", "none", "-s", "1", "-0", "-1", "-o", "1"};
        mbpoll.start(QStringLiteral("mbpoll"), line + options + QStringList{meter->slavePath()} + writeValues);
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
};

QTEST_GUILESS_MAIN(MbpollInteropTest)
#include "MbpollInteropTest.moc"
