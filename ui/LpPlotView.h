#pragma once

#include "loadprofile/LpFileReport.h"

#include <QWidget>

class LpDownload;
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

    // Reads, checks and plots the file at `path`.
    void Open(const QString& path);

    TimeChart* chart = nullptr;
    QListWidget* channels = nullptr;
    QPushButton* open = nullptr;
    QPushButton* resetZoom = nullptr;
    QLabel* fileName = nullptr;
    QPlainTextEdit* report = nullptr;

private:
    QWidget* BuildSide();
    void ChooseFile();
    void ListChannels();
    void Redraw();

    LpFileReport::Report m_report;
};
