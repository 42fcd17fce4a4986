#include "MeterLineClient.h"

#include <QDeadlineTimer>

#include <bit>

namespace {

quint16 bitwiseCrc(const QByteArray& data)
{
    quint16 crc = 0xFFFF;
    for (char byte : data) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? static_cast<quint16>((crc >> 1) ^ 0xA001) : static_cast<quint16>(crc >> 1);
    }
    return crc;
}

void appendWord(QByteArray& frame, quint16 word)
{
    frame.append(static_cast<char>(word >> 8));
    frame.append(static_cast<char>(word & 0xFF));
}

} // namespace

MeterLineClient::MeterLineClient(const QString& device, qint32 baud, QSerialPort::StopBits stopBits)
{
    m_port.setPortName(device);
    m_port.setBaudRate(baud);
    m_port.setStopBits(stopBits);
    m_port.setParity(QSerialPort::NoParity);
    m_port.open(QIODevice::ReadWrite);
}

Reception MeterLineClient::send(const QByteArray& bytes, qsizetype expected, int waitMs)
{
    m_port.clear();
    Reception reception;
    QElapsedTimer clock;
    clock.start();
    m_port.write(bytes);
    m_port.waitForBytesWritten(waitMs);
    const QDeadlineTimer deadline(waitMs);
    while (reception.bytes.size() < expected && m_port.waitForReadyRead(int(deadline.remainingTime()))) {
        reception.bytes += m_port.readAll();
        reception.lastMs = clock.elapsed();
        if (reception.firstMs < 0)
            reception.firstMs = reception.lastMs;
    }
    return reception;
}

QByteArray MeterLineClient::withCrc(QByteArray body)
{
    const quint16 crc = bitwiseCrc(body);
    body.append(static_cast<char>(crc & 0xFF));
    body.append(static_cast<char>(crc >> 8));
    return body;
}

bool MeterLineClient::crcGood(const QByteArray& frame)
{
    return frame.size() >= 4 && withCrc(frame.chopped(2)) == frame;
}

QByteArray MeterLineClient::read(quint8 address, quint8 function, quint16 start, quint16 count)
{
    QByteArray body;
    body.append(static_cast<char>(address));
    body.append(static_cast<char>(function));
    appendWord(body, start);
    appendWord(body, count);
    return body;
}

QByteArray MeterLineClient::writeSingle(quint8 address, quint16 reg, quint16 value)
{
    return read(address, 6, reg, value); // the same four fields: register, then value
}

QByteArray MeterLineClient::writeMultiple(quint8 address, quint16 start, const QList<quint16>& values)
{
    QByteArray body = read(address, 16, start, static_cast<quint16>(values.size()));
    body.append(static_cast<char>(2 * values.size()));
    for (quint16 value : values)
        appendWord(body, value);
    return body;
}

QList<quint16> MeterLineClient::words(const QByteArray& reply)
{
    QList<quint16> values;
    for (qsizetype i = 3; i + 1 < reply.size() - 2; i += 2)
        values.append(static_cast<quint16>((static_cast<quint8>(reply[i]) << 8) | static_cast<quint8>(reply[i + 1])));
    return values;
}

float MeterLineClient::floatAt(const QList<quint16>& words, qsizetype index)
{
    return std::bit_cast<float>(static_cast<quint32>(words.at(index)) | (static_cast<quint32>(words.at(index + 1)) << 16));
}
