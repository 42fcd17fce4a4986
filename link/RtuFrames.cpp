#include "link/RtuFrames.h"

#include <cmath>

namespace Rtu {
namespace {

void appendWord(QByteArray& frame, quint16 word)
{
    frame.append(static_cast<char>((word & 0xFF00) / 256));
    frame.append(static_cast<char>(word & 0xFF));
}

QByteArray header(quint8 address, quint8 function, quint16 first, quint16 second)
{
    QByteArray frame;
    frame.append(static_cast<char>(address));
    frame.append(static_cast<char>(function));
    appendWord(frame, first);
    appendWord(frame, second);
    return frame;
}

QByteArray withCrcRoom(QByteArray frame)
{
    frame.append(2, '\0');
    return frame;
}

} // namespace

QByteArray ReadRequest(quint8 address, quint8 function, quint16 start, quint16 count)
{
    return withCrcRoom(header(address, function, start, count));
}

QByteArray WriteSingleRequest(quint8 address, quint16 reg, quint16 value)
{
    return withCrcRoom(header(address, kWriteSingle, reg, value));
}

QByteArray WriteMultipleRequest(quint8 address, quint16 start, quint16 count, const QByteArray& data)
{
    QByteArray frame = header(address, kWriteMultiple, start, count);
    frame.append(static_cast<char>(2 * count));
    frame.append(data.left(2 * qsizetype(count)));
    frame.append(2 * qsizetype(count) - qMin(data.size(), 2 * qsizetype(count)), '\0');
    return withCrcRoom(frame);
}

QByteArray RegisterData(const QList<quint16>& values)
{
    QByteArray data;
    for (quint16 value : values) {
        data.append(char(value >> 8));
        data.append(char(value & 0xFF));
    }
    return data;
}

void Seal(Crc16& crc, QByteArray& frame)
{
    const qsizetype body = frame.size() - 2;
    crc.CrcOver(frame, body);
    frame[body] = static_cast<char>(crc.CrcHi);
    frame[body + 1] = static_cast<char>(crc.CrcLo);
}

bool CrcMatches(Crc16& crc, const QByteArray& reply, qsizetype length)
{
    if (length < 4 || reply.size() < length)
        return false;
    crc.CrcOver(reply, length - 2);
    return crc.CrcHi == static_cast<quint8>(reply.at(length - 2))
        && crc.CrcLo == static_cast<quint8>(reply.at(length - 1));
}

std::optional<quint8> ExceptionCode(Crc16& crc, const QByteArray& reply, quint8 address, quint8 function)
{
    if (reply.size() != kExceptionReplyLength || static_cast<quint8>(reply.at(0)) != address
        || static_cast<quint8>(reply.at(1)) != (function | 0x80) || !CrcMatches(crc, reply, kExceptionReplyLength))
        return std::nullopt;
    return static_cast<quint8>(reply.at(2));
}

QString ExceptionName(quint8 code)
{
    switch (code) {
    case 1: return QStringLiteral("Illegal Function");
    case 2: return QStringLiteral("Illegal Data Address");
    case 3: return QStringLiteral("Illegal Data Value");
    case 4: return QStringLiteral("Slave Device Failure");
    case 6: return QStringLiteral("Slave Device Busy");
    default: return QStringLiteral("Unknown");
    }
}

QByteArray SingleToBytes(double value)
{
    const QByteArray zeros(4, '\0');
    if (!std::isfinite(value) || value == 0.0)
        return zeros;
    const bool negative = value < 0;
    value = std::fabs(value);
    int exponent = 127;
    while (value < 1.0 && exponent > 0) {
        value *= 2;
        --exponent;
    }
    while (value >= 2.0 && exponent < 255) {
        value /= 2;
        ++exponent;
    }
    if (exponent <= 0 || exponent >= 255)
        return zeros;

    double fraction = (value - 1.0) * 128.0;
    const int top = static_cast<int>(fraction);
    fraction = (fraction - top) * 256.0;
    const int middle = static_cast<int>(fraction);
    fraction = (fraction - middle) * 256.0;
    const int low = static_cast<int>(fraction);

    QByteArray out(4, '\0');
    out[0] = static_cast<char>((negative ? 0x80 : 0) | (exponent >> 1));
    out[1] = static_cast<char>(((exponent & 1) << 7) | top);
    out[2] = static_cast<char>(middle);
    out[3] = static_cast<char>(low);
    return out;
}

QString FrameEcho(const QByteArray& frame)
{
    QString text;
    for (char byte : frame)
        text += QString::number(static_cast<quint8>(byte)) + QLatin1Char(' ');
    return text + QStringLiteral("\r\n");
}

} // namespace Rtu
