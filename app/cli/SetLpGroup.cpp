// set lp-group: a load-profile group's set-up, written whole. What the command line does not
// give is written as the meter reports it, so that the write leaves it as it is.
#include "app/cli/SetCommand.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ExitCodes.h"

namespace {

// The set-up's fields: the channel count, the interval, then one code per channel.
constexpr int kChannelsField = 0;
constexpr int kIntervalField = 1;
constexpr int kCodesField = 2;

// The group's value behind field `field`, as the meter reports it.
int Reported(const MeterReading::LoadProfileGroup& group, int field)
{
    if (field == kChannelsField)
        return group.channelCount;
    if (field == kIntervalField)
        return group.intervalMinutes;
    return group.channelCodes.value(field - kCodesField);
}

} // namespace

QString GroupFieldName(int field)
{
    if (field == kChannelsField)
        return QStringLiteral("channel count");
    if (field == kIntervalField)
        return QStringLiteral("interval");
    return QStringLiteral("channel %1 code").arg(field - kCodesField + 1);
}

std::optional<QStringList> GroupSetUpWords(const SetTarget& target, const QString& channels, const QString& interval,
                                           const QString& codes)
{
    QStringList words(target.entry->fields.size());
    words[kChannelsField] = channels;
    words[kIntervalField] = interval;
    if (codes.isEmpty())
        return words;
    const QStringList given = codes.split(QLatin1Char(','));
    const qsizetype most = words.size() - kCodesField;
    if (given.size() > most) {
        Fail(kExitBadArguments, QStringLiteral("%1 has %2 channels, not %3 codes").arg(target.entry->name).arg(most).arg(given.size()));
        return std::nullopt;
    }
    for (int k = 0; k < given.size(); ++k) {
        const QString code = given[k].trimmed();
        // An empty word would stand for the meter's code.
        if (code.isEmpty()) {
            NoneOfTheChoices(target, kCodesField + k, code);
            return std::nullopt;
        }
        words[kCodesField + k] = code;
    }
    return words;
}

std::optional<QStringList> CompleteGroupSetUp(const SetTarget& target, QStringList words, const MeterReading& reading)
{
    const MeterReading::LoadProfileGroup& held = reading.loadProfile[std::size_t(target.group - 1)];
    for (int field = 0; field < words.size(); ++field) {
        if (words[field].isEmpty())
            words[field] = QString::number(Reported(held, field));
    }
    // The words given were checked before: a refused one is the meter's.
    if (const std::optional<int> field = RefusedField(target.entry->setting, words)) {
        Fail(kExitBadArguments, QStringLiteral("%1 reports %2 %3, none of the choices: give it on the command line")
                                    .arg(target.entry->name, GroupFieldName(*field), words[*field]));
        return std::nullopt;
    }
    return words;
}

QString RecordsDeleted(const SetTarget& target, const MeterReading& before, const MeterReading& after)
{
    const std::size_t group = std::size_t(target.group - 1);
    const int held = before.loadProfile[group].validIntervals;
    const int now = after.loadProfile[group].validIntervals;
    if (now >= held)
        return QString();
    return QStringLiteral("Its records were deleted: %1 intervals before, %2 now.").arg(held).arg(now);
}
