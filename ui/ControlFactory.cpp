#include "ui/ControlFactory.h"

#include "ui/PortComboBox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace Controls {

namespace {

// Room in a typed list for the longest value an operator types: "6250.5", "65535".
constexpr int kTypedCharacters = 6;
// Room in the port list for "tcp://192.168.10.20:4001" and "ttyUSB0 — FT232R USB UART".
constexpr int kPortCharacters = 24;

// The frame and the line edit's inner margins take about two more characters.
int FieldWidth(const QWidget* field, int characters)
{
    return field->fontMetrics().horizontalAdvance(QLatin1Char('0')) * (characters + 2);
}

template <typename T>
T* Named(T* control, const QString& name, const QString& accessibleName)
{
    control->setObjectName(name);
    control->setAccessibleName(accessibleName);
    return control;
}

} // namespace

QLineEdit* TextReadout(const QString& name, const QString& accessibleName)
{
    auto* field = Named(new QLineEdit, name, accessibleName);
    field->setReadOnly(true);
    return field;
}

QLineEdit* NumberReadout(const QString& name, const QString& accessibleName, int characters)
{
    auto* field = TextReadout(name, accessibleName);
    field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    field->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    field->setMinimumWidth(FieldWidth(field, characters));
    return field;
}

QLineEdit* NumberInput(const QString& name, const QString& accessibleName, int characters)
{
    auto* field = Named(new QLineEdit, name, accessibleName);
    field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    field->setMaximumWidth(FieldWidth(field, characters));
    return field;
}

QPlainTextEdit* NoteBox(const QString& name, const QString& accessibleName)
{
    auto* box = Named(new QPlainTextEdit, name, accessibleName);
    box->setReadOnly(true);
    box->setLineWrapMode(QPlainTextEdit::NoWrap);
    box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return box;
}

QComboBox* ChoiceList(const QString& name, const QString& accessibleName, Typing typing)
{
    auto* list = Named(new QComboBox, name, accessibleName);
    list->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    if (typing == Typing::Typed) {
        list->setEditable(true);
        list->setInsertPolicy(QComboBox::NoInsert);
        list->setCompleter(nullptr);
        list->setMinimumContentsLength(kTypedCharacters);
    }
    return list;
}

PortComboBox* PortList(const QString& name, const QString& accessibleName)
{
    auto* list = Named(new PortComboBox, name, accessibleName);
    // A found adapter's description or a network address can be long: the closed list keeps
    // its width, the open one is as wide as its longest entry.
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setMinimumContentsLength(kPortCharacters);
    return list;
}

QPushButton* Button(const QString& name, const QString& caption, const QString& accessibleName)
{
    return Named(new QPushButton(caption), name, accessibleName);
}

QPushButton* MeterButton(const QString& name, const QString& caption, const QString& accessibleName)
{
    auto* button = Button(name, caption, accessibleName);
    button->setEnabled(false);
    return button;
}

QCheckBox* CheckBox(const QString& name, const QString& caption, const QString& accessibleName)
{
    return Named(new QCheckBox(caption), name, accessibleName);
}

QLabel* Caption(const QString& text, QWidget* field)
{
    auto* label = new QLabel(text);
    label->setBuddy(field);
    return label;
}

QLabel* Heading(const QString& text)
{
    return new QLabel(text);
}

void ShowAsWarning(QWidget& widget, QPalette::ColorRole role)
{
    QPalette palette = widget.palette();
    const bool darkTheme = palette.color(QPalette::Window).lightness() < 128;
    palette.setColor(role, darkTheme ? QColor(0xFF, 0x80, 0x80) : QColor(0xA0, 0x00, 0x00));
    widget.setPalette(palette);
}

} // namespace Controls
