#pragma once

#include <QChartView>
#include <QList>
#include <QPointF>
#include <QString>

#include <optional>

class QDateTimeAxis;
class QValueAxis;

// A chart of lines over time (x in ms since the epoch) that the trend and load-profile views
// share: it follows its data until the operator zooms in with the rubber band, and keeps the
// zoomed range while new data arrives until the zoom is reset. Its background, text and axes
// take the widget's palette, so that a dark theme does not hide them.
class TimeChart : public QChartView {
    Q_OBJECT
public:
    struct Line {
        QString name;
        QList<QPointF> points;
    };

    // `timeFormat` labels the time axis, e.g. "HH:mm:ss".
    TimeChart(const QString& accessibleName, const QString& timeFormat, QWidget* parent = nullptr);

    // Shows exactly these lines, each kept by its name, so that a line keeps its colour.
    void SetLines(const QList<Line>& lines);
    // Dragging a rectangle zooms into it while on; a right click zooms back out one step.
    void SetZoomMode(bool on);
    void ResetZoom();
    // The chart as it is on screen; the error names the file.
    std::optional<QString> SavePng(const QString& path);

protected:
    void changeEvent(QEvent* event) override;

private:
    void FitAxes();
    void FollowPalette();

    QDateTimeAxis* m_time;
    QValueAxis* m_values;
};
