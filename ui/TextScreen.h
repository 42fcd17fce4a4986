#pragma once

#include "ui/OperatorChoices.h"
#include "ui/Screen.h"
#include "ui/StartUpLists.h"

#include <QMap>
#include <QStringList>

// The screen as a map from control name to text, and the choice lists as lists of entries
// with the index picked; a list's text is its picked entry unless one was typed. What a front
// end without widgets (the command-line tool, a test) presents the session on.
class TextScreen : public Screen, public OperatorChoices {
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
    // Every list as a run starts.
    void FillStartUpLists()
    {
        for (const StartUpList& list : StartUpLists())
            Fill(list.control, list.entries, list.index);
    }

    QMap<QString, QString> texts;
    QMap<QString, QStringList> entries;
    QMap<QString, int> picked;
};
