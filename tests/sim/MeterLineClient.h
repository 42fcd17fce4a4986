#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QSerialPort>
#include <QString>

// What arrived after a request, with the times (ms after sending) of its first and last bytes.
struct Reception {
    QByteArray bytes;
    qint64 firstMs = -1;
    qint64 lastMs = -1;
};

// The master's end of the simulated meter's line: a QSerialPort as the tool uses, plus frame
// helpers with a bitwise CRC of their own, so the meter's CRC is checked independently.
class MeterLineClient {
public:
    explicit MeterLineClient(const QString& device, qint32 baud = 19200,
                             QSerialPort::StopBits stopBits = QSerialPort::OneStop);
    bool isOpen() const { return m_port.isOpen(); }
    void setBaudRate(qint32 baud) { m_port.setBaudRate(baud); }

    // Sends `bytes` as they are; then collects what arrives until `expected` bytes are in or
    // `waitMs` passed. A silence check is `send(..., 1, 300).bytes.isEmpty()`.
    Reception send(const QByteArray& bytes, qsizetype expected, int waitMs = 1000);
    // Sends `body` with its CRC appended.
    Reception request(const QByteArray& body, qsizetype expected, int waitMs = 1000)
    {
        return send(withCrc(body), expected, waitMs);
    }

    static QByteArray withCrc(QByteArray body);
    static bool crcGood(const QByteArray& frame);
    static QByteArray read(quint8 address, quint8 function, quint16 start, quint16 count);
    static QByteArray writeSingle(quint8 address, quint16 reg, quint16 value);
    static QByteArray writeMultiple(quint8 address, quint16 start, const QList<quint16>& values);
    // The register values of a read reply.
    static QList<quint16> words(const QByteArray& reply);
    // The meter's float at `index` of `words`: low-order register first.
    static float floatAt(const QList<quint16>& words, qsizetype index);

private:
    QSerialPort m_port;
};
