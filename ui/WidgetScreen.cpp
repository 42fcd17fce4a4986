#include "ui/WidgetScreen.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>

QWidget* WidgetScreen::Find(const QString& control) const
{
    if (m_widgets.isEmpty()) {
        for (QWidget* widget : m_window.findChildren<QWidget*>()) {
            if (!widget->objectName().isEmpty())
                m_widgets.insert(widget->objectName(), widget);
        }
    }
    QWidget* widget = m_widgets.value(control);
    Q_ASSERT_X(widget != nullptr, "WidgetScreen", qPrintable(control));
    return widget;
}

void WidgetScreen::SetText(const QString& control, const QString& text)
{
    QWidget* widget = Find(control);
    if (auto* line = qobject_cast<QLineEdit*>(widget)) {
        if (line->text() != text) { // unchanged readings cost no repaint
            line->setText(text);
            line->setCursorPosition(0); // a text longer than its field shows its start
            line->setToolTip(line->width() < line->fontMetrics().horizontalAdvance(text) ? text : QString());
        }
    } else if (auto* box = qobject_cast<QPlainTextEdit*>(widget)) {
        box->setPlainText(QString(text).remove(QLatin1Char('\r')));
    } else if (auto* list = qobject_cast<QComboBox*>(widget)) {
        list->setEditText(text);
    }
}

QString WidgetScreen::Text(const QString& control) const
{
    QWidget* widget = Find(control);
    if (auto* line = qobject_cast<QLineEdit*>(widget))
        return line->text();
    if (auto* box = qobject_cast<QPlainTextEdit*>(widget))
        return box->toPlainText();
    if (auto* list = qobject_cast<QComboBox*>(widget))
        return list->currentText();
    return QString();
}

QComboBox* WidgetScreen::FindList(const QString& list) const
{
    auto* combo = qobject_cast<QComboBox*>(Find(list));
    Q_ASSERT_X(combo != nullptr, "WidgetScreen", qPrintable(list));
    return combo;
}

// A typed list keeps its last picked index while the operator types; the text tells.
int WidgetScreen::ListIndex(const QString& list) const
{
    const QComboBox* combo = FindList(list);
    const int index = combo->currentIndex();
    return index >= 0 && combo->itemText(index) == combo->currentText() ? index : -1;
}

int WidgetScreen::Count(const QString& list) const
{
    return FindList(list)->count();
}

void WidgetScreen::Select(const QString& list, int index)
{
    QComboBox* combo = FindList(list);
    const QSignalBlocker quiet(combo);
    combo->setCurrentIndex(index);
    if (index < 0 && combo->isEditable())
        combo->setEditText(QString());
}

void WidgetScreen::Append(const QString& list, const QString& text)
{
    QComboBox* combo = FindList(list);
    const QSignalBlocker quiet(combo);
    combo->addItem(text);
}
