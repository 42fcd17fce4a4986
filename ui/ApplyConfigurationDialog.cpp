#include "ui/ApplyConfigurationDialog.h"

#include "settings/SettingTable.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

// A display item names its position: fifty rows of one setting are otherwise alike.
QString RowName(const ConfiguredSetting& item)
{
    const QString name = SpecOf(item.setting).name;
    return item.setting == Setting::DisplayItem ? QStringLiteral("%1 %2").arg(name).arg(item.value.fields.value(0)) : name;
}

} // namespace

ApplyConfigurationDialog::ApplyConfigurationDialog(QWidget* owner, const QString& file, const QList<SettingComparison>& differences)
    : QDialog(owner)
{
    setObjectName(QStringLiteral("ApplyConfigurationDialog"));
    setWindowTitle(QStringLiteral("Apply configuration"));
    auto* heading = new QLabel(QStringLiteral("The meter differs from %1 in these settings. Write the file's values to the meter?")
                                   .arg(QDir::toNativeSeparators(file)));
    heading->setWordWrap(true);

    tbl_Differences = new QTableWidget(int(differences.size()), 3);
    tbl_Differences->setObjectName(QStringLiteral("tbl_Differences"));
    tbl_Differences->setAccessibleName(QStringLiteral("Settings where the file differs from the meter"));
    tbl_Differences->setHorizontalHeaderLabels({QStringLiteral("Setting"), QStringLiteral("Meter"), QStringLiteral("File")});
    tbl_Differences->horizontalHeader()->setStretchLastSection(true);
    tbl_Differences->verticalHeader()->hide();
    tbl_Differences->setEditTriggers(QAbstractItemView::NoEditTriggers);
    bool communication = false;
    for (int row = 0; row < differences.size(); ++row) {
        const SettingComparison& c = differences[row];
        communication = communication || IsCommunication(c.item.setting);
        const QStringList cells{RowName(c.item), c.meter, c.file};
        for (int column = 0; column < cells.size(); ++column)
            tbl_Differences->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
    tbl_Differences->resizeColumnsToContents();

    chk_WithCommunication = new QCheckBox(QStringLiteral("Also write the communication settings (address, baud rate, stop bits)"));
    chk_WithCommunication->setObjectName(QStringLiteral("chk_WithCommunication"));
    chk_WithCommunication->setEnabled(communication);

    auto* buttons = new QDialogButtonBox;
    ApplyButton = buttons->addButton(QStringLiteral("Apply"), QDialogButtonBox::AcceptRole);
    ApplyButton->setObjectName(QStringLiteral("ApplyButton"));
    CancelButton = buttons->addButton(QDialogButtonBox::Cancel);
    CancelButton->setObjectName(QStringLiteral("CancelButton"));
    CancelButton->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* column = new QVBoxLayout(this);
    column->addWidget(heading);
    column->addWidget(tbl_Differences, 1);
    column->addWidget(chk_WithCommunication);
    column->addWidget(buttons);
    resize(560, 420);
}

bool ApplyConfigurationDialog::WithCommunication() const
{
    return chk_WithCommunication->isChecked();
}
