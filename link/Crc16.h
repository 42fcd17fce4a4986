#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <array>

// The Modbus CRC-16 in its two-table form. `CrcHi` ends up holding the byte that is sent
// first (the low-order byte of the 16-bit CRC value) and `CrcLo` the byte sent second, so
// a frame is closed by appending CrcHi, then CrcLo.
class Crc16 {
public:
    // Fills both tables from the reflected polynomial 0xA001; they equal the published
    // auchCRCHi / auchCRCLo tables.
    void BuildCrcTables();
    void CrcInit();
    void CrcUpdate(const quint8& byte);

    // CrcInit, then CrcUpdate over `length` bytes of `data` from its start.
    void CrcOver(const QByteArray& data, qsizetype length);

    std::array<quint8, 256> CrcTableHi{};
    std::array<quint8, 256> CrcTableLo{};
    quint8 CrcHi = 0xFF;
    quint8 CrcLo = 0xFF;
};

// The two CRC bytes of `length` leading bytes of `data`, in transmission order.
// Builds its own tables; for places that check one frame and do not keep CRC state.
QByteArray ModbusCrcBytes(const QByteArray& data, qsizetype length);
