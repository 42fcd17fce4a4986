// set --help: every setting of the core's table with its values, and the names for messages.
#include "app/cli/SetCommand.h"

#include "loadprofile/LpCsvFile.h"

namespace {

constexpr int kHelpColumn = 30;
constexpr int kHelpWidth = 100;

QString Line(const QString& usage, const QString& meaning)
{
    return QStringLiteral("  %1 %2").arg(usage.leftJustified(kHelpColumn), meaning);
}

// A setting on one line: its words, what it does and the values of its choice fields.
QString SettingLine(const SettingSpec& entry, const QString& words)
{
    QStringList allowed;
    for (const SettingField& field : entry.fields) {
        if (field.Typed())
            continue;
        const QString values = AllowedValues(field.choices);
        allowed.append(entry.fields.size() > 1 ? field.word + QLatin1Char(' ') + values : values);
    }
    QString meaning = entry.help;
    if (!allowed.isEmpty())
        meaning += QStringLiteral(": ") + allowed.join(QStringLiteral("; "));
    if (entry.confirmed)
        meaning += QStringLiteral("; only with --yes");
    return Line((entry.key + QLatin1Char(' ') + words).trimmed(), meaning);
}

// The group set-up takes its fields as options, and has the channel codes' names to tell.
QString GroupSetUpHelp()
{
    const QList<SettingField>& group1 = SpecOf(Setting::LpGroup1).fields;
    const QList<SettingField>& group2 = SpecOf(Setting::LpGroup2).fields;
    const QStringList& codes = group1.last().choices;
    const QString indent(2 + kHelpColumn + 1, QLatin1Char(' '));
    // The channel codes' names, as many to a line as fit.
    QStringList legend{QString()};
    for (const QString& code : codes) {
        const QString item = QStringLiteral("%1 %2").arg(code, LpCsvFile::ChannelName(code.toInt()));
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
    return QStringLiteral("  %1 GROUP [--channels N] [--interval MIN] [--codes LIST]\n"
                          "%2%3; the rest stays as the meter has it.\n"
                          "%2GROUP 1 or 2; channels %4 (group 2: %5);\n"
                          "%2interval %6 minutes.\n"
                          "%2Channel codes %7:\n"
                          "%8\n"
                          "%2A new channel count deletes the group's records: only with --yes.")
        .arg(SpecOf(Setting::LpGroup1).key, indent, SpecOf(Setting::LpGroup1).help, AllowedValues(group1[0].choices),
             AllowedValues(group2[0].choices), AllowedValues(group1[1].choices), AllowedValues(codes),
             indent + legend.join(QLatin1Char('\n') + indent));
}

// Each key once: lp-group and lp-clear stand for two settings each.
QList<const SettingSpec*> ByKey()
{
    QList<const SettingSpec*> specs;
    QStringList keys;
    for (const SettingSpec& entry : SettingTable()) {
        if (!keys.contains(entry.key)) {
            keys.append(entry.key);
            specs.append(&entry);
        }
    }
    return specs;
}

} // namespace

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

QString FieldWords(const SettingSpec& entry)
{
    QStringList words;
    for (const SettingField& field : entry.fields)
        words.append(field.word);
    return words.join(QLatin1Char(' '));
}

QString SettingKeys()
{
    QStringList keys;
    for (const SettingSpec* entry : ByKey())
        keys.append(entry->key);
    return keys.join(QStringLiteral(", "));
}

QString SetHelp()
{
    QStringList lines{QStringLiteral(
        "Writes one setting to the meter as the window's button does, waits until the next readings show it\n"
        "and prints the setting, its value before and after, and how the write ended. Exit status 0 only\n"
        "when the meter was seen to hold the new value.\n\nSettings:")};
    for (const SettingSpec* entry : ByKey()) {
        if (entry->setting == Setting::LpGroup1)
            lines.append(GroupSetUpHelp());
        else
            lines.append(SettingLine(*entry, entry->setting == Setting::LpClear1 ? QStringLiteral("GROUP") : FieldWords(*entry)));
    }
    return lines.join(QLatin1Char('\n'));
}
