#pragma once

#include <QPalette>
#include <QString>

class QCheckBox;
class PortComboBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QWidget;

// Builders for the window's controls. Each one names the control (the name the tool's code and
// tests look it up by) and gives it an accessible name that tells a screen reader what it is for.
namespace Controls {

// Read-only field for a number from the meter: right-aligned and monospaced, so that digits
// line up from one row of a grid to the next; wide enough for `characters` digits.
QLineEdit* NumberReadout(const QString& name, const QString& accessibleName, int characters);
// Read-only field for a text from the meter (clock, identification, wiring).
QLineEdit* TextReadout(const QString& name, const QString& accessibleName);
// Field the operator types a number into, sized for `characters` digits.
QLineEdit* NumberInput(const QString& name, const QString& accessibleName, int characters);
// Multi-line read-only box (legends, lists read back from the meter).
QPlainTextEdit* NoteBox(const QString& name, const QString& accessibleName);

enum class Typing { PickOnly, Typed };
// Choice list. A typed list keeps what the operator types as its text and never adds it as an
// entry or completes it from the entries: the entries are part of the protocol (a list's
// index is sent to the meter) and a completed "10" → "100" would change a ratio.
QComboBox* ChoiceList(const QString& name, const QString& accessibleName, Typing typing = Typing::PickOnly);
// The list of ports, which finds the ports again each time it opens.
PortComboBox* PortList(const QString& name, const QString& accessibleName);

QPushButton* Button(const QString& name, const QString& caption, const QString& accessibleName);
// A button that talks to the meter: it starts disabled and is enabled when the tool goes on line.
QPushButton* MeterButton(const QString& name, const QString& caption, const QString& accessibleName);

QCheckBox* CheckBox(const QString& name, const QString& caption, const QString& accessibleName);

// Caption beside a field; the field becomes its buddy so the pair reads as one to assistive tools.
QLabel* Caption(const QString& text, QWidget* field);
// Caption with no field of its own (column headings, units).
QLabel* Heading(const QString& text);
// Writes `role` of `widget` in red that reads on its theme: dark red on a light window, light
// red on a dark one.
void ShowAsWarning(QWidget& widget, QPalette::ColorRole role);

} // namespace Controls
