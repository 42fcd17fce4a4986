#pragma once

#include <QString>

// The text fields that the decoding routines fill, addressed by control name: "Text5" for a
// single field, "txt_V_N(0)" for element 0 of a control array. The window maps the names to
// its widgets; tests keep the texts in a map.
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

// The load-profile group chosen for download, as an element index of the per-group fields:
// 0 when the group list reads 1, else 1.
int DownloadGroupElement(const Screen& screen);

// A value in fixed format with `decimals` digits after the point ("0.00000" has five). A zero
// that only a sign separates from 0 is shown without it.
QString FormatFixed(double value, int decimals);
