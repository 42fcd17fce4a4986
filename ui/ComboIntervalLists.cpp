#include "ui/ComboIntervalLists.h"

#include "ports/MeterChoices.h"
#include "ui/ChoiceLists.h"

#include <QComboBox>

ComboIntervalLists::ComboIntervalLists(QComboBox* start, QComboBox* stop) : m_lists{start, stop}
{
    for (QComboBox* list : m_lists)
        list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
}

void ComboIntervalLists::SetEnabled(bool enabled)
{
    for (QComboBox* list : m_lists)
        list->setEnabled(enabled);
}

void ComboIntervalLists::Clear()
{
    for (QComboBox* list : m_lists) {
        const QString text = list->currentText();
        list->clear();
        list->setEditText(text);
    }
}

void ComboIntervalLists::Append(qint32 first, qint32 last)
{
    const QStringList numbers = NumberTexts(first, last);
    for (QComboBox* list : m_lists)
        AddEntries(list, numbers);
}

void ComboIntervalLists::ShowFirstEntry()
{
    for (QComboBox* list : m_lists) {
        if (list->count() > 0)
            list->setEditText(QStringLiteral("1"));
    }
}
