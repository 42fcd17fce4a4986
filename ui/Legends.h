#pragma once

#include <QString>

class QPlainTextEdit;

// The two code legends of the window, one "code : name" entry a line, each line ended by CR LF:
// operators copy them into their commissioning notes, where CR LF is the line end.
QString LpChannelLegend();    // load-profile channel codes 1 to 14
QString DisplayItemLegend();  // item codes of the meter's display

// Shows a CR LF text in a plain-text box, which breaks lines at LF alone.
void ShowCrLfText(QPlainTextEdit* box, const QString& text);
