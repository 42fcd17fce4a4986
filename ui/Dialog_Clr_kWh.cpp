#include "ui/Dialog_Clr_kWh.h"

#include "ui/ControlFactory.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

Dialog_Clr_kWh::Dialog_Clr_kWh(QWidget* owner) : QDialog(owner)
{
    setObjectName(QStringLiteral("Dialog_Clr_kWh"));
    setWindowTitle(QStringLiteral("Confirm"));
    setModal(true);

    Label1 = new QLabel;
    Label1->setObjectName(QStringLiteral("Label1"));
    Label1->setAccessibleName(QStringLiteral("Question"));
    Label1->setWordWrap(true);
    Label1->setMinimumWidth(Label1->fontMetrics().averageCharWidth() * 60);
    OKButton = Controls::Button(QStringLiteral("OKButton"), QStringLiteral("OK"), QStringLiteral("Confirm"));
    CancelButton = Controls::Button(QStringLiteral("CancelButton"), QStringLiteral("Cancel"),
                                    QStringLiteral("Cancel, change nothing"));
    // Enter must not confirm a clearing by accident: only a deliberate OK does.
    OKButton->setAutoDefault(false);
    CancelButton->setDefault(true);

    connect(OKButton, &QPushButton::clicked, this, [this] {
        bClearConfirmed = kTrue;
        accept();
    });
    connect(CancelButton, &QPushButton::clicked, this, [this] {
        bClearConfirmed = kFalse;
        reject();
    });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(OKButton);
    buttons->addWidget(CancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addLayout(buttons);
}

bool Dialog_Clr_kWh::confirm(QWidget* owner, const QString& caption, const QString& question)
{
    Dialog_Clr_kWh dialog(owner);
    dialog.setWindowTitle(caption);
    dialog.Label1->setText(question);
    dialog.exec();
    return dialog.bClearConfirmed == kTrue;
}

void Dialog_Clr_kWh::showEvent(QShowEvent* event)
{
    bClearConfirmed = kFalse;
    QDialog::showEvent(event);
}
