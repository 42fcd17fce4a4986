// set: one meter setting written as the window's button writes it. The value goes into the
// control the operator would pick or type it into, the control's own check and the button's
// click handler run, the poll cycle sends it, and the settings history says how it ended.
#include "app/cli/SetCommand.h"

#include "app/cli/Commands.h"
#include "app/cli/CommandLine.h"
#include "app/cli/ConsoleSession.h"
#include "app/cli/ExitCodes.h"

#include <QTextStream>


namespace {

enum class Entry { Picked, Typed };

// A control a value goes into, and the check that runs as the operator leaves it.
struct Field {
    const char* control;
    Entry entry;
    void (MeterSettings::*check)() = nullptr;
};

struct MeterSetting {
    const char* name;
    const char* syntax;  // the values after the name, one word each
    const char* meaning; // for --help; the entries of pick-only lists follow it
    PendingCommands::Flag flag;
    void (MeterSettings::*click)();
    QList<Field> fields; // one per value
};

using S = MeterSettings;
using P = PendingCommands;

const MeterSetting kSettings[] = {
    {"address", "N", "the meter's new Modbus address, 1 to 250; the tool follows it", &P::bPendingModbusAddr,
     &S::cmd_Test_Modbus_Click, {{"Combo_Modbus_add", Entry::Typed, &S::Combo_Modbus_add_Validate}}},
    {"baud", "RATE", "the meter's baud rate; the tool follows it", &P::bPendingBaudRate, &S::Cmd_Modbus_BaudRate_Click,
     {{"Combo_Modbus_BaudRate", Entry::Picked}}},
    {"stop-bits", "N", "the meter's stop bits; the tool follows them", &P::bPendingStopBit,
     &S::Comm_Change_StopBit_Click, {{"Combo_SetStopBit", Entry::Picked}}},
    {"wiring", "MODE", "the wiring mode", &P::bPendingWiring, &S::Comm_ChangeWiring_Click,
     {{"Combo_SetWiring", Entry::Picked}}},
    {"pt-ratio", "RATIO", "PT ratio 1: 0.1 to 6250 by 0.1 (the meter holds up to 3276.7)", &P::bPendingPtRatio,
     &S::Cmd_PT_Ratio_Click, {{"Combo_PT_Ratio", Entry::Typed, &S::Combo_PT_Ratio_Validate}}},
    {"pt-ratio-2", "PRIMARY SECONDARY", "PT ratio 2 from the primary and secondary voltages", &P::bPendingPtRatio2,
     &S::Comm_change_VT_Click, {{"txtPT1", Entry::Typed}, {"txtPT2", Entry::Typed}}},
    {"ct-ratio", "N", "the CT ratio, 1 to 2400", &P::bPendingCtRatio, &S::Cmd_CT_Ratio_Click,
     {{"Combo_CT_Ratio", Entry::Typed, &S::Combo_CT_Ratio_Validate}}},
    {"clock", "", "the meter's clock to the PC's date and time", &P::bPendingSetTime, &S::Comm_SetTime_Click, {}},
    {"clear-kwh", "", "clears all total energy counters; only with --yes", &P::bPendingClearKwh, &S::Command1_Click, {}},
    {"serial-display", "", "shows the manufacturing serial number on the meter's display", &P::bPendingMfgSerial,
     &S::Cmd_Dis_MFGSerial_Click, {}},
    {"display-item", "POSITION ITEM", "item at a position", &P::bPendingDisplayItem,
     &S::Command5_Click, {{"Combo_Display_Ser_sel", Entry::Picked}, {"Combo_Display_Item_sel", Entry::Picked}}},
    {"scroll-time", "SECONDS", "the display's scroll time", &P::bPendingScrollTime, &S::Command6_Click,
     {{"Combo1", Entry::Picked}}},
};

const QString kGroupSetting = QStringLiteral("lp-group");
const QString kGroupClear = QStringLiteral("lp-clear");

const QCommandLineOption kYes(QStringLiteral("yes"),
    QStringLiteral("Answer the window's question (clear kWh, delete load-profile records) with OK."));
const QCommandLineOption kChannels(QStringLiteral("channels"), QStringLiteral("lp-group: the number of channels."),
                                   QStringLiteral("N"));
const QCommandLineOption kInterval(QStringLiteral("interval"), QStringLiteral("lp-group: the interval in minutes."),
                                   QStringLiteral("MIN"));
const QCommandLineOption kCodes(QStringLiteral("codes"),
    QStringLiteral("lp-group: channel codes from channel 1 on, comma-separated (1,2,3)."), QStringLiteral("LIST"));

const MeterSetting* Find(const QString& name)
{
    for (const MeterSetting& setting : kSettings) {
        if (name == QLatin1String(setting.name))
            return &setting;
    }
    return nullptr;
}

QStringList Words(const MeterSetting& setting)
{
    return QString::fromLatin1(setting.syntax).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QString Names()
{
    QStringList names;
    for (const MeterSetting& setting : kSettings)
        names.append(QLatin1String(setting.name));
    return (names + QStringList{kGroupSetting, kGroupClear}).join(QStringLiteral(", "));
}

QString Help()
{
    TextScreen lists;
    lists.FillStartUpLists();
    QString text = QStringLiteral(
        "Writes one setting to the meter as the window's button does, waits until the next readings show it\n"
        "and prints the setting, its value before and after, and how the write ended. Exit status 0 only\n"
        "when the meter was seen to hold the new value.\n\nSettings:\n");
    for (const MeterSetting& setting : kSettings) {
        const QStringList words = Words(setting);
        QString meaning = QLatin1String(setting.meaning);
        QStringList allowed;
        for (qsizetype i = 0; i < setting.fields.size(); ++i) {
            const Field& field = setting.fields[i];
            if (field.entry == Entry::Picked) {
                const QString values = AllowedValues(lists.entries.value(QLatin1String(field.control)));
                allowed.append(words.size() > 1 ? words[i] + QLatin1Char(' ') + values : values);
            }
        }
        if (!allowed.isEmpty())
            meaning += QStringLiteral(": ") + allowed.join(QStringLiteral("; "));
        const QString usage = (QLatin1String(setting.name) + QLatin1Char(' ') + words.join(QLatin1Char(' '))).trimmed();
        text += QStringLiteral("  %1 %2\n").arg(usage.leftJustified(kHelpColumn), meaning);
    }
    return text + GroupSettingsHelp();
}

// Puts each value where the operator would and runs the field's check. 0, or the exit status
// after a message on stderr.
int Choose(ConsoleSession& console, const MeterSetting& setting, const QStringList& values)
{
    const QStringList words = Words(setting);
    for (qsizetype i = 0; i < setting.fields.size(); ++i) {
        const Field& field = setting.fields[i];
        const QString control = QLatin1String(field.control);
        if (field.entry == Entry::Typed) {
            Type(console.screen, control, values[i]);
        } else if (!Pick(console.screen, control, values[i], QLatin1String(setting.name) + QLatin1Char(' ') + words[i])) {
            return kExitBadArguments;
        }
        if (field.check == nullptr)
            continue;
        (console.session().settings.*field.check)();
        if (!console.prompts.errors.isEmpty())
            return Fail(kExitRefused, QStringLiteral("%1 \"%2\" refused: %3").arg(QLatin1String(setting.name), values[i],
                                                                              console.prompts.errors.join(QLatin1Char(' '))));
    }
    return kExitOk;
}

// The line option the tool now reaches the meter with, after a write that moved it. Empty
// for the other settings, and when the tool could not follow (an address typed as "020").
QString FollowedOption(const MeterSetting& setting, const TextScreen& screen)
{
    const auto option = [&screen](const char* name, const char* list) {
        const QString value = screen.Text(QLatin1String(list));
        return value.isEmpty() ? QString() : QStringLiteral("--%1 %2").arg(QLatin1String(name), value);
    };
    if (setting.flag == &P::bPendingModbusAddr)
        return option("address", "Combo_Modbus_add_sel");
    if (setting.flag == &P::bPendingBaudRate)
        return option("baud", "Combo_BaudRate_Sel");
    if (setting.flag == &P::bPendingStopBit)
        return option("stop-bits", "Combo_StopBit");
    return QString();
}

int SetMeter(ConsoleSession& console, const MeterSetting& setting, const QStringList& values)
{
    if (const int status = Choose(console, setting, values); status != kExitOk)
        return status;
    if (const int status = console.GoOnLine(); status != kExitOk)
        return status;
    // The meter answers, and the history has its value before the write.
    if (!console.NextReading())
        return console.Ended();
    MeterSession& session = console.session();
    const qsizetype entry = session.settings.history.Entries().size();
    (session.settings.*setting.click)();
    if (session.poll.pending.*setting.flag == kFalse)
        return NotAsked(console.prompts);
    const auto settled = [&session, entry] {
        const QList<HistoryEntry>& entries = session.settings.history.Entries();
        return entries.size() > entry && entries[entry].outcome != SettingsHistory::kWaiting;
    };
    if (!console.Await(settled) && !settled())
        return console.Ended();

    const HistoryEntry& written = session.settings.history.Entries()[entry];
    const int status = Finish(console, SettingName(written.setting), written.from, written.to, written.outcome);
    const QString followed = FollowedOption(setting, console.screen);
    if (followed.isEmpty())
        return status;
    if (status == kExitOk)
        QTextStream(stdout) << "The meter now answers at " << followed << ": use it from now on." << Qt::endl;
    else if (written.outcome.startsWith(QLatin1String("not confirmed")))
        Fail(status, QStringLiteral("the meter acknowledged the change: it may answer at %1 now").arg(followed));
    return status;
}

} // namespace

int RunSet(const QStringList& arguments)
{
    CommandLine line(QStringLiteral("set"), Help(), true);
    line.Add(kYes);
    line.Add(kChannels);
    line.Add(kInterval);
    line.Add(kCodes);
    line.AddPositional(QStringLiteral("SETTING"), QStringLiteral("The setting to write, as listed above."));
    line.AddPositional(QStringLiteral("VALUE"), QStringLiteral("Its value(s), as listed above."), QStringLiteral("[VALUE...]"));
    if (const auto status = line.Parse(arguments))
        return *status;
    QStringList values = line.Positional();
    if (values.isEmpty())
        return Fail(kExitBadArguments, QStringLiteral("no setting given: one of %1 (see qx5820 set --help)").arg(Names()));
    const QString name = values.takeFirst();
    const MeterSetting* setting = Find(name);
    const bool group = name == kGroupSetting || name == kGroupClear;
    if (setting == nullptr && !group)
        return Fail(kExitBadArguments, QStringLiteral("unknown setting \"%1\": one of %2").arg(name, Names()));
    const QString syntax = group ? QStringLiteral("1|2") : QString::fromLatin1(setting->syntax);
    const qsizetype expected = group ? 1 : setting->fields.size();
    if (values.size() != expected)
        return Fail(kExitBadArguments, QStringLiteral("usage: qx5820 set %1 %2").arg(name, syntax).trimmed());
    const bool groupOptions = line.IsSet(kChannels) || line.IsSet(kInterval) || line.IsSet(kCodes);
    if (groupOptions && name != kGroupSetting)
        return Fail(kExitBadArguments, QStringLiteral("--channels, --interval and --codes belong to %1").arg(kGroupSetting));
    if (name == kGroupSetting && !groupOptions)
        return Fail(kExitBadArguments, QStringLiteral("%1 needs --channels, --interval or --codes").arg(kGroupSetting));
    const auto options = line.Line();
    if (!options)
        return kExitBadArguments;

    ConsoleSession console(*options);
    console.prompts.answer = line.IsSet(kYes);
    if (name == kGroupSetting)
        return SetGroup(console, values[0], {line.Value(kChannels), line.Value(kInterval), line.Value(kCodes)});
    if (name == kGroupClear)
        return ClearGroup(console, values[0]);
    return SetMeter(console, *setting, values);
}

QString AllowedValues(const QStringList& entries)
{
    QStringList parts;
    for (qsizetype i = 0; i < entries.size();) {
        bool number = false;
        const int first = entries[i].toInt(&number);
        qsizetype run = 1;
        while (number && i + run < entries.size() && entries[i + run] == QString::number(first + run))
            ++run;
        parts.append(run >= 3 ? QStringLiteral("%1 to %2").arg(entries[i], entries[i + run - 1]) : entries[i]);
        i += run >= 3 ? run : 1;
    }
    return parts.join(QStringLiteral(", "));
}

bool Pick(TextScreen& screen, const QString& list, const QString& text, const QString& what)
{
    const QStringList entries = screen.entries.value(list);
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries[i].compare(text, Qt::CaseInsensitive) == 0) {
            screen.Select(list, int(i));
            return true;
        }
    }
    Fail(kExitBadArguments, QStringLiteral("%1 must be one of %2, not \"%3\"").arg(what, AllowedValues(entries), text));
    return false;
}

void Type(TextScreen& screen, const QString& list, const QString& text)
{
    const qsizetype index = screen.entries.value(list).indexOf(text);
    if (index >= 0)
        screen.Select(list, int(index));
    else
        screen.SetText(list, text);
}

int NotAsked(const ConsolePrompts& prompts)
{
    if (!prompts.questions.isEmpty())
        return Fail(kExitRefused, prompts.questions.last() + QStringLiteral(" Nothing was sent: add --yes to confirm."));
    return Fail(kExitRefused, QStringLiteral("nothing was sent: the value is empty"));
}

int Finish(ConsoleSession& console, const QString& what, const QString& before, const QString& after,
           const QString& outcome)
{
    const QString result = QStringLiteral("%1: %2 → %3: %4").arg(what, before.isEmpty() ? QStringLiteral("?") : before,
                                                                after, outcome);
    if (outcome == SettingsHistory::kConfirmed) {
        QTextStream(stdout) << result << Qt::endl;
        return kExitOk;
    }
    // A refused write takes the tool off line too: the meter did answer.
    const bool answered = console.session().connection.bOnLine.isTrue() || outcome.startsWith(QLatin1String("refused"));
    return Fail(answered ? kExitRefused : kExitNoAnswer, result);
}
