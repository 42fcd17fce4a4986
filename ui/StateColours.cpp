#include "ui/StateColours.h"

#include <QPalette>
#include <QWidget>

void SetBackground(QWidget* widget, const QColor& colour)
{
    QPalette palette = widget->palette();
    palette.setColor(widget->backgroundRole(), colour);
    palette.setColor(QPalette::Base, colour);
    for (QPalette::ColorRole text : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(text, Qt::black);
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
}

void ClearBackground(QWidget* widget)
{
    widget->setPalette(QPalette());
    widget->setAutoFillBackground(false);
}
