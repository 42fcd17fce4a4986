#pragma once

#include <QString>

// A value in fixed format with `decimals` digits after the point ("0.00000" has five). A zero
// that only a sign separates from 0 is shown without it.
QString FormatFixed(double value, int decimals);
