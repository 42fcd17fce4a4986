#pragma once

#include <QString>

// The fields of the settings where the operator may type a value instead of picking one. Each
// is checked when it loses the focus, and again when its command is served; a value it refuses
// is reported and never sent.
enum class TypedField {
    NewAddress,  // the address to write to the meter
    TalkAddress, // the address the tool talks to
    CtRatio,
    PtRatio,
};

struct FieldCheck {
    bool accepted = false;
    QString message; // the error to show when refused
};

// Checks `text` for `field`: the whole text must be a number with one reading only (see
// AmbiguousReading); its leading value must be in the field's range; the address and CT ratio
// fields take whole numbers only.
FieldCheck CheckTypedField(TypedField field, const QString& text);
// The same range and whole-number rules for a value given as a number.
FieldCheck CheckTypedNumber(TypedField field, double value);
