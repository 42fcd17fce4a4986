#pragma once

#include <QtGlobal>

// Every flag of the tool is a 16-bit integer: True is -1 (all bits set) and False is 0. Flags
// are compared as numbers, with kTrue and kFalse and with one another, so a flag set from a
// bool goes through toBool16: a 1 would be neither.
using Bool16 = qint16;

inline constexpr Bool16 kTrue = -1;
inline constexpr Bool16 kFalse = 0;

constexpr Bool16 toBool16(bool value) { return value ? kTrue : kFalse; }
