#pragma once

#include <QDialog>
#include <QStringList>

#include <optional>

class MainForm;
class MeterSession;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class TrendSeries;

// "Commissioning report…": who, where and a remark, and the PDF file that takes the session's
// latest reading with the trend's extremes and the settings history the window shows.
class CommissioningReportDialog : public QDialog {
    Q_OBJECT
public:
    explicit CommissioningReportDialog(MainForm& form);

    // Writes the report and closes the dialog; otherwise shows and returns why it could not.
    std::optional<QString> Write();

    QLineEdit* txt_Engineer = nullptr;
    QLineEdit* txt_Site = nullptr;
    QPlainTextEdit* txt_Note = nullptr;
    QLineEdit* txt_File = nullptr;
    QPushButton* BrowseButton = nullptr;
    QPushButton* WriteButton = nullptr;
    QLabel* lbl_Error = nullptr;

private:
    void Browse();

    const MeterSession& m_session;
    const TrendSeries* m_trend = nullptr;
    QStringList m_history;
};
