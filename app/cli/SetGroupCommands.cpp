// set lp-group and set lp-clear: a load-profile group's set-up and the clearing of its records,
// through the "Setting" and "Clear Group Data" buttons of the window. These writes keep no
// history entry: they are confirmed by the group as the next readings report it.
#include "app/cli/SetCommand.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"
#include "ports/TextNumbers.h"
#include "loadprofile/LpCsvFile.h"

#include <QTextStream>

#include <functional>
#include <optional>

namespace {

struct Group {
    const char* lists; // channel count, interval, then one code list per channel
    int channels;
    PendingCommands::Flag set;
    PendingCommands::Flag clear;
    void (LpGroupSettings::*setClick)();
    void (LpGroupSettings::*clearClick)();
};

const Group kGroups[] = {
    {"Combo_G1_Setting", 12, &PendingCommands::bPendingLpG1Set, &PendingCommands::bPendingLpG1Clear,
     &LpGroupSettings::Comm_LP_G1_Set_Click, &LpGroupSettings::Comm_Clr_G1_Data_Click},
    {"Combo_G2_Setting", 8, &PendingCommands::bPendingLpG2Set, &PendingCommands::bPendingLpG2Clear,
     &LpGroupSettings::Comm_LP_G2_Set_Click, &LpGroupSettings::Comm_Clr_G2_Data_Click},
};
constexpr int kCodesElement = 2;

std::optional<int> GroupIndex(const QString& text, const char* setting)
{
    if (text == QLatin1String("1") || text == QLatin1String("2"))
        return text.toInt() - 1;
    Fail(kExitBadArguments, QStringLiteral("%1 GROUP must be 1 or 2, not \"%2\"").arg(QLatin1String(setting), text));
    return std::nullopt;
}

QString GroupName(int group)
{
    return QStringLiteral("LP group %1").arg(group + 1);
}

QString SetUpText(int channels, int interval, const QList<int>& codes)
{
    QStringList texts;
    for (int code : codes)
        texts.append(QString::number(code));
    return QStringLiteral("%1 channels every %2 min, codes %3").arg(channels).arg(interval).arg(texts.join(QLatin1Char(',')));
}

QString ElementName(int element)
{
    if (element == 0)
        return QStringLiteral("channel count");
    if (element == 1)
        return QStringLiteral("interval");
    return QStringLiteral("channel %1 code").arg(element - kCodesElement + 1);
}

// The group's value behind list element `element`, as the meter reports it.
int Reported(const MeterReading::LoadProfileGroup& group, int element)
{
    if (element == 0)
        return group.channelCount;
    if (element == 1)
        return group.intervalMinutes;
    return group.channelCodes.value(element - kCodesElement);
}

// Waits for the tick that serves `flag`, then for a reading that `shows` the write. The
// outcome in the settings history's words; nothing when the tool went off line without the
// meter refusing, or was interrupted.
std::optional<QString> AwaitWrite(ConsoleSession& console, PendingCommands::Flag flag,
                                  const std::function<bool(const MeterReading&)>& shows, MeterReading& last)
{
    MeterSession& session = console.session();
    console.Await([&session, flag] { return session.poll.pending.*flag == kFalse; });
    if (console.Interrupted())
        return std::nullopt;
    if (!session.connection.bOnLine.isTrue()) {
        const quint8 exception = session.connection.link.LastException;
        return exception == 0 ? std::nullopt
                              : std::optional(SettingsHistory::FailureText(TransactionOutcome::Failed, exception));
    }
    for (int tick = 0; tick < SettingsHistory::kConfirmTicks; ++tick) {
        const std::optional<MeterReading> reading = console.NextReading();
        if (!reading)
            return std::nullopt;
        last = *reading;
        if (shows(last))
            return SettingsHistory::kConfirmed;
    }
    return SettingsHistory::NotConfirmedText();
}

} // namespace

QString GroupSettingsHelp()
{
    TextScreen lists;
    lists.FillStartUpLists();
    const auto values = [&lists](int group, int element) {
        return AllowedValues(lists.entries.value(Element(kGroups[group].lists, element)));
    };
    const QString indent(2 + kHelpColumn + 1, QLatin1Char(' '));
    // The channel codes' names, as many to a line as fit.
    QStringList legend{QString()};
    for (int code = 1; code <= lists.Count(Element(kGroups[0].lists, kCodesElement)); ++code) {
        const QString item = QStringLiteral("%1 %2").arg(code).arg(LpCsvFile::ChannelName(code));
        QString& line = legend.last();
        if (line.isEmpty()) {
            line = item;
        } else if (indent.size() + line.size() + 2 + item.size() > kHelpWidth) {
            line += QLatin1Char(',');
            legend.append(item);
        } else {
            line += QStringLiteral(", ") + item;
        }
    }
    return QStringLiteral("  lp-group GROUP [--channels N] [--interval MIN] [--codes LIST]\n"
                          "%1a load-profile group's set-up; the rest stays as the meter has it.\n"
                          "%1GROUP 1 or 2; channels %2 (group 2: %3);\n"
                          "%1interval %4 minutes.\n"
                          "%1Channel codes %5:\n"
                          "%6\n"
                          "%1A new channel count deletes the group's records: only with --yes.\n"
                          "  %7 deletes a load-profile group's records; only with --yes")
        .arg(indent, values(0, 0), values(1, 0), values(0, 1), values(0, kCodesElement),
             indent + legend.join(QLatin1Char('\n') + indent),
             QStringLiteral("lp-clear GROUP").leftJustified(kHelpColumn));
}

