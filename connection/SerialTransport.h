#pragma once

#include "connection/LineSettings.h"
#include "link/Transport.h"

#include <QSerialPort>

// The serial port the tool talks through: a hardware port, a USB adapter or the simulated
// meter's pseudo-terminal, all reached through QSerialPort. No handshaking.
class SerialTransport : public Transport {
    Q_OBJECT
public:
    explicit SerialTransport(QObject* parent = nullptr);

    // How to get the right to a serial port the system refused, added to the open error.
    static QString PermissionAdvice()
    {
        return QStringLiteral("on Linux, add your user to the dialout group (sudo usermod -aG dialout $USER), "
                              "then log out and in again");
    }

    bool isOpen() const override;
    QByteArray takeAll() override;
    void discardInput() override;
    void send(const QByteArray& frame) override;
    std::chrono::nanoseconds characterTime() const override;

    // Opens `device` with `settings`; on failure leaves the port closed and returns why.
    bool open(const QString& device, const LineSettings& settings, QString* error);
    // Applies new line settings to the open port.
    bool apply(const LineSettings& settings, QString* error);
    void close();

private:
    void onError(QSerialPort::SerialPortError error);

    QSerialPort m_port;
    bool m_pseudoTerminal = false;
};
