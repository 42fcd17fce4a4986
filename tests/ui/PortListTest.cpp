// The window's port list: the "Network..." entry, the list found again as it opens, and the
// options the program starts the window with.
#include "session/MeterSession.h"
#include "ui/MainForm.h"
#include "ui/PortListBinding.h"
#include "ui/WindowOptions.h"

#include <QApplication>
#include <QComboBox>
#include <QInputDialog>
#include <QMessageBox>
#include <QProcess>
#include <QtTest>

#include <functional>

namespace {

const QString kNetwork = QStringLiteral("Network...");

// Runs `action`, answering the dialogs it opens: each address dialog with the next of `inputs`
// (none left: Cancel), each message box with OK. Gives the messages shown.
QStringList Answering(const QStringList& inputs, const std::function<void()>& action)
{
    QStringList messages;
    qsizetype next = 0;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (auto* dialog = qobject_cast<QInputDialog*>(modal)) {
            if (next < inputs.size()) {
                dialog->setTextValue(inputs.at(next++));
                dialog->accept();
            } else {
                dialog->reject();
            }
        } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            messages.append(box->text());
            box->accept();
        }
    });
    answer.start(10);
    action();
    return messages;
}

// The list shows the connection's entries, in the same order, then "Network...", and the
// chosen entry is the connection's port.
void CheckInStep(MainForm& form)
{
    const Connection& connection = form.session().connection;
    QStringList labels;
    for (const PortEntry& entry : connection.PortEntries())
        labels.append(entry.label);
    QStringList items;
    for (int i = 0; i < form.Combo_CommPort->count(); ++i)
        items.append(form.Combo_CommPort->itemText(i));
    QCOMPARE(items, labels + QStringList{kNetwork});
    QCOMPARE(connection.PortNumber(), form.Combo_CommPort->currentIndex() + 1);
}

} // namespace

class PortListTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_form = std::make_unique<MainForm>();
        m_form->Form_Load();
    }
    void cleanup() { m_form.reset(); }

    // A malformed address is explained and asked again; the entry takes the place of
    // "Network...", which stays last; the same address again chooses the same entry; Cancel
    // goes back to the port chosen before.
    void networkAddsAndChoosesAnAddress()
    {
        QComboBox* list = m_form->Combo_CommPort;
        const int network = list->count() - 1;
        QCOMPARE(list->itemText(network), kNetwork);
        const QStringList messages =
            Answering({QStringLiteral("gw"), QStringLiteral(" 10.0.0.5:4001 ")}, [&] { list->setCurrentIndex(network); });
        QCOMPARE(messages, QStringList{"\"tcp://gw\" is not a network address of the form tcp://host:port"});
        QCOMPARE(list->currentIndex(), network);
        QCOMPARE(list->currentText(), QStringLiteral("tcp://10.0.0.5:4001"));
        QCOMPARE(m_form->session().connection.PortEntries().at(network).device, QStringLiteral("tcp://10.0.0.5:4001"));
        CheckInStep(*m_form);

        list->setCurrentIndex(4);
        Answering({QStringLiteral("tcp://10.0.0.5:4001")}, [&] { list->setCurrentIndex(list->count() - 1); });
        QCOMPARE(list->currentIndex(), network);
        QCOMPARE(list->count(), network + 2);

        list->setCurrentIndex(4);
        Answering({}, [&] { list->setCurrentIndex(list->count() - 1); });
        QCOMPARE(list->currentIndex(), 4);
        QCOMPARE(list->count(), network + 2);
        CheckInStep(*m_form);
    }

    // Opening the list finds the ports again: an adapter plugged in meanwhile is listed before
    // the simulated meter, moving the entries after it; the address added by hand stays, and
    // so does the choice.
    void openingTheListFindsThePortsAgain()
    {
        QComboBox* list = m_form->Combo_CommPort;
        QList<FoundPort> found;
        m_form->portList().findPorts = [&found] { return found; };
        Answering({QStringLiteral("gw:4001")}, [&] { list->setCurrentIndex(list->count() - 1); });
        const QList<FoundPort> plugged{{"/dev/ttyUSB0", "ttyUSB0", "FT232R USB UART", "FTDI", "A50285BI"}};
        for (const QList<FoundPort>& now : {plugged, QList<FoundPort>()}) {
            found = now;
            list->showPopup();
            list->hidePopup();
            QCOMPARE(list->findText(QStringLiteral("ttyUSB0 — FT232R USB UART")) >= 0, !now.isEmpty());
            QCOMPARE(list->currentText(), QStringLiteral("tcp://gw:4001"));
            CheckInStep(*m_form);
        }
    }

    void readingOptions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("text");          // part of what is printed
        QTest::addColumn<QStringList>("options");   // port, baud rate, stop bits, address
        const auto refused = [](const char* name, const QStringList& arguments, const QString& text) {
            QTest::newRow(name) << arguments << 2 << text << QStringList();
        };
        refused("address too high", {"--address", "251"}, "--address: \"251\" is not 1 to 250");
        refused("network address without a port", {"--port", "tcp://gw"}, "--port: \"tcp://gw\" is not a network");
        refused("two ports", {"--simulated-meter", "--port", "3"}, "--simulated-meter and --port 3 name two ports");
        QTest::newRow("all four") << QStringList{"--port", "tcp://gw:4001", "--baud", "9600", "--stop-bits", "2",
                                                 "--address", "7"}
                                  << 0 << QString() << QStringList{"tcp://gw:4001", "9600", "2", "7"};
        QTest::newRow("address beyond the list") << QStringList{"--address", "250"} << 0 << QString()
                                                 << QStringList{"", "", "", "250"};
        QTest::newRow("simulated meter") << QStringList{"--simulated-meter"} << 0 << QString()
                                         << QStringList{"sim", "", "", ""};
        QTest::newRow("Qt's platform") << QStringList{"-platform", "offscreen", "--port", "sim"} << 0 << QString()
                                       << QStringList{"sim", "", "", ""};
    }
    void readingOptions()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, text);
        QFETCH(QStringList, options);
        const WindowStart start = ReadWindowOptions(QStringList{"qx5820-setting"} + arguments);
        QCOMPARE(start.status, status);
        QVERIFY2(start.text.contains(text), qPrintable(start.text));
        QCOMPARE(start.options.has_value(), !options.isEmpty());
        if (start.options) {
            const WindowOptions& o = *start.options;
            QCOMPARE((QStringList{o.port, o.baudRate, o.stopBits, o.address}), options);
        }
    }

    void optionsPickAsTheOperatorWould()
    {
        QString error;
        QVERIFY(ApplyWindowOptions(*m_form, {QStringLiteral("tcp://gw:4001"), QStringLiteral("9600"),
                                             QStringLiteral("2"), QStringLiteral("7")}, &error));
        const Connection& connection = m_form->session().connection;
        QCOMPARE(m_form->Combo_CommPort->currentText(), QStringLiteral("tcp://gw:4001"));
        CheckInStep(*m_form);
        QCOMPARE(connection.Settings(), QStringLiteral("9600,n,8,2"));
        QCOMPARE(connection.link.ModbusAddress, qint16(7));
        // Options left out keep the starting choices.
        QVERIFY(ApplyWindowOptions(*m_form, {QStringLiteral("sim"), {}, {}, {}}, &error));
        QCOMPARE(m_form->Combo_CommPort->currentText(), QStringLiteral("Simulated meter"));
        QCOMPARE(connection.Settings(), QStringLiteral("9600,n,8,2"));
        // An address the list does not hold is typed into it.
        QVERIFY(ApplyWindowOptions(*m_form, {{}, {}, {}, QStringLiteral("250")}, &error));
        QCOMPARE(m_form->Combo_Modbus_add_sel->currentText(), QStringLiteral("250"));
        QCOMPARE(connection.link.ModbusAddress, qint16(250));
    }

    // Without a display the program still answers --help and bad values, and says how to run
    // it instead of letting Qt abort.
    void programWithoutADisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");
        QTest::newRow("help") << QStringList{"--help"} << 0 << QStringLiteral("--port <PORT>") << QString();
        QTest::newRow("bad baud rate") << QStringList{"--baud", "4800"} << 2 << QString()
                                       << QStringLiteral("--baud: \"4800\" is not 9600 or 19200");
        QTest::newRow("no display") << QStringList{"--port", "sim"} << 1 << QString()
                                    << QStringLiteral("xvfb-run -a");
    }
    void programWithoutADisplay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, out);
        QFETCH(QString, err);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/qx5820-setting"), arguments);
        QVERIFY(program.waitForFinished(20000));
        const QString stdoutText = QString::fromUtf8(program.readAllStandardOutput());
        const QString stderrText = QString::fromUtf8(program.readAllStandardError());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), exitCode);
        QVERIFY2(stdoutText.contains(out) && stderrText.contains(err), qPrintable(stdoutText + stderrText));
        QCOMPARE(stdoutText.isEmpty(), out.isEmpty());
    }

private:
    std::unique_ptr<MainForm> m_form;
};

QTEST_MAIN(PortListTest)
#include "PortListTest.moc"
