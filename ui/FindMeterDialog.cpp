#include "ui/FindMeterDialog.h"

#include "ports/MeterChoices.h"
#include "ui/ControlFactory.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace Controls;

FindMeterDialog::FindMeterDialog(const QString& device, const QString& stopBits, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("FindMeterDialog"));
    setWindowTitle(QStringLiteral("Find meter"));
    m_plan = {.device = device, .stopBits = stopBits, .first = kLowestAddress, .last = kHighestAddress};

    progress = new QProgressBar;
    progress->setAccessibleName(QStringLiteral("Scan progress"));
    trying = new QLabel(QStringLiteral("Looking on %1…").arg(device));
    result = new QLabel;
    result->setWordWrap(true);
    stop = Button(QStringLiteral("cmd_FindStop"), QStringLiteral("Stop"), QStringLiteral("Stop the scan"));
    use = Button(QStringLiteral("cmd_FindUse"), QStringLiteral("Use it"), QStringLiteral("Use the address and baud rate found"));
    use->setEnabled(false);
    auto* close = Button(QStringLiteral("cmd_FindClose"), QStringLiteral("Close"), QStringLiteral("Close without a change"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(stop);
    buttons->addStretch(1);
    buttons->addWidget(use);
    buttons->addWidget(close);
    auto* column = new QVBoxLayout(this);
    column->addWidget(trying);
    column->addWidget(progress);
    column->addWidget(result);
    column->addLayout(buttons);

    connect(stop, &QPushButton::clicked, &m_scan, &MeterScan::Stop);
    connect(use, &QPushButton::clicked, this, &QDialog::accept);
    connect(close, &QPushButton::clicked, this, &FindMeterDialog::reject);
    connect(&m_scan, &MeterScan::trying, this, [this](int address, const QString& rate, int done, int total) {
        progress->setRange(0, total);
        progress->setValue(done);
        trying->setText(QStringLiteral("Trying address %1 at %2 baud…").arg(address).arg(rate));
    });
}

int FindMeterDialog::exec()
{
    QTimer::singleShot(0, this, &FindMeterDialog::Run);
    return QDialog::exec();
}

// The scan waits in nested event loops: a click on Close meanwhile stops it first.
void FindMeterDialog::reject()
{
    m_scan.Stop();
    QDialog::reject();
}

void FindMeterDialog::Run()
{
    QString error;
    const bool ran = m_scan.Run(m_plan, &error);
    stop->setEnabled(false);
    progress->setValue(progress->maximum());
    if (!ran) {
        result->setText(QStringLiteral("The port cannot be used: %1").arg(error));
    } else if (!m_scan.Results().isEmpty()) {
        m_chosen = m_scan.Results().first();
        const QString identification = m_chosen->identification.isEmpty() ? QStringLiteral("no identification")
                                                                          : m_chosen->identification;
        result->setText(QStringLiteral("Found: address %1 at %2 baud (%3).")
                            .arg(m_chosen->address).arg(m_chosen->baudRate, identification));
        use->setEnabled(true);
        use->setDefault(true);
    } else {
        result->setText(m_scan.Stopped() ? QStringLiteral("Stopped: no meter found so far.")
                                         : QStringLiteral("No meter answered at any address at 19200 or 9600 baud, %1 stop bit(s): "
                                                          "check the meter's power, the A/B wiring and the stop bits.")
                                               .arg(m_plan.stopBits));
    }
    trying->setText(m_scan.Stopped() ? QStringLiteral("Scan stopped.") : QStringLiteral("Scan done."));
    emit scanEnded();
}
