#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>

// What the register transactions need from a serial line, and no more. The serial port and a
// TCP connection to a device server implement it; tests hand in a scripted line. `dataArrived` only wakes a waiting
// transaction, which then takes what came: it never delivers data by itself.
class Transport : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    virtual bool isOpen() const = 0;
    // Takes every received byte; the receive buffer is empty afterwards.
    virtual QByteArray takeAll() = 0;
    // Drops everything received so far, including what the driver still holds.
    virtual void discardInput() = 0;
    // Queues `frame` for sending and pushes it to the driver without waiting.
    virtual void send(const QByteArray& frame) = 0;
    // The shortest time a character can take on the wire: 10 bits (start, 8 data, stop) at
    // the line's speed; parity and a second stop bit only make it longer. Zero when no wire
    // bounds how soon bytes come (a pseudo-terminal hands them over as they are written).
    virtual std::chrono::nanoseconds characterTime() const = 0;

signals:
    void dataArrived();
    // The device failed while open (unplugged adapter, closed pseudo-terminal, a connection
    // the far end dropped); `reason` says so in words for the operator.
    void lost(const QString& reason);
};
