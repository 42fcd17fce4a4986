#pragma once

#include "settings/MeterConfiguration.h"

#include <QDialog>

class QCheckBox;
class QPushButton;
class QTableWidget;

// The one question before a configuration is applied: the settings where the file differs
// from the meter, and whether the communication settings go too (a file made for a whole
// line must not give every meter one address).
class ApplyConfigurationDialog : public QDialog {
    Q_OBJECT
public:
    ApplyConfigurationDialog(QWidget* owner, const QString& file, const QList<SettingComparison>& differences);

    bool WithCommunication() const;

    QTableWidget* tbl_Differences = nullptr;
    QCheckBox* chk_WithCommunication = nullptr;
    QPushButton* ApplyButton = nullptr;
    QPushButton* CancelButton = nullptr;
};
