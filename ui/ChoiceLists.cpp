#include "ui/ChoiceLists.h"

#include <QComboBox>
#include <QSignalBlocker>

QStringList NumberTexts(int first, int last)
{
    QStringList texts;
    for (int n = first; n <= last; ++n)
        texts.append(QString::number(n));
    return texts;
}

QStringList BaudRateTexts()
{
    return {QStringLiteral("9600"), QStringLiteral("19200")};
}

QStringList StopBitTexts()
{
    return {QStringLiteral("1"), QStringLiteral("2")};
}

QStringList AddressTexts()
{
    return NumberTexts(1, 247);
}

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
