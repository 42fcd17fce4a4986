#pragma once

#include <QString>
#include <QStringList>

class ConsoleSession;
class ConsolePrompts;
class TextScreen;

// What the settings of "qx5820 set" share: the command line's values put into the window's
// lists and fields as the operator would, and the one-line result.

// `entries` as a person reads them: runs of consecutive numbers joined ("1 to 50"), the rest
// listed ("Auto, 1P2W").
QString AllowedValues(const QStringList& entries);

// Picks the entry of the pick-only `list` that reads `text`, letter case aside. False, after
// a message on stderr naming the allowed values, when there is none; `what` names the value.
bool Pick(TextScreen& screen, const QString& list, const QString& text, const QString& what);

// Types `text` into a field or an editable list: a pick when an entry reads the same.
void Type(TextScreen& screen, const QString& list, const QString& text);

// After a click that asked for nothing: the question was answered No (no --yes), or a field was
// left empty. The message on stderr, and 5.
int NotAsked(const ConsolePrompts& prompts);

// Ends a write: "<what>: <before> → <after>: <outcome>" on stdout and 0 when confirmed;
// otherwise on stderr, and 5 when the meter refused the write or is still on line (not
// confirmed, not sent), 4 when it stopped answering.
int Finish(ConsoleSession& console, const QString& what, const QString& before, const QString& after,
           const QString& outcome);

// The load-profile group settings: "lp-group" and "lp-clear".
struct GroupChoices {
    QString channels; // empty: as the meter has it
    QString interval;
    QString codes;    // comma-separated, from channel 1 on
};
// Their lines of --help, in the layout of the others.
inline constexpr int kHelpColumn = 30;
inline constexpr int kHelpWidth = 100;
QString GroupSettingsHelp();
int SetGroup(ConsoleSession& console, const QString& group, const GroupChoices& choices);
int ClearGroup(ConsoleSession& console, const QString& group);
