#pragma once

#include "link/Transport.h"

#include <QTcpSocket>
#include <QUrl>

#include <optional>

// The meter's serial line reached through a device server or gateway: the same RTU frames,
// CRC included, carried over a TCP connection to "tcp://host:port".
class TcpTransport : public Transport {
    Q_OBJECT
public:
    // How long going on line waits for the device server to take the connection.
    static constexpr int kConnectTimeoutMs = 5000;

    explicit TcpTransport(QObject* parent = nullptr);

    // Whether `device` names a network address rather than a serial device.
    static bool IsAddress(const QString& device);
    // The host and port of "tcp://host:port"; nothing for anything else (no port, a path, a
    // query, a user name).
    static std::optional<QUrl> AddressOf(const QString& device);

    bool isOpen() const override;
    QByteArray takeAll() override;
    void discardInput() override;
    void send(const QByteArray& frame) override;
    // Zero: the device server's serial side is not ours to time, and its bytes come in
    // whatever packets the network makes of them.
    std::chrono::nanoseconds characterTime() const override;

    // Connects to `address` ("tcp://host:port"), yielding to the event loop meanwhile; on
    // failure, on time-out, or when close() ends the wait, leaves it closed and returns why.
    bool open(const QString& address, QString* error);
    void close();

private:
    void onError();

    QTcpSocket m_socket;
    bool m_connected = false; // from the connection's start until it is closed or lost
};
