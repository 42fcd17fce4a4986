#pragma once

#include "connection/PortTransport.h"
#include "link/RegisterLink.h"
#include "link/WatchedFlag.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

// Looks for a meter when nobody wrote down its address or baud rate: tries each address of a
// range at each baud rate once, with a short reply wait, and reads the identification of what
// answers. It runs on the caller's event loop: Run() yields to it while each probe waits, so a
// window stays live and Stop() (from a button or a signal) ends the scan within one wait.
class MeterScan : public QObject {
    Q_OBJECT
public:
    // A reply wait long enough for a meter on a pseudo-terminal or a short cable: a full
    // sweep of both rates takes under a minute.
    static constexpr qint32 kProbeTimeoutMs = 100;

    struct Plan {
        QString device;         // a serial device or "tcp://host:port"
        // Tried in this order, the meter's usual rate first: most meters answer in the first
        // sweep. A network port takes the first only.
        QStringList baudRates{QStringLiteral("19200"), QStringLiteral("9600")};
        QString stopBits = QStringLiteral("1");
        int first = 1;
        int last = 250;
        bool all = false;       // go on after the first meter that answers
        qint32 replyTimeoutMs = kProbeTimeoutMs;
    };
    struct Found {
        int address = 0;
        QString baudRate;
        QString identification; // empty when the meter did not give it
    };

    explicit MeterScan(QObject* parent = nullptr);

    // Scans as `plan` says; false, with the port's reason in `error`, when the port cannot be used.
    bool Run(const Plan& plan, QString* error);
    // Ends the scan under way at the probe it is waiting on.
    void Stop();
    bool Stopped() const { return m_stopped; }
    const QList<Found>& Results() const { return m_found; }

signals:
    // Before each probe: `done` of `total` probes have been made.
    void trying(int address, const QString& baudRate, int done, int total);
    void found(const MeterScan::Found& meter);

private:
    bool Sweep(const Plan& plan, const QString& baudRate, int& done, int total, QString* error);
    bool Probe(int address, qint32 replyTimeoutMs);
    QString Identification();

    PortTransport m_port;
    WatchedFlag m_onLine;
    RegisterLink m_link;
    QList<Found> m_found;
    bool m_stopped = false;
};
