#pragma once

#include <QtGlobal>

// Every flag of the tool is a 16-bit integer: True is -1 and False is 0, as the meter's
// original firmware tools stored them. Keeping the representation lets the flags be
// compared, logged and tested exactly as the tool's state tables describe them.
using Bool16 = qint16;

inline constexpr Bool16 kTrue = -1;
inline constexpr Bool16 kFalse = 0;

constexpr Bool16 toBool16(bool value) { return value ? kTrue : kFalse; }
