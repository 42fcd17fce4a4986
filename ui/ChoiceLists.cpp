#include "ui/ChoiceLists.h"

#include <QComboBox>
#include <QSignalBlocker>

void AddEntries(QComboBox* list, const QStringList& entries)
{
    const int selected = list->currentIndex();
    const QString typed = list->currentText();
    const QSignalBlocker quiet(list);
    list->addItems(entries);
    list->setCurrentIndex(selected);
    if (list->isEditable())
        list->setEditText(typed);
}

void FillAndSelect(QComboBox* list, const QStringList& entries, int index)
{
    AddEntries(list, entries);
    list->setCurrentIndex(index);
}
