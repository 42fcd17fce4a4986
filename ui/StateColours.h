#pragma once

#include <QColor>

class QWidget;

// Colours of the connection state field and of a download that can be resumed.
inline const QColor kOnLineColour(0x80, 0xFF, 0x80);
inline const QColor kOffLineColour(0xFF, 0xC0, 0xC0);
inline const QColor kResumableColour(0xFF, 0x80, 0x80);

// Paints the background of a field or a button. The state colours are all light, so the text
// on them is drawn dark, and stays readable under a dark system theme.
void SetBackground(QWidget* widget, const QColor& colour);
// Gives a field or a button the system's colours again.
void ClearBackground(QWidget* widget);
