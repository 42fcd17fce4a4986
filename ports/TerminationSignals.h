#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

// Turns SIGINT and SIGTERM into a Qt signal, so that the program leaves its event loop and
// shuts down in order. The signals are blocked and read from a signalfd by the event loop.
class TerminationSignals : public QObject {
    Q_OBJECT
public:
    // Blocks both signals in the calling thread and every thread it starts later: call it
    // first thing in main(), before any thread exists.
    static void block();

    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

signals:
    void received();

private:
    void drain();

    int m_fd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

