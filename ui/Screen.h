#pragma once

#include <QString>

// The text fields the real-time display fills, addressed by control name: "Text5" for a single
// field, "txt_V_N(0)" for element 0 of a control array. The window maps the names to its
// widgets; a test keeps the texts in a map.
class Screen {
public:
    virtual ~Screen() = default;
    virtual void SetText(const QString& control, const QString& text) = 0;
};

// The name of element `index` of the control array `array`.
inline QString Element(const char* array, int index)
{
    return QStringLiteral("%1(%2)").arg(QLatin1String(array)).arg(index);
}
