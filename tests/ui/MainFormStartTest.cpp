// The window as the tool starts: every control under its name, the choice lists with their
// entries and starting selections, made in the order the connection code relies on, and the
// off-line state of the meter buttons.

#include "measure/DisplayItemNames.h"
#include "ui/Legends.h"
#include "ui/MainForm.h"
#include "WindowOnLine.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QtTest>

namespace {

QStringList Range(int first, int last)
{
    QStringList texts;
    for (int n = first; n <= last; ++n)
        texts << QString::number(n);
    return texts;
}

QString Element(const QString& array, int index)
{
    return QStringLiteral("%1(%2)").arg(array).arg(index);
}

struct ArrayNames {
    const char* name;
    int first;
    int last;
};

const QList<ArrayNames> kArrays{
    {"txt_V_N", 0, 3}, {"txt_V_B", 0, 3}, {"txt_I_Result", 3, 6}, {"txt_W_Result", 3, 6},
    {"txt_Var_Result", 3, 6}, {"txt_VA_Result", 3, 6}, {"txt_PF_Result", 3, 6}, {"txt_V_Angle", 0, 2},
    {"txt_I_Angle", 0, 2}, {"txt_kWh", 0, 19}, {"Combo_G1_Setting", 0, 13}, {"Combo_G2_Setting", 0, 9},
    {"Text_LP_Data_Counter", 0, 1}, {"Text_LP_interval", 0, 1}, {"Text_Valid_int_num", 0, 1},
    {"Text_Max_int_num", 0, 1}, {"Text_LP_G1_Data", 0, 11}, {"Text_LP_G2_Data", 0, 7},
};

const QStringList kSingleControls{
    "Combo_CommPort", "Combo_BaudRate_Sel", "Combo_StopBit", "Combo_Modbus_add_sel", "On_Line", "txt_Online",
    "Text6", "Text12", "chk_ShowFrames", "txtFrequency", "txt_PTRatio", "txtPTRatio2", "txt_CTRatio", "Text5",
    "Text3", "txt_Wiring", "txt_Phasor", "Combo_Modbus_add", "cmd_Test_Modbus", "Combo_Modbus_BaudRate",
    "Cmd_Modbus_BaudRate", "Combo_SetStopBit", "Comm_Change_StopBit", "Combo_SetWiring", "Comm_ChangeWiring",
    "Combo_PT_Ratio", "Cmd_PT_Ratio", "txtPT1", "txtPT2", "Comm_change_VT", "Combo_CT_Ratio", "Cmd_CT_Ratio",
    "Comm_SetTime", "Command1", "Cmd_Dis_MFGSerial", "Combo_Display_Ser_sel", "Combo_Display_Item_sel",
    "Command5", "Combo1", "Command6", "cmdDisplayindex", "txtDisplayIndex", "txt_Display_Item",
    "Comm_LP_G1_Set", "Comm_Clr_G1_Data", "Comm_LP_G2_Set", "Comm_Clr_G2_Data", "txtLPindex", "cmdLPindexon",
    "Combo_LP_Read_Group_Sel", "Combo_LP_Start_No", "Combo_LP_Stop_No", "Command8",
    "Combo_LP_Read_Group_Sel1", "Combo4", "Command7", "Command11",
};

const QList<int> kGroup1Codes{1, 2, 3, 4, 5, 7, 9, 11, 6, 8, 10, 12};
const QList<int> kGroup2Codes{6, 12, 13, 14, 1, 2, 3, 4};

} // namespace

