#pragma once

#include "link/Bool16.h"

#include <QDialog>

class QLabel;
class QPushButton;

// The tool's one confirmation: a question in Label1 with OK and Cancel. Clearing the energy
// counters and changing or clearing a load-profile group all ask here first.
class Dialog_Clr_kWh : public QDialog {
    Q_OBJECT
public:
    explicit Dialog_Clr_kWh(QWidget* owner = nullptr);

    // Shows `question` under `caption` modally over `owner`; true only when the operator
    // pressed OK.
    static bool confirm(QWidget* owner, const QString& caption, const QString& question);

    QLabel* Label1 = nullptr;
    QPushButton* OKButton = nullptr;
    QPushButton* CancelButton = nullptr;

    // kTrue after OK; kFalse from every showing until then, so Cancel, Escape and the close
    // box all leave it kFalse.
    Bool16 bClearConfirmed = kFalse;

protected:
    void showEvent(QShowEvent* event) override;
};
