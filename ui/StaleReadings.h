#pragma once

#include <QObject>

class QLabel;
class QWidget;
class ReadingFreshness;

// Greys the real-time fields on `page` while their values are the last good reading's, and
// shows its time on `note`; the core decides when (ReadingFreshness).
class StaleReadings : public QObject {
    Q_OBJECT
public:
    StaleReadings(QWidget& page, QLabel& note, const ReadingFreshness& freshness);

private:
    void Show();

    QWidget& m_page;
    QLabel& m_note;
    const ReadingFreshness& m_freshness;
};
