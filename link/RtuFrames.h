#pragma once

#include "link/Crc16.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <optional>

// Byte layouts of the Modbus RTU frames the tool sends and accepts. Multi-byte fields are
// high byte first; the two CRC bytes close every frame.
namespace Rtu {

inline constexpr quint8 kReadHolding = 3;
inline constexpr quint8 kReadInput = 4;
inline constexpr quint8 kWriteSingle = 6;
inline constexpr quint8 kWriteMultiple = 16;

// A write reply echoes address, function, register and count: 8 bytes with its CRC.
inline constexpr qsizetype kWriteReplyLength = 8;

// An exception reply is address, function | 0x80, exception code and the CRC.
inline constexpr qsizetype kExceptionReplyLength = 5;

// A read reply is address, function, byte count, 2·count data bytes and the CRC.
constexpr qsizetype ReadReplyLength(quint16 count) { return 2 * qsizetype(count) + 5; }

// Requests with two zero placeholder bytes for the CRC; `Seal` fills them in.
QByteArray ReadRequest(quint8 address, quint8 function, quint16 start, quint16 count);
QByteArray WriteSingleRequest(quint8 address, quint16 reg, quint16 value);
// `data` holds 2·count bytes, two per register, high byte first.
QByteArray WriteMultipleRequest(quint8 address, quint16 start, quint16 count, const QByteArray& data);

// The data bytes of register values: two per register, high byte first.
QByteArray RegisterData(const QList<quint16>& values);

// Computes the CRC over all but the last two bytes of `frame` and stores it there.
void Seal(Crc16& crc, QByteArray& frame);

// True when the first `length` bytes of `reply` end with their correct CRC: CrcHi against
// the second-to-last byte, CrcLo against the last.
bool CrcMatches(Crc16& crc, const QByteArray& reply, qsizetype length);

// The exception code when `reply` is, whole, a valid exception reply from `address` to a
// request of `function`; nothing for anything else (other length, address or function, bad CRC).
std::optional<quint8> ExceptionCode(Crc16& crc, const QByteArray& reply, quint8 address, quint8 function);

// What the status line calls an exception code: "Illegal Data Address" and so on, "Unknown"
// for codes the meter is not known to send.
QString ExceptionName(quint8 code);

// The four bytes of an IEEE-754 single, most significant first, built arithmetically by
// halving or doubling into [1, 2). Zero, subnormal results, overflow and NaN give zeros.
QByteArray SingleToBytes(double value);

// The request echo of the frames view: each byte in decimal followed by a blank, then CRLF.
QString FrameEcho(const QByteArray& frame);

} // namespace Rtu
