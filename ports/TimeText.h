#pragma once

#include <QDateTime>
#include <QString>

// The PC's time as files and scripts get it: ISO 8601 to the millisecond with the offset from
// UTC always written out ("2026-11-24T09:05:00.125+01:00", "+00:00" rather than Qt's "Z"), so
// that every line reads alike and a file that travels between sites keeps its moment.
QString IsoTimeWithOffset(const QDateTime& time);
