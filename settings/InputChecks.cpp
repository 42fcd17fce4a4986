#include "settings/InputChecks.h"

#include "connection/TextNumbers.h"

namespace {

struct FieldRule {
    double lowest;
    bool lowestAllowed;
    double highest;
    bool wholeOnly;
    const char* message;
};

// The address the tool talks to may be 0, the broadcast address, although its message says
// 1: a typed 0 is taken there and refused as the meter's new address.
FieldRule RuleFor(TypedField field)
{
    switch (field) {
    case TypedField::NewAddress: return {0, false, 250, true, "Address Range : 1~250！"};
    case TypedField::TalkAddress: return {0, true, 250, true, "Address Range : 1~250！"};
    case TypedField::CtRatio: return {0, false, 2400, true, "CT Ratio Range : 1~2400！"};
    case TypedField::PtRatio: return {0.1, true, 6250, false, "PT_Ratio Range : 0.1~6250！"};
    }
    return {};
}

} // namespace

FieldCheck CheckTypedField(TypedField field, const QString& text)
{
    const FieldRule rule = RuleFor(field);
    const FieldCheck refused{false, QString::fromUtf8(rule.message)};
    const auto number = NumericValue(text);
    if (!number)
        return refused;
    // The range is judged on the leading value, the whole-number test on the whole text.
    const double value = LeadingValue(text);
    const bool aboveLowest = rule.lowestAllowed ? value >= rule.lowest : value > rule.lowest;
    if (!aboveLowest || value > rule.highest)
        return refused;
    const auto whole = WholeNumber16(*number);
    if (rule.wholeOnly && !(whole && double(*whole) == *number))
        return refused;
    return {true, QString()};
}
