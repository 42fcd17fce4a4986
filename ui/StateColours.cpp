#include "ui/StateColours.h"

#include <QPalette>
#include <QWidget>

void SetBackground(QWidget* widget, const QColor& colour)
{
    QPalette palette = widget->palette();
    palette.setColor(widget->backgroundRole(), colour);
    palette.setColor(QPalette::Base, colour);
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
}
