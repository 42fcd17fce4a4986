#include "ui/CommissioningReportDialog.h"

#include "measure/ReadingFields.h"
#include "report/ReportPdf.h"
#include "session/CommissioningReport.h"
#include "session/MeterSession.h"
#include "ui/MainForm.h"
#include "ui/TrendView.h"

#include <QCoreApplication>
#include <QDate>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTableWidget>

namespace {

// The history table's rows as lines, oldest first as a record reads; the table shows the newest first.
QStringList HistoryLines(const QTableWidget& table)
{
    QStringList lines;
    for (int row = table.rowCount() - 1; row >= 0; --row) {
        QStringList cells;
        for (int column = 0; column < table.columnCount(); ++column) {
            if (const QTableWidgetItem* item = table.item(row, column))
                cells << item->text();
        }
        lines << cells.join(QStringLiteral("  "));
    }
    return lines;
}

// "<identification>_<date>.pdf" in the documents folder; characters a file system may refuse
// become underscores.
QString DefaultPath(const MeterSession& session)
{
    QString meter = IdentificationText(session.Reading().identification).trimmed();
    meter.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]+")), QStringLiteral("_"));
    const QString name = QStringLiteral("%1_%2.pdf")
                             .arg(meter.isEmpty() ? QStringLiteral("QX-5820") : meter,
                                  QDate::currentDate().toString(Qt::ISODate));
    return QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)).filePath(name);
}

} // namespace

CommissioningReportDialog::CommissioningReportDialog(MainForm& form)
    : QDialog(&form), m_session(form.session()), m_history(HistoryLines(*form.tbl_SettingsHistory))
{
    // The trend tab is optional to the report: without it the extremes are left out.
    if (const TrendView* trend = form.findChild<TrendView*>())
        m_trend = &trend->series;
    setObjectName(QStringLiteral("CommissioningReportDialog"));
    setWindowTitle(QStringLiteral("Commissioning report"));

    txt_Engineer = new QLineEdit;
    txt_Engineer->setObjectName(QStringLiteral("txt_Engineer"));
    txt_Site = new QLineEdit;
    txt_Site->setObjectName(QStringLiteral("txt_Site"));
    txt_Note = new QPlainTextEdit;
    txt_Note->setObjectName(QStringLiteral("txt_Note"));
    txt_Note->setTabChangesFocus(true);
    txt_Note->setFixedHeight(txt_Note->fontMetrics().lineSpacing() * 4 + 12); // a remark, not a letter
    txt_File = new QLineEdit(QDir::toNativeSeparators(DefaultPath(m_session)));
    txt_File->setObjectName(QStringLiteral("txt_File"));
    BrowseButton = new QPushButton(QStringLiteral("Browse…"));
    BrowseButton->setObjectName(QStringLiteral("BrowseButton"));
    lbl_Error = new QLabel;
    lbl_Error->setObjectName(QStringLiteral("lbl_Error"));
    lbl_Error->setWordWrap(true);
    lbl_Error->setStyleSheet(QStringLiteral("color: #b00020;"));
    lbl_Error->hide();

    auto* file = new QHBoxLayout;
    file->addWidget(txt_File, 1);
    file->addWidget(BrowseButton);
    auto* fields = new QFormLayout;
    fields->addRow(QStringLiteral("&Engineer"), txt_Engineer);
    fields->addRow(QStringLiteral("&Site"), txt_Site);
    fields->addRow(QStringLiteral("&Note"), txt_Note);
    auto* fileCaption = new QLabel(QStringLiteral("&File"));
    fileCaption->setBuddy(txt_File); // a row of two widgets gets no buddy of its own
    fields->addRow(fileCaption, file);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    WriteButton = buttons->addButton(QStringLiteral("&Write"), QDialogButtonBox::AcceptRole);
    WriteButton->setObjectName(QStringLiteral("WriteButton"));
    WriteButton->setDefault(true);
    // Write decides itself whether the dialog closes.
    connect(WriteButton, &QPushButton::clicked, this, [this] { Write(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(BrowseButton, &QPushButton::clicked, this, &CommissioningReportDialog::Browse);

    auto* column = new QVBoxLayout(this);
    column->addLayout(fields);
    column->addWidget(lbl_Error);
    column->addWidget(buttons);
    resize(520, sizeHint().height());
}

std::optional<QString> CommissioningReportDialog::Write()
{
    const QString path = QDir::fromNativeSeparators(txt_File->text().trimmed());
    std::optional<QString> error;
    if (path.isEmpty()) {
        error = QStringLiteral("No file chosen for the report.");
    } else {
        const ReportExtras extras{txt_Site->text(), txt_Engineer->text(), txt_Note->toPlainText(),
                                  QCoreApplication::applicationVersion(), QDateTime::currentDateTime(), m_trend, m_history};
        error = WriteReportPdf(BuildReport(m_session, extras), path);
    }
    lbl_Error->setText(error.value_or(QString()));
    lbl_Error->setVisible(error.has_value());
    if (!error)
        accept();
    return error;
}

void CommissioningReportDialog::Browse()
{
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Commissioning report"),
                                                      QDir::fromNativeSeparators(txt_File->text()),
                                                      QStringLiteral("PDF (*.pdf)"));
    if (!path.isEmpty())
        txt_File->setText(QDir::toNativeSeparators(path));
}
