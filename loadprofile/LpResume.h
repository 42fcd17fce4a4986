#pragma once

#include "loadprofile/LpProgressRecord.h"
#include "measure/MeterReading.h"

#include <QDateTime>
#include <QString>

#include <optional>

// Whether the download `record` describes can go on into its file in `folder`, the meter now
// reporting `group` for its group. The group must record the channels the file's columns
// name, and still hold the range (fewer intervals: it was cleared since). The file must end
// where the record says: a run killed between a step's rows and its record leaves those rows
// beyond that point, and they are cut off to be read again; anything else there (a shorter
// file, another download's block) refuses. Nothing when the download can go on; otherwise why
// not, as a clause without a full stop.
std::optional<QString> PrepareLpResume(const LpProgressRecord& record, const QString& folder,
                                       const MeterReading::LoadProfileGroup& group);

// The time stamp the first interval appended by the continued download must carry: the last
// row the file holds up to the record's size, plus the group's interval. A meter whose interval
// numbers moved meanwhile (its memory full and rolling, or cleared and filled again) would
// otherwise continue the file with a jump. Nothing when the download appended no row yet.
std::optional<QDateTime> LpNextRowTime(const LpProgressRecord& record, const QString& folder, int intervalMinutes);
