#pragma once

#include "connection/MeterScan.h"

#include <QDialog>

#include <optional>

class QLabel;
class QProgressBar;
class QPushButton;

// "Find meter…": runs the scan of `qx5820 scan` on the chosen port, both baud rates and every
// address, showing what is being tried, with a Stop. The first meter that answers is offered;
// "Use it" accepts the dialog with that meter as Chosen().
class FindMeterDialog : public QDialog {
    Q_OBJECT
public:
    FindMeterDialog(const QString& device, const QString& stopBits, QWidget* parent = nullptr);

    // Starts the scan once the event loop runs: the dialog is shown while it goes on.
    int exec() override;
    const std::optional<MeterScan::Found>& Chosen() const { return m_chosen; }

    QProgressBar* progress = nullptr;
    QLabel* trying = nullptr;
    QLabel* result = nullptr;
    QPushButton* stop = nullptr;
    QPushButton* use = nullptr;

signals:
    // The scan ended, found a meter or not; "Use it" is enabled when it did.
    void scanEnded();

protected:
    void reject() override;

private:
    void Run();

    MeterScan m_scan;
    MeterScan::Plan m_plan;
    std::optional<MeterScan::Found> m_chosen;
};
