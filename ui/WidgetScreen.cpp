#include "ui/WidgetScreen.h"

#include <QLineEdit>
#include <QPlainTextEdit>

void ShowInReadout(QLineEdit* field, const QString& text)
{
    if (field->text() == text)
        return;
    field->setText(text);
    field->setCursorPosition(0);
    field->setToolTip(field->width() < field->fontMetrics().horizontalAdvance(text) ? text : QString());
}

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
    if (auto* line = qobject_cast<QLineEdit*>(widget))
        ShowInReadout(line, text);
    else if (auto* box = qobject_cast<QPlainTextEdit*>(widget))
        box->setPlainText(QString(text).remove(QLatin1Char('\r')));
}