class MainFormStartTest : public QObject {
    Q_OBJECT

private slots:
    void titleAndTabs()
    {
        MainForm form;
        QCOMPARE(form.windowTitle(), QStringLiteral("Norvale QX-5820 setting V1.0"));
        const auto* tabs = form.findChild<QTabWidget*>();
        QVERIFY(tabs);
        QStringList texts;
        for (int tab = 0; tab < tabs->count(); ++tab)
            texts.append(tabs->tabText(tab));
        QCOMPARE(texts.mid(0, 3), QStringList({"Real time Data", "Meter Settig", "Load Profile"}));
        // Tabs built on the session follow the meter's three.
        QVERIFY(texts.indexOf(QStringLiteral("Trends")) >= 3);
        QVERIFY(texts.indexOf(QStringLiteral("Load Profile Plot")) >= 3);
        QVERIFY(texts.indexOf(QStringLiteral("Traffic")) >= 3);
        QCOMPARE(tabs->tabText(tabs->indexOf(form.findChild<QWidget*>(QStringLiteral("PhasorView")))),
                 QStringLiteral("Phasors and wiring"));
    }

    // A 1366×768 laptop screen less its task bar and the title bar leaves 1366×700: whichever
    // tab is chosen, only its page scrolls, and the connection bar and the status line stay in
    // view. The long reason for going off line can be read whole, in the field or its tooltip.
    void fitsALaptopScreen()
    {
        WindowOnLine w;
        MainForm& form = w.form;
        RegisterLink& link = form.session().connection.link;
        link.attempts = 1;
        link.replyTimeoutMs = 300;
        QVERIFY(w.meter.setSilent(quint8(form.session().Address())));
        form.resize(1366, 700);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        QCOMPARE(form.size(), QSize(1366, 700));
        const QWidget* connectionBar = form.On_Line->parentWidget();
        for (int tab = 0; tab < form.tabs->count(); ++tab) {
            form.tabs->setCurrentIndex(tab);
            for (const QWidget* kept : {connectionBar, static_cast<const QWidget*>(form.Text6)}) {
                const QRect place(kept->mapTo(&form, QPoint()), kept->size());
                QVERIFY2(form.rect().contains(place), qPrintable(form.tabs->tabText(tab)));
            }
        }
        form.On_Line->click();
        QTRY_VERIFY_WITH_TIMEOUT(!form.session().OnLine(), 5000);
        const QLineEdit* reason = form.txt_OffLineReason;
        QVERIFY(reason->text().contains(QStringLiteral(" — ")));
        QVERIFY2(reason->toolTip() == reason->text()
                     || reason->fontMetrics().horizontalAdvance(reason->text()) < reason->width(),
                 qPrintable(reason->text()));
    }

    // Each name is found exactly once, carries an accessible name, and the arrays hold no
    // elements beyond the listed ones.
    void everyNamedControlExists()
    {
        MainForm form;
        QStringList names = kSingleControls;
        for (const ArrayNames& array : kArrays) {
            for (int i = array.first; i <= array.last; ++i)
                names << Element(array.name, i);
            const QRegularExpression anyElement(QStringLiteral("^%1\\(\\d+\\)$").arg(array.name));
            QCOMPARE(form.findChildren<QWidget*>(anyElement).size(), array.last - array.first + 1);
        }
        for (const QString& name : names) {
            const auto found = form.findChildren<QWidget*>(name);
            QVERIFY2(found.size() == 1, qPrintable(name));
            QVERIFY2(!found.first()->accessibleName().isEmpty(), qPrintable(name));
        }
    }

    void startUpList_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<int>("index");

