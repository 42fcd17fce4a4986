#pragma once

#include "measure/TrendSeries.h"

#include <QWidget>

class PollCycle;
class QLabel;
class QListWidget;
class QPushButton;
class TimeChart;

// The "Trends" tab: the chosen live quantities of the session over time, from every reading
// the poll cycle takes. Pause freezes the chart while the series goes on recording.
class TrendView : public QWidget {
    Q_OBJECT
public:
    explicit TrendView(PollCycle& poll, QWidget* parent = nullptr);

    TrendSeries series;

    TimeChart* chart = nullptr;
    QListWidget* quantities = nullptr;
    QPushButton* pause = nullptr;
    QPushButton* zoom = nullptr;
    QPushButton* resetZoom = nullptr;
    QPushButton* savePng = nullptr;
    QPushButton* saveCsv = nullptr;
    QLabel* status = nullptr;  // ticks seen and points kept
    QLabel* message = nullptr; // what the last save did

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* BuildControls();
    void Redraw();
    void SavePng();
    void SaveCsv();
};
