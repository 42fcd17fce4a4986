#include "link/Crc16.h"

void Crc16::BuildCrcTables()
{
    for (int i = 0; i < 256; ++i) {
        quint16 crc = static_cast<quint16>(i);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? static_cast<quint16>((crc >> 1) ^ 0xA001) : static_cast<quint16>(crc >> 1);
        CrcTableHi[static_cast<std::size_t>(i)] = static_cast<quint8>(crc & 0xFF);
        CrcTableLo[static_cast<std::size_t>(i)] = static_cast<quint8>(crc >> 8);
    }
}

void Crc16::CrcInit()
{
    CrcHi = 0xFF;
    CrcLo = 0xFF;
}

void Crc16::CrcUpdate(const quint8& byte)
{
    const std::size_t index = static_cast<quint8>(byte ^ CrcHi);
    CrcHi = static_cast<quint8>(CrcLo ^ CrcTableHi[index]);
    CrcLo = CrcTableLo[index];
}

void Crc16::CrcOver(const QByteArray& data, qsizetype length)
{
    CrcInit();
    for (qsizetype i = 0; i < length; ++i)
        CrcUpdate(static_cast<quint8>(data.at(i)));
}

QByteArray ModbusCrcBytes(const QByteArray& data, qsizetype length)
{
    static const Crc16 tables = [] {
        Crc16 crc;
        crc.BuildCrcTables();
        return crc;
    }();
    Crc16 crc = tables;
    crc.CrcOver(data, length);
    QByteArray out;
    out.append(static_cast<char>(crc.CrcHi));
    out.append(static_cast<char>(crc.CrcLo));
    return out;
}