        const QStringList baudRates{"9600", "19200"};
        const QStringList oneTwo{"1", "2"};
        const QStringList intervals{"1", "5", "10", "15", "30", "60"};
        auto row = [](const QString& list, const QStringList& entries, int index) {
            QTest::newRow(qPrintable(list)) << list << entries << index;
        };
        row("Combo_Modbus_BaudRate", baudRates, 1);
        row("Combo_Modbus_add", Range(1, 247), 14);
        row("Combo_Modbus_add_sel", Range(1, 247), 14);
        row("Combo_BaudRate_Sel", baudRates, 1);
        row("Combo_G1_Setting(0)", Range(1, 12), 7);
        row("Combo_G1_Setting(1)", intervals, 3);
        for (int k = 0; k < kGroup1Codes.size(); ++k)
            row(Element("Combo_G1_Setting", 2 + k), Range(1, 14), kGroup1Codes[k] - 1);
        row("Combo_G2_Setting(0)", Range(1, 8), 3);
        row("Combo_G2_Setting(1)", intervals, 3);
        for (int k = 0; k < kGroup2Codes.size(); ++k)
            row(Element("Combo_G2_Setting", 2 + k), Range(1, 14), kGroup2Codes[k] - 1);
        row("Combo_LP_Read_Group_Sel", oneTwo, 0);
        row("Combo_Display_Ser_sel", Range(1, 50), 0);
        row("Combo_Display_Item_sel", Range(0, 10) + QStringList{"12"} + Range(101, 140), 1);
        row("Combo1", Range(3, 15), 0);
        row("Combo_PT_Ratio", {"1", "2", "5", "10"}, 0);
        row("Combo_CT_Ratio", {"1", "2", "100", "200"}, 0);
        row("Combo_LP_Start_No", {"1"}, 0);
        row("Combo_LP_Stop_No", {"1"}, 0);
        row("Combo_LP_Read_Group_Sel1", oneTwo, 0);
        row("Combo4", Range(1, 4), 0);
        row("Combo_SetStopBit", oneTwo, 0);
        row("Combo_StopBit", oneTwo, 0);
        row("Combo_SetWiring", {"Auto", "1P2W", "1P3W", "3P3W 2CT", "3P3W 3CT", "3P4W"}, 0);
    }

    void startUpList()
    {
        QFETCH(QString, list);
        QFETCH(QStringList, entries);
        QFETCH(int, index);
        MainForm form;
        form.Form_Load();
        const auto* combo = form.findChild<QComboBox*>(list);
        QVERIFY(combo);
        QStringList actual;
        for (int i = 0; i < combo->count(); ++i)
            actual << combo->itemText(i);
        QCOMPARE(actual, entries);
        QCOMPARE(combo->currentIndex(), index);
        QCOMPARE(combo->currentText(), entries[index]);
    }

    // A typed value stays as typed: not completed from the entries, not added as an entry.
    void typedListsKeepTheOperatorsText()
    {
        MainForm form;
        form.Form_Load();
        for (QComboBox* list : {form.Combo_Modbus_add, form.Combo_Modbus_add_sel, form.Combo_PT_Ratio,
                                form.Combo_CT_Ratio, form.Combo_LP_Start_No, form.Combo_LP_Stop_No})
            QVERIFY2(list->isEditable(), qPrintable(list->objectName()));
        // Completion only acts in the focused field of an active window.
        form.tabs->setCurrentIndex(1);
        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        form.Combo_CT_Ratio->setFocus();
        QLineEdit* typing = form.Combo_CT_Ratio->lineEdit();
        typing->clear();
        QTest::keyClicks(typing, "10");
        QTest::keyClick(typing, Qt::Key_Return);
        QCOMPARE(form.Combo_CT_Ratio->currentText(), QStringLiteral("10"));
        QCOMPARE(form.Combo_CT_Ratio->count(), 4);
    }

    // The item legend agrees with the names the meter's item list is shown with, apart from
    // the shortened 12, and leaves out 11 and 140; the window shows both legends.
    void legends()
    {
        const QStringList lines = DisplayItemLegend().chopped(2).split("\r\n");
        QCOMPARE(lines.size(), 50);
        for (const QString& line : lines) {
            const int code = line.section(" : ", 0, 0).toInt();
            QVERIFY2(code != 11 && code != 140, qPrintable(line));
            QCOMPARE(line.section(" : ", 1), code == 12 ? QStringLiteral("Modbus Stop Bi") : DisplayItemName(code));
        }
        MainForm form;
        form.Form_Load();
        QCOMPARE(form.txtLPindex->toPlainText(), LpChannelLegend().remove('\r'));
        QCOMPARE(form.txtDisplayIndex->toPlainText(), DisplayItemLegend().remove('\r'));
    }
};

QTEST_MAIN(MainFormStartTest)
#include "MainFormStartTest.moc"
