#pragma once

#include <QWidget>

#include <array>

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QTimer;
class TrafficLog;

// The "Traffic" tab: the frames on the line, one per row with the time to the millisecond,
// direction, bytes in hex and how the link judged them, and the counters over them. The view
// reads the log a few times a second, never from inside a transaction, so watching the line
// costs it no time; it holds no more rows than the log does.
class TrafficView : public QWidget {
    Q_OBJECT
public:
    explicit TrafficView(QWidget* parent = nullptr);

    // Follows `log` from now on, starting with the frames it already holds.
    void Attach(TrafficLog& log);
    // Takes what the log added since the last look.
    void Refresh();
    // Writes the rows shown to `path`; false with the reason in `error` when it cannot.
    bool SaveTo(const QString& path, QString* error) const;

    QPlainTextEdit* frames = nullptr;
    QPushButton* pause = nullptr;
    QPushButton* clear = nullptr;
    QPushButton* copy = nullptr;
    QPushButton* save = nullptr;

private:
    void ShowCounters();
    void Clear();
    void Save();

    TrafficLog* m_log = nullptr;
    quint64 m_nextSerial = 0;
    QTimer* m_refresh = nullptr;
    std::array<QLabel*, 11> m_counters{};
};
