#pragma once

#include "ui/Screen.h"

#include <QMap>

// The screen as a map from control name to text: what the display is checked on without
// widgets.
class TextScreen : public Screen {
public:
    void SetText(const QString& control, const QString& text) override { texts[control] = text; }

    QMap<QString, QString> texts;
};
