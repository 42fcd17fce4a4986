#include "settings/InputChecks.h"

#include "ports/MeterChoices.h"
#include "ports/TextNumbers.h"

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
    case TypedField::NewAddress: return {kLowestAddress - 1, false, kHighestAddress, true, "Address Range : 1~250！"};
    case TypedField::TalkAddress: return {0, true, kHighestAddress, true, "Address Range : 1~250！"};
    case TypedField::CtRatio: return {0, false, 2400, true, "CT Ratio Range : 1~2400！"};
    case TypedField::PtRatio: return {0.1, true, 6250, false, "PT_Ratio Range : 0.1~6250！"};
    }
    return {};
}

bool InRange(const FieldRule& rule, double value)
{
    const bool aboveLowest = rule.lowestAllowed ? value >= rule.lowest : value > rule.lowest;
    return aboveLowest && value <= rule.highest;
}

bool Whole(double value)
{
    const auto whole = WholeNumber16(value);
    return whole && double(*whole) == value;
}

} // namespace

FieldCheck CheckTypedField(TypedField field, const QString& text)
{
    const FieldRule rule = RuleFor(field);
    const FieldCheck refused{false, QString::fromUtf8(rule.message)};
    if (const QString ambiguous = AmbiguousReading(text); !ambiguous.isEmpty())
        return {false, ambiguous};
    const auto number = NumericValue(text);
    if (!number)
        return refused;
    // The range is judged on the leading value, the whole-number test on the whole text.
    if (!InRange(rule, LeadingValue(text)) || (rule.wholeOnly && !Whole(*number)))
        return refused;
    return {true, QString()};
}

FieldCheck CheckTypedNumber(TypedField field, double value)
{
    const FieldRule rule = RuleFor(field);
    if (!InRange(rule, value) || (rule.wholeOnly && !Whole(value)))
        return {false, QString::fromUtf8(rule.message)};
    return {true, QString()};
}
