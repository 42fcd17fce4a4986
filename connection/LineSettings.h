#pragma once

#include <QSerialPort>
#include <QString>

#include <optional>

// A settings string as the port lists build it: baud rate, parity letter, data bits and stop
// bits separated by commas, for instance "19200,n,8,1".
struct LineSettings {
    qint32 baudRate = 19200;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;

    // Nothing when the string cannot be applied to a port (a missing or unknown field).
    static std::optional<LineSettings> Parse(const QString& text);
};
