// set: one meter setting, written as the window writes it. The words are checked as the
// operator's input is; once the meter answers, the setting is asked for with that value, the
// poll cycle sends it and the settings history says how it ended.
#include "app/cli/SetCommand.h"

#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"

#include <QTextStream>

namespace {

const QCommandLineOption kYes(QStringLiteral("yes"),
    QStringLiteral("Answer the window's question (clear kWh, delete load-profile records) with OK."));
const QCommandLineOption kChannels(QStringLiteral("channels"), QStringLiteral("lp-group: the number of channels."),
                                   QStringLiteral("N"));
const QCommandLineOption kInterval(QStringLiteral("interval"), QStringLiteral("lp-group: the interval in minutes."),
                                   QStringLiteral("MIN"));
const QCommandLineOption kCodes(QStringLiteral("codes"),
    QStringLiteral("lp-group: channel codes from channel 1 on, comma-separated (1,2,3)."), QStringLiteral("LIST"));

// The window's question before a write that deletes what cannot be had back.
QString QuestionOf(const SettingSpec& entry)
{
    return entry.caption + QStringLiteral(": ") + entry.question;
}

// The settings lp-group and lp-clear choose between by their GROUP.
bool ByGroup(const SettingSpec& entry)
{
    return entry.key == SpecOf(Setting::LpGroup1).key || entry.key == SpecOf(Setting::LpClear1).key;
}

QString Syntax(const SettingSpec& entry)
{
    return ByGroup(entry) ? QStringLiteral("1|2") : FieldWords(entry);
}

// The words as the operator's input is checked, before anything goes on line. A group
// set-up's word left empty will be what the meter holds, checked once it has said: an entry of
// the field stands in for it here.
int CheckWords(const SetTarget& target, QStringList words)
{
    const SettingSpec& entry = *target.entry;
    if (target.IsGroupSetUp()) {
        for (qsizetype i = 0; i < words.size(); ++i) {
            if (words[i].isEmpty())
                words[i] = entry.fields[i].choices.value(0);
        }
    }
    const SourcedValue value = ValueFromTexts(entry.setting, words);
    if (value.state == SourcedValue::State::Empty)
        return Fail(kExitRefused, QStringLiteral("nothing was sent: the value is empty"));
    if (value.state == SourcedValue::State::Value)
        return kExitOk;
    const int field = RefusedField(entry.setting, words).value_or(0);
    if (!entry.fields[field].Typed())
        return NoneOfTheChoices(target, field, words[field]);
    return Fail(kExitRefused, QStringLiteral("%1 \"%2\" refused: %3").arg(entry.key, words[field], value.reason));
}

int ExitStatusOf(SettingOutcome::Result result)
{
    switch (result) {
    case SettingOutcome::NoReply:
    case SettingOutcome::LineLost:
    case SettingOutcome::OffLineUnconfirmed:
    case SettingOutcome::Dropped:
        return kExitNoAnswer;
    default:
        return kExitRefused;
    }
}

// "<setting>: <before> → <after>: <outcome>" on stdout and 0 when confirmed, else on stderr.
// A value the meter never took has no text of the write: it stands as typed.
int Finish(const SettingOutcome& outcome, const QStringList& words)
{
    const QString result = QStringLiteral("%1: %2 → %3: %4")
                               .arg(SettingName(outcome.setting), outcome.from.isEmpty() ? QStringLiteral("?") : outcome.from,
                                    outcome.to.isEmpty() ? words.join(QLatin1Char(' ')) : outcome.to, outcome.Text());
    if (outcome.result == SettingOutcome::Confirmed) {
        QTextStream(stdout) << result << Qt::endl;
        return kExitOk;
    }
    return Fail(ExitStatusOf(outcome.result), result);
}

// The line option the tool now reaches the meter with, after a write that moved it; empty for
// the other settings.
QString FollowedOption(Setting setting, const MeterSession& session)
{
    switch (setting) {
    case Setting::Address: return QStringLiteral("--address %1").arg(session.Address());
    case Setting::BaudRate: return QStringLiteral("--baud %1").arg(session.BaudRate());
    case Setting::StopBit: return QStringLiteral("--stop-bits %1").arg(session.StopBits());
    default: return QString();
    }
}

// What comes of a write besides its result: where the meter answers now, what it deleted.
void Aftermath(const SetTarget& target, const SettingOutcome& outcome, const MeterSession& session, const MeterReading& before)
{
    if (target.IsGroupSetUp()) {
        const bool confirmed = outcome.result == SettingOutcome::Confirmed;
        const QString deleted = confirmed ? RecordsDeleted(target, before, session.Reading()) : QString();
        if (!deleted.isEmpty())
            QTextStream(stdout) << deleted << Qt::endl;
        return;
    }
    // The register is primary ÷ secondary; the real-time tab shows the primary volts it makes.
    if (outcome.setting == Setting::PtRatio2 && outcome.result == SettingOutcome::Confirmed)
        QTextStream(stdout) << "PT ratio 2 × PT ratio 1: " << QString::number(session.Reading().ptRatio2, 'f', 4) << " V" << Qt::endl;
    const QString followed = FollowedOption(outcome.setting, session);
    if (followed.isEmpty())
        return;
    if (outcome.result == SettingOutcome::Confirmed)
        QTextStream(stdout) << "The meter now answers at " << followed << ": use it from now on." << Qt::endl;
    else if (outcome.result == SettingOutcome::NotConfirmed || outcome.result == SettingOutcome::OffLineUnconfirmed)
        Fail(kExitRefused, QStringLiteral("the meter acknowledged the change: it may answer at %1 now").arg(followed));
}

int Write(ConsoleSession& console, const SetTarget& target, QStringList words, bool confirmed)
{
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    // The meter answers, and the history has its value before the write.
    const std::optional<MeterReading> before = console.NextReading();
    if (!before)
        return console.Ended();
    if (target.IsGroupSetUp()) {
        const std::optional<QStringList> complete = CompleteGroupSetUp(target, words, *before);
        if (!complete)
            return kExitBadArguments;
        words = *complete;
    }
    const Setting setting = target.entry->setting;
    const SettingValue value = ValueFromTexts(setting, words).value;
    if (!confirmed && DeletesRecords(setting, value, *before))
        return Fail(kExitRefused, QuestionOf(*target.entry) + QStringLiteral(" Nothing was sent: add --yes to confirm."));

    const std::optional<SettingOutcome> outcome = console.Write(setting, value);
    if (!outcome)
        return console.Ended();
    const int status = Finish(*outcome, words);
    Aftermath(target, *outcome, console.session(), *before);
    return status;
}

// The setting the positional words name, its name and GROUP taken off them. Nothing after a
// message on stderr.
std::optional<SetTarget> TargetOf(QStringList& words)
{
    if (words.isEmpty()) {
        Fail(kExitBadArguments, QStringLiteral("no setting given: one of %1 (see qx5820 set --help)").arg(SettingKeys()));
        return std::nullopt;
    }
    const QString key = words.takeFirst();
    SetTarget target{SpecByKey(key)};
    if (target.entry == nullptr) {
        Fail(kExitBadArguments, QStringLiteral("unknown setting \"%1\": one of %2").arg(key, SettingKeys()));
        return std::nullopt;
    }
    const bool byGroup = ByGroup(*target.entry);
    if (words.size() != (byGroup ? 1 : target.entry->fields.size())) {
        Fail(kExitBadArguments, QStringLiteral("usage: qx5820 set %1 %2").arg(key, Syntax(*target.entry)).trimmed());
        return std::nullopt;
    }
    if (!byGroup)
        return target;
    const QString group = words.takeFirst();
    if (group != QLatin1String("1") && group != QLatin1String("2")) {
        Fail(kExitBadArguments, QStringLiteral("%1 GROUP must be 1 or 2, not \"%2\"").arg(key, group));
        return std::nullopt;
    }
    target.group = group.toInt();
    if (target.group == 2)
        target.entry = &SpecOf(target.IsGroupSetUp() ? Setting::LpGroup2 : Setting::LpClear2);
    return target;
}

// The words of the value: as given, or for a group set-up from its options. Nothing after a
// message on stderr.
std::optional<QStringList> ValueWords(const CommandLine& line, const SetTarget& target, const QStringList& words)
{
    const bool groupOptions = line.IsSet(kChannels) || line.IsSet(kInterval) || line.IsSet(kCodes);
    const QString setUpKey = SpecOf(Setting::LpGroup1).key;
    if (groupOptions && !target.IsGroupSetUp()) {
        Fail(kExitBadArguments, QStringLiteral("--channels, --interval and --codes belong to %1").arg(setUpKey));
        return std::nullopt;
    }
    if (!target.IsGroupSetUp())
        return words;
    if (!groupOptions) {
        Fail(kExitBadArguments, QStringLiteral("%1 needs --channels, --interval or --codes").arg(setUpKey));
        return std::nullopt;
    }
    return GroupSetUpWords(target, line.Value(kChannels), line.Value(kInterval), line.Value(kCodes));
}

} // namespace

