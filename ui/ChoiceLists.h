#pragma once

#include <QStringList>

class QComboBox;

// Appends entries without selecting anything. Qt selects the first entry of an empty list by
// itself, which would run the list's selection handler on a half-filled list, and several
// handlers send or apply what is selected (the port, the line settings, the address). So the
// selection (and, for a typed list, the typed text) is kept as it was.
void AddEntries(QComboBox* list, const QStringList& entries);

// Appends the entries, then selects entry `index`: one selection, seen by the handlers with the
// whole list in place.
void FillAndSelect(QComboBox* list, const QStringList& entries, int index);

// The index of the picked entry; -1 when the text shown was typed and is not that entry (a
// typed list keeps its last picked index while the operator types).
int PickedIndex(const QComboBox* list);

// Shows entry `index` as picked (-1: none, and a typed list empty) without running the list's
// handlers: the caller applies what the choice means itself.
void SelectQuietly(QComboBox* list, int index);
