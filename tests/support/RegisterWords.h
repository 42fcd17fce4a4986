#pragma once

#include <QByteArray>
#include <QtGlobal>

// Register `index` of a block of reply data, high byte first.
inline quint16 RegisterWord(const QByteArray& data, int index)
{
    return quint16(quint8(data[2 * index]) << 8 | quint8(data[2 * index + 1]));
}
