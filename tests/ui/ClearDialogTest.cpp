// The confirmation dialog answers true only for OK; Cancel, Escape and the close box all
// count as "no", also after an earlier OK on the same dialog.

#include "ui/Dialog_Clr_kWh.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

namespace {

// Runs `answer` on the dialog once it is up and waiting modally.
void WhenShown(const std::function<void(Dialog_Clr_kWh*)>& answer)
{
    QTimer::singleShot(0, [answer] {
        auto* dialog = qobject_cast<Dialog_Clr_kWh*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        answer(dialog);
    });
}

} // namespace

class ClearDialogTest : public QObject {
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("confirmed");
        QTest::newRow("OK") << 0 << true;
        QTest::newRow("Cancel") << 1 << false;
        QTest::newRow("close box") << 2 << false;
        QTest::newRow("Escape") << 3 << false;
    }

    void answers()
    {
        QFETCH(int, answer);
        QFETCH(bool, confirmed);
        QWidget owner;
        QString question;
        QString caption;
        WhenShown([&](Dialog_Clr_kWh* dialog) {
            question = dialog->Label1->text();
            caption = dialog->windowTitle();
            switch (answer) {
            case 0: dialog->OKButton->click(); break;
            case 1: dialog->CancelButton->click(); break;
            case 2: dialog->close(); break;
            default: QTest::keyClick(dialog, Qt::Key_Escape); break;
            }
        });
        QCOMPARE(Dialog_Clr_kWh::confirm(&owner, "Clear kWh", "Clear all total kWh？"), confirmed);
        QCOMPARE(question, QStringLiteral("Clear all total kWh？"));
        QCOMPARE(caption, QStringLiteral("Clear kWh"));
    }

    void eachShowingStartsUnconfirmed()
    {
        Dialog_Clr_kWh dialog;
        QCOMPARE(dialog.objectName(), QStringLiteral("Dialog_Clr_kWh"));
        WhenShown([](Dialog_Clr_kWh* shown) { shown->OKButton->click(); });
        dialog.exec();
        QCOMPARE(dialog.bClearConfirmed, kTrue);

        Bool16 whileShown = kTrue;
        WhenShown([&](Dialog_Clr_kWh* shown) {
            whileShown = shown->bClearConfirmed;
            shown->close();
        });
        dialog.exec();
        QCOMPARE(whileShown, kFalse);
        QCOMPARE(dialog.bClearConfirmed, kFalse);
    }
};

QTEST_MAIN(ClearDialogTest)
#include "ClearDialogTest.moc"