std::optional<int> RefusedField(Setting setting, const QStringList& words)
{
    // A value stops at its first empty word: the first refused prefix ends with the field.
    for (qsizetype i = 0; i < words.size(); ++i) {
        if (ValueFromTexts(setting, words.mid(0, i + 1)).state == SourcedValue::State::Refused)
            return int(i);
    }
    return std::nullopt;
}

int NoneOfTheChoices(const SetTarget& target, int field, const QString& word)
{
    return Fail(kExitBadArguments, QStringLiteral("%1 must be one of %2, not \"%3\"")
                                       .arg(target.FieldName(field), AllowedValues(target.entry->fields[field].choices), word));
}

QString SetTarget::FieldName(int field) const
{
    if (IsGroupSetUp())
        return QStringLiteral("%1 %2 %3").arg(entry->key).arg(group).arg(GroupFieldName(field));
    return entry->key + QLatin1Char(' ') + entry->fields[field].word;
}


int RunSet(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("set"), SetHelp(), MeterLine{});
    line.Add(kYes);
    line.Add(kChannels);
    line.Add(kInterval);
    line.Add(kCodes);
    line.AddPositional(QStringLiteral("SETTING"), QStringLiteral("The setting to write, as listed above."));
    line.AddPositional(QStringLiteral("VALUE"), QStringLiteral("Its value(s), as listed above."), QStringLiteral("[VALUE...]"));
    if (const auto status = line.Parse(arguments))
        return *status;
    QStringList positional = line.Positional();
    const std::optional<SetTarget> target = TargetOf(positional);
    if (!target)
        return kExitBadArguments;
    const std::optional<QStringList> words = ValueWords(line, *target, positional);
    if (!words)
        return kExitBadArguments;
    if (const int status = CheckWords(*target, *words); status != kExitOk)
        return status;
    const auto options = line.Line();
    if (!options)
        return kExitBadArguments;

    ConsoleSession console(*options);
    return Write(console, *target, *words, line.IsSet(kYes));
}
