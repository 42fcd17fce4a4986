#pragma once

#include "ports/Clock.h"
#include "ports/IntervalLists.h"
#include "ports/OperatorChoices.h"
#include "ports/Screen.h"

#include <QMap>
#include <QStringList>

// The screen as a map from control name to text, and the choice lists as lists of entries
// with the index picked; a list's text is its picked entry unless one was typed.
class MapScreen : public Screen, public OperatorChoices {
public:
    void SetText(const QString& control, const QString& text) override { texts[control] = text; }
    QString Text(const QString& control) const override { return texts.value(control); }
    int ListIndex(const QString& list) const override
    {
        const int index = picked.value(list, -1);
        return index >= 0 && texts.value(list) == entries.value(list).value(index) ? index : -1;
    }
    int Count(const QString& list) const override { return int(entries.value(list).size()); }
    void Select(const QString& list, int index) override
    {
        picked[list] = index;
        texts[list] = entries.value(list).value(index);
    }
    void Append(const QString& list, const QString& text) override { entries[list].append(text); }

    // Fills `list` and picks entry `index`, as the window does at start-up.
    void Fill(const QString& list, const QStringList& items, int index)
    {
        entries[list] = items;
        Select(list, index);
    }

    QMap<QString, QString> texts;
    QMap<QString, QStringList> entries;
    QMap<QString, int> picked;
};

// The start and stop lists as two string lists, with a record of every enable change.
class RecordingLists : public IntervalLists {
public:
    RecordingLists() : start{QStringLiteral("1")}, stop{QStringLiteral("1")} {}

    void SetEnabled(bool enabled) override { enabledHistory.append(enabled); }
    void Clear() override
    {
        start.clear();
        stop.clear();
    }
    void Append(qint32 first, qint32 last) override
    {
        for (qint32 i = first; i <= last; ++i) {
            start.append(QString::number(i));
            stop.append(QString::number(i));
        }
        ++appendCalls;
    }
    void ShowFirstEntry() override
    {
        if (!start.isEmpty())
            startText = QStringLiteral("1");
        if (!stop.isEmpty())
            stopText = QStringLiteral("1");
    }

    QStringList start;
    QStringList stop;
    QString startText;
    QString stopText;
    QList<bool> enabledHistory;
    int appendCalls = 0;
};

// A clock that stands still at `now`.
class FixedClock : public Clock {
public:
    QDateTime Now() const override { return now; }
    QDateTime now = QDateTime(QDate(2026, 11, 16), QTime(8, 30, 0));
};
