#pragma once

#include <QString>

// The lists and fields where the operator picks or types a value to send to the meter, by
// control name. A command reads them when the poll cycle serves it, not when its button was
// pressed; an input check empties a field it rejects; and when the meter has taken a new
// address or line setting, the tool moves the lists to follow it.
class OperatorChoices {
public:
    virtual ~OperatorChoices() = default;
    // The text picked or typed.
    virtual QString Text(const QString& control) const = 0;
    virtual void SetText(const QString& control, const QString& text) = 0;
    // The index of the picked entry; -1 when the text shown was typed and is not that entry.
    virtual int ListIndex(const QString& list) const = 0;
    virtual int Count(const QString& list) const = 0;
    // Shows entry `index` as picked (-1: none). The list's own handler does not run: the core
    // applies what the choice means itself.
    virtual void Select(const QString& list, int index) = 0;
    // Adds `text` as the last entry, even when an entry reads the same.
    virtual void Append(const QString& list, const QString& text) = 0;
};
