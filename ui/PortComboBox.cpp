#include "ui/PortComboBox.h"

void PortComboBox::showPopup()
{
    emit aboutToOpen();
    QComboBox::showPopup();
}
