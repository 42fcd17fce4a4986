#pragma once

#include "ui/StartUpLists.h"

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
