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

int PickedIndex(const QComboBox* list)
{
    const int index = list->currentIndex();
    return index >= 0 && list->itemText(index) == list->currentText() ? index : -1;
}

void SelectQuietly(QComboBox* list, int index)
{
    const QSignalBlocker quiet(list);
    list->setCurrentIndex(index);
    if (index < 0 && list->isEditable())
        list->setEditText(QString());
}
