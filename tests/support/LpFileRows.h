#pragma once

// What a download wrote and what the simulated meter holds, as rows to compare: the tests
// and the download benchmarks check downloads the same way.

#include "link/RtuFrames.h"
#include "loadprofile/LpCsvFile.h"
#include "sim/SimulatedMeterHost.h"

#include <QByteArray>
#include <QFile>
#include <QList>

// The whole of a file; empty when it cannot be read.
inline QByteArray FileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The data rows of a download's CSV file: every line but the header lines ("Date : ..." and
// "Date,Time,..."), without the line end.
inline QList<QByteArray> DataRows(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<QByteArray> rows;
    for (QByteArray line : file.readAll().split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.isEmpty() && !line.startsWith("Date"))
            rows.append(line);
    }
    return rows;
}

// The rows of intervals first..last of `group` (0 or 1) of `channels` channels as the meter
// holds them, read from its model directly; the interval pointer is put back afterwards.
inline QList<QByteArray> MeterRows(sim::SimulatedMeterHost& meter, int group, int channels, int first, int last)
{
    const quint16 length = quint16(3 + 2 * channels);
    const quint16 area = quint16(0x2000 + 0x100 * group);
    QList<QByteArray> expected;
    meter.withModel([&](sim::MeterModel& model) {
        const quint16 pointer = model.holding(0x104D);
        for (int number = first; number <= last; ++number) {
            model.write(0x104D, {quint16(number)});
            const sim::RegisterRead read = model.read(sim::Table::Input, area, length);
            expected.append(LpCsvFile::Rows(Rtu::RegisterData(read.values), 1, channels).chopped(2));
        }
        model.write(0x104D, {pointer});
    });
    return expected;
}
