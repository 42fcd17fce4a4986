#pragma once

#include "connection/LineSettings.h"
#include "connection/SerialTransport.h"
#include "connection/TcpTransport.h"
#include "link/Transport.h"

// The port the connection opens: a serial device, or the meter's line behind a device server
// at "tcp://host:port". It forwards to whichever of the two was opened last, so the link's
// framing, gap, time-out and retries are the same on both.
class PortTransport : public Transport {
    Q_OBJECT
public:
    explicit PortTransport(QObject* parent = nullptr);

    bool isOpen() const override { return m_opened->isOpen(); }
    QByteArray takeAll() override { return m_opened->takeAll(); }
    void discardInput() override { m_opened->discardInput(); }
    void send(const QByteArray& frame) override { m_opened->send(frame); }
    std::chrono::nanoseconds characterTime() const override { return m_opened->characterTime(); }

    // Opens `device`, a network address when it starts with "tcp://", otherwise a serial
    // device set to `settings`; on failure leaves the port closed and returns why.
    bool open(const QString& device, const LineSettings& settings, QString* error);
    // Applies new line settings to an open serial port. A network line takes them and
    // changes nothing: the device server's serial side is set up on the server.
    bool apply(const LineSettings& settings, QString* error);
    void close();
    // The device or address last opened, as given to open().
    const QString& Device() const { return m_device; }

private:
    SerialTransport m_serial;
    TcpTransport m_network;
    Transport* m_opened = &m_serial;
    QString m_device;
};
