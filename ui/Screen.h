#pragma once

#include <QString>

// The text fields the core fills, addressed by control name: "Text5" for a single field,
// "txt_V_N(0)" for element 0 of a control array. The window maps the names to its widgets; a
// command-line front end or a test keeps the texts in a map. The core reads a text back only
// where the operator chose or typed it (the download group, for instance).
class Screen {
public:
    virtual ~Screen() = default;
    virtual void SetText(const QString& control, const QString& text) = 0;
    virtual QString Text(const QString& control) const = 0;
};

// The name of element `index` of the control array `array`.
inline QString Element(const char* array, int index)
{
    return QStringLiteral("%1(%2)").arg(QLatin1String(array)).arg(index);
}
