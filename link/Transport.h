#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

// What the register transactions need from a serial line, and no more. The serial port
// implements it; tests may hand in a fake. Reception is by looking at the byte count:
// `dataArrived` only wakes a waiting transaction, it never delivers data by itself.
class Transport : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    virtual bool isOpen() const = 0;
    // Bytes received and not yet taken.
    virtual qsizetype bytesWaiting() const = 0;
    // Takes every received byte; the receive buffer is empty afterwards.
    virtual QByteArray takeAll() = 0;
    // Drops everything received so far, including what the driver still holds.
    virtual void discardInput() = 0;
    // Queues `frame` for sending and pushes it to the driver without waiting.
    virtual void send(const QByteArray& frame) = 0;

signals:
    void dataArrived();
    // The device failed while open (unplugged adapter, closed pseudo-terminal).
    void lost(const QString& reason);
};
