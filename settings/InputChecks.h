#pragma once

#include <QString>

// The fields of the settings where the operator may type a value instead of picking one. Each
// is checked when it loses the focus; a value it refuses is reported and the field emptied.
enum class TypedField {
    NewAddress,  // Combo_Modbus_add: the address to write to the meter
    TalkAddress, // Combo_Modbus_add_sel: the address the tool talks to
    CtRatio,     // Combo_CT_Ratio
    PtRatio,     // Combo_PT_Ratio
};

struct FieldCheck {
    bool accepted = false;
    QString message; // the error to show when refused
};

// Checks `text` for `field`: the whole text must be a number; its leading value must be in
// the field's range; the address and CT ratio fields take whole numbers only.
FieldCheck CheckTypedField(TypedField field, const QString& text);