int SetGroup(ConsoleSession& console, const QString& groupText, const GroupChoices& choices)
{
    const std::optional<int> index = GroupIndex(groupText, "lp-group");
    if (!index)
        return kExitBadArguments;
    const Group& group = kGroups[*index];
    const int elements = kCodesElement + group.channels;
    const auto list = [&group](int element) { return Element(group.lists, element); };
    QList<bool> given(elements, false);
    const auto pick = [&](int element, const QString& text) {
        given[element] = true;
        return Pick(console.screen, list(element), text, QStringLiteral("lp-group %1 %2").arg(*index + 1).arg(ElementName(element)));
    };
    if (!choices.channels.isEmpty() && !pick(0, choices.channels))
        return kExitBadArguments;
    if (!choices.interval.isEmpty() && !pick(1, choices.interval))
        return kExitBadArguments;
    if (!choices.codes.isEmpty()) {
        const QStringList codes = choices.codes.split(QLatin1Char(','));
        if (codes.size() > group.channels)
            return Fail(kExitBadArguments, QStringLiteral("%1 has %2 channels, not %3 codes")
                                               .arg(GroupName(*index)).arg(group.channels).arg(codes.size()));
        for (int k = 0; k < codes.size(); ++k) {
            if (!pick(kCodesElement + k, codes[k].trimmed()))
                return kExitBadArguments;
        }
    }

    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    const std::optional<MeterReading> before = console.NextReading();
    if (!before)
        return console.Ended();
    // What was not given is picked as the meter has it, so that the write leaves it alone.
    const MeterReading::LoadProfileGroup held = before->loadProfile[std::size_t(*index)];
    for (int element = 0; element < elements; ++element) {
        if (given[element])
            continue;
        const QString value = QString::number(Reported(held, element));
        const qsizetype entry = console.screen.entries.value(list(element)).indexOf(value);
        if (entry < 0)
            return Fail(kExitBadArguments, QStringLiteral("%1 reports %2 %3, none of the choices: give it on the command line")
                                               .arg(GroupName(*index), ElementName(element), value));
        console.screen.Select(list(element), int(entry));
    }
    QList<int> chosen;
    for (int element = 0; element < elements; ++element)
        chosen.append(WholeNumberOf(console.screen.Text(list(element))).value_or(0));

    (console.session().lpGroups.*group.setClick)();
    if (console.session().poll.pending.*group.set == kFalse)
        return NotAsked(console.prompts);
    const std::size_t g = std::size_t(*index);
    MeterReading after;
    const auto shows = [g, &chosen](const MeterReading& r) {
        const MeterReading::LoadProfileGroup& now = r.loadProfile[g];
        return QList<int>{now.channelCount, now.intervalMinutes} + now.channelCodes == chosen;
    };
    const std::optional<QString> outcome = AwaitWrite(console, group.set, shows, after);
    if (!outcome)
        return console.Ended();
    const int status = Finish(console, GroupName(*index), SetUpText(held.channelCount, held.intervalMinutes, held.channelCodes),
                              SetUpText(chosen[0], chosen[1], chosen.mid(kCodesElement)), *outcome);
    if (status == kExitOk && after.loadProfile[g].validIntervals < held.validIntervals)
        QTextStream(stdout) << "Its records were deleted: " << held.validIntervals << " intervals before, "
                            << after.loadProfile[g].validIntervals << " now." << Qt::endl;
    return status;
}

int ClearGroup(ConsoleSession& console, const QString& groupText)
{
    const std::optional<int> index = GroupIndex(groupText, "lp-clear");
    if (!index)
        return kExitBadArguments;
    const Group& group = kGroups[*index];
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    const std::optional<MeterReading> before = console.NextReading();
    if (!before)
        return console.Ended();
    (console.session().lpGroups.*group.clearClick)();
    if (console.session().poll.pending.*group.clear == kFalse)
        return NotAsked(console.prompts);
    // A group just cleared may record a new interval before it is read again.
    const std::size_t g = std::size_t(*index);
    const int held = before->loadProfile[g].validIntervals;
    MeterReading after;
    const auto shows = [g, held](const MeterReading& r) {
        const int now = r.loadProfile[g].validIntervals;
        return now == 0 || now < held;
    };
    const std::optional<QString> outcome = AwaitWrite(console, group.clear, shows, after);
    if (!outcome)
        return console.Ended();
    return Finish(console, GroupName(*index) + QStringLiteral(" records"), QStringLiteral("%1 intervals").arg(held),
                  QStringLiteral("0 intervals"), *outcome);
}
