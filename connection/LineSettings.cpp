#include "connection/LineSettings.h"

#include <QStringList>

namespace {

std::optional<QSerialPort::Parity> parityOf(const QString& letter)
{
    const QString l = letter.trimmed().toLower();
    if (l == QLatin1String("n"))
        return QSerialPort::NoParity;
    if (l == QLatin1String("e"))
        return QSerialPort::EvenParity;
    if (l == QLatin1String("o"))
        return QSerialPort::OddParity;
    if (l == QLatin1String("m"))
        return QSerialPort::MarkParity;
    if (l == QLatin1String("s"))
        return QSerialPort::SpaceParity;
    return std::nullopt;
}

std::optional<QSerialPort::StopBits> stopBitsOf(const QString& text)
{
    const QString t = text.trimmed();
    if (t == QLatin1String("1"))
        return QSerialPort::OneStop;
    if (t == QLatin1String("1.5"))
        return QSerialPort::OneAndHalfStop;
    if (t == QLatin1String("2"))
        return QSerialPort::TwoStop;
    return std::nullopt;
}

} // namespace

std::optional<LineSettings> LineSettings::Parse(const QString& text)
{
    const QStringList fields = text.split(QLatin1Char(','));
    if (fields.size() != 4)
        return std::nullopt;
    bool baudOk = false;
    bool bitsOk = false;
    const qint32 baud = fields[0].trimmed().toInt(&baudOk);
    const int bits = fields[2].trimmed().toInt(&bitsOk);
    const auto parity = parityOf(fields[1]);
    const auto stop = stopBitsOf(fields[3]);
    if (!baudOk || baud <= 0 || !bitsOk || bits < 5 || bits > 8 || !parity || !stop)
        return std::nullopt;
    return LineSettings{baud, *parity, static_cast<QSerialPort::DataBits>(bits), *stop};
}
