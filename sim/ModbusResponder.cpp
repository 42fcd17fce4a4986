#include "sim/ModbusResponder.h"

#include "link/Crc16.h"
#include "link/RtuFrames.h"

namespace sim::ModbusResponder {
namespace {

constexpr quint16 kMaxReadCount = 125;
constexpr quint16 kMaxWriteCount = 123;
constexpr qsizetype kWriteMultipleHeader = 7; // address, function, start, count, byte count

quint16 wordAt(const QByteArray& frame, qsizetype at)
{
    return static_cast<quint16>((static_cast<quint8>(frame.at(at)) << 8) | static_cast<quint8>(frame.at(at + 1)));
}

void appendWord(QByteArray& frame, quint16 word)
{
    frame.append(static_cast<char>(word >> 8));
    frame.append(static_cast<char>(word & 0xFF));
}

QByteArray failure(const QByteArray& request, ModbusError error)
{
    return exceptionReply(static_cast<quint8>(request.at(0)), static_cast<quint8>(request.at(1)),
                          static_cast<quint8>(error));
}

QByteArray answerRead(const MeterModel& model, const QByteArray& request, Table table)
{
    const quint16 start = wordAt(request, 2);
    const quint16 count = wordAt(request, 4);
    if (count == 0 || count > kMaxReadCount)
        return failure(request, ModbusError::IllegalDataValue);
    const RegisterRead read = model.read(table, start, count);
    if (read.error != ModbusError::None)
        return failure(request, read.error);
    QByteArray reply = request.left(2);
    reply.append(static_cast<char>(2 * count));
    for (quint16 value : read.values)
        appendWord(reply, value);
    return sealed(reply);
}

// Both writes answer with the request's first six bytes: address, function, register and
// value (function 6) or start and count (function 16).
QByteArray answerWrite(MeterModel& model, const QByteArray& request, quint16 start, const QList<quint16>& values)
{
    const ModbusError error = model.write(start, values);
    return error == ModbusError::None ? sealed(request.left(6)) : failure(request, error);
}

QByteArray answerWriteMultiple(MeterModel& model, const QByteArray& request)
{
    const quint16 count = wordAt(request, 4);
    const auto byteCount = static_cast<quint8>(request.at(6));
    if (count == 0 || count > kMaxWriteCount || byteCount != 2 * count)
        return failure(request, ModbusError::IllegalDataValue);
    QList<quint16> values;
    for (quint16 i = 0; i < count; ++i)
        values.append(wordAt(request, kWriteMultipleHeader + 2 * i));
    return answerWrite(model, request, wordAt(request, 2), values);
}

} // namespace

QByteArray answer(MeterModel& model, const QByteArray& request)
{
    switch (static_cast<quint8>(request.at(1))) {
    case Rtu::kReadHolding: return answerRead(model, request, Table::Holding);
    case Rtu::kReadInput: return answerRead(model, request, Table::Input);
    case Rtu::kWriteSingle: return answerWrite(model, request, wordAt(request, 2), {wordAt(request, 4)});
    case Rtu::kWriteMultiple: return answerWriteMultiple(model, request);
    default: return failure(request, ModbusError::IllegalFunction);
    }
}

std::optional<quint16> valueWritten(const QByteArray& request, quint16 reg)
{
    const quint8 function = static_cast<quint8>(request.at(1));
    if (function == Rtu::kWriteSingle)
        return wordAt(request, 2) == reg ? std::optional(wordAt(request, 4)) : std::nullopt;
    if (function != Rtu::kWriteMultiple || request.size() < kWriteMultipleHeader)
        return std::nullopt;
    const quint16 start = wordAt(request, 2);
    const quint16 count = wordAt(request, 4);
    const bool wellFormed = static_cast<quint8>(request.at(6)) == 2 * count && request.size() >= kWriteMultipleHeader + 2 * count;
    if (!wellFormed || reg < start || reg - start >= count)
        return std::nullopt;
    return wordAt(request, kWriteMultipleHeader + 2 * (reg - start));
}

QByteArray exceptionReply(quint8 address, quint8 function, quint8 code)
{
    QByteArray body;
    body.append(static_cast<char>(address));
    body.append(static_cast<char>(function | 0x80));
    body.append(static_cast<char>(code));
    return sealed(body);
}

QByteArray sealed(QByteArray body)
{
    return body + ModbusCrcBytes(body, body.size());
}

} // namespace sim::ModbusResponder
