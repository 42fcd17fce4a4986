#pragma once

#include "loadprofile/LpFileReport.h"

#include <QWidget>

#include <memory>

class LpDownload;
class LpFileReportJob;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class TimeChart;

// The "Load Profile Plot" tab: the channels of a load-profile CSV file over time, beside the
// report of what the file holds and lacks. It opens the file a download just wrote, or any
// file the operator picks.
class LpPlotView : public QWidget {
    Q_OBJECT
public:
    explicit LpPlotView(LpDownload& download, QWidget* parent = nullptr);
    ~LpPlotView() override;

    // Reads, checks and plots the file at `path`, in slices while the window goes on; a newer
    // Open replaces one still reading. `intervalSeconds` is the group's interval when known,
    // 0 to take the most common spacing between rows.
    void Open(const QString& path, qint64 intervalSeconds = 0);
    // Whether a file is still being read.
    bool Reading() const { return m_job != nullptr; }

    TimeChart* chart = nullptr;
    QListWidget* channels = nullptr;
    QPushButton* open = nullptr;
    QPushButton* resetZoom = nullptr;
    QLabel* fileName = nullptr;
    QPlainTextEdit* report = nullptr;

signals:
    // The report on the file opened last is shown.
    void shown();

private:
    QWidget* BuildSide();
    void ChooseFile();
    void ListChannels();
    void Redraw();
    void Show(const LpFileReport::Report& report);

    LpFileReport::Report m_report;
    std::unique_ptr<LpFileReportJob> m_job;
};
