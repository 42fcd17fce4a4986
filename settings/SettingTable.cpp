#include "settings/SettingTable.h"

#include "measure/DisplayItemNames.h"
#include "measure/FixedFormat.h"
#include "measure/FloatDecoding.h"
#include "ports/MeterChoices.h"
#include "ports/TextNumbers.h"

#include <algorithm>

namespace {

namespace W = SettingWrites;
namespace R = SettingRegister;

// ---- Fields -------------------------------------------------------------------------------

SettingField Typed(const char* word, std::optional<TypedField> check = std::nullopt)
{
    return {QString::fromLatin1(word), check, {}};
}

SettingField Choice(const char* word, const QStringList& entries)
{
    return {QString::fromLatin1(word), std::nullopt, entries};
}

QList<SettingField> LpGroupFields(int maxChannels)
{
    QList<SettingField> fields{Choice("CHANNELS", NumberTexts(1, maxChannels)), Choice("MINUTES", LpIntervalTexts())};
    for (int k = 1; k <= maxChannels; ++k)
        fields.append(Choice("CODE", LpChannelCodeTexts()));
    return fields;
}

// ---- Encodings ----------------------------------------------------------------------------

SettingWrite Made(const RegisterWrite& write)
{
    return {write, QString()};
}

SettingWrite One(quint16 reg, double value)
{
    return Made({reg, {quint16(value)}});
}

// A choice whose register holds its entry's index + `firstCode`.
SettingWrite Code(quint16 reg, const SettingField& field, double value, int firstCode)
{
    return One(reg, ChoiceIndex(field, value) + firstCode);
}

SettingWrite LpGroup(int group, const SettingValue& value)
{
    RegisterWrite write{R::kLpGroup[group], {}};
    for (double field : value.fields)
        write.values.append(quint16(field));
    return Made(write);
}

// ---- Read-back ----------------------------------------------------------------------------

QString CodeText(const QStringList& names, int code, int firstCode)
{
    const int index = code - firstCode;
    return index >= 0 && index < names.size() ? names[index] : QStringLiteral("code %1").arg(code);
}

int DisplayPosition(const RegisterWrite& write)
{
    return write.start - R::kDisplayItems;
}

QString DisplayItemText(int position, int code)
{
    const QString name = DisplayItemName(code);
    return QStringLiteral("position %1: %2%3").arg(position + 1).arg(code).arg(name.isEmpty() ? QString() : QLatin1Char(' ') + name);
}

QDateTime MeterClock(const MeterReading& r)
{
    const MeterReading::Clock& c = r.clock;
    return QDateTime(QDate(c.year, c.month, c.day), QTime(c.hour, c.minute, c.second), r.takenAt.timeSpec());
}

QString ClockText(const QDateTime& time)
{
    return time.isValid() ? time.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")) : QStringLiteral("no valid date");
}

QDateTime WrittenClock(const RegisterWrite& write)
{
    const auto field = [&write](int i) { return int(write.values.value(i)); };
    return QDateTime(QDate(2000 + field(0), field(1), field(2)), QTime(field(3), field(4), field(5)));
}

QString GroupText(const QList<int>& values)
{
    QStringList codes;
    for (int code : values.mid(2))
        codes.append(QString::number(code));
    return QStringLiteral("%1 channels every %2 min, codes %3").arg(values.value(0)).arg(values.value(1)).arg(codes.join(QLatin1Char(',')));
}

QList<int> GroupInReading(const MeterReading& r, int group)
{
    const MeterReading::LoadProfileGroup& g = r.loadProfile[std::size_t(group)];
    return QList<int>{g.channelCount, g.intervalMinutes} + g.channelCodes;
}

QList<int> GroupInWrite(const RegisterWrite& write)
{
    return QList<int>(write.values.begin(), write.values.end());
}

bool CountersCleared(const MeterReading& r, const MeterReading& before)
{
    for (int kind = 0; kind < MeterReading::EnergyKinds; ++kind) {
        const double total = r.EnergyTotal(kind);
        if (total != 0 && !(before.Has(MeterReading::Energy) && total < before.EnergyTotal(kind)))
            return false;
    }
    return true;
}

// A setting held in one register: what the reading holds there beside what the write carries.
template <int (*Held)(const MeterReading&), QString (*Text)(int)>
SettingSpec RegisterSetting(SettingSpec entry)
{
    entry.reported = [](const MeterReading& r, const RegisterWrite&) { return Text(Held(r)); };
    entry.written = [](const RegisterWrite& w) { return Text(w.values.value(0)); };
    entry.shows = [](const MeterReading& r, const RegisterWrite& w, const MeterReading&) { return Held(r) == w.values.value(0); };
    return entry;
}

QString PlainText(int value) { return QString::number(value); }
QString BaudText(int code) { return CodeText(BaudRateTexts(), code, 1); }
QString StopBitText(int code) { return CodeText(StopBitTexts(), code, 1); }
QString WiringText(int code) { return CodeText(WiringTexts(), code, 0); }
QString PtRatio1Text(int tenths) { return FormatFixed(quint16(tenths) / 10.0, 1); }
QString ScrollText(int seconds) { return QStringLiteral("%1 s").arg(seconds); }
QString SerialText(int shown) { return shown == 1 ? QStringLiteral("shown") : QStringLiteral("hidden"); }

int HeldAddress(const MeterReading& r) { return r.slaveAddress; }
int HeldBaud(const MeterReading& r) { return r.baudRateCode; }
int HeldStopBit(const MeterReading& r) { return r.stopBitCode; }
int HeldWiring(const MeterReading& r) { return r.wiringSetting; }
int HeldPtRatio1(const MeterReading& r) { return r.ptRatio1Register; }
int HeldCtRatio(const MeterReading& r) { return r.ctRatioRegister; }
int HeldScroll(const MeterReading& r) { return r.scrollTime; }
int HeldSerial(const MeterReading& r) { return r.serialDisplay; }

const char* const kLoadProfile = "Load Profile";

template <int kGroup>
SettingSpec GroupSetting(SettingSpec entry)
{
    entry.fields = LpGroupFields(kGroup == 0 ? 12 : 8);
    entry.caption = QString::fromLatin1(kLoadProfile);
    entry.question = QStringLiteral("Warning : You will delete Load Profile Data ");
    entry.encode = [](const SettingValue& v, const WriteContext&) { return LpGroup(kGroup, v); };
    entry.block = MeterReading::RealTimeImage;
    entry.reported = [](const MeterReading& r, const RegisterWrite&) { return GroupText(GroupInReading(r, kGroup)); };
    entry.written = [](const RegisterWrite& w) { return GroupText(GroupInWrite(w)); };
    entry.shows = [](const MeterReading& r, const RegisterWrite& w, const MeterReading&) {
        return GroupInReading(r, kGroup) == GroupInWrite(w);
    };
    return entry;
}

// A group just cleared may record a new interval before it is read again.
template <int kGroup>
SettingSpec GroupClear(SettingSpec entry)
{
    entry.confirmed = true;
    entry.caption = QString::fromLatin1(kLoadProfile);
    entry.question = QStringLiteral("Clear Group%1 Data？").arg(kGroup + 1);
    entry.encode = [](const SettingValue&, const WriteContext&) { return One(R::kLpClear[kGroup], W::kClearLpGroupCommand); };
    entry.block = MeterReading::RealTimeImage;
    entry.reported = [](const MeterReading& r, const RegisterWrite&) {
        return QStringLiteral("%1 intervals").arg(r.loadProfile[kGroup].validIntervals);
    };
    entry.written = [](const RegisterWrite&) { return QStringLiteral("0 intervals"); };
    entry.shows = [](const MeterReading& r, const RegisterWrite&, const MeterReading& before) {
        const int now = r.loadProfile[kGroup].validIntervals;
        return now == 0 || now < before.loadProfile[kGroup].validIntervals;
    };
    return entry;
}

SettingSpec Entry(Setting setting, const char* name, const char* key, const char* help, QList<SettingField> fields = {})
{
    SettingSpec entry{};
    entry.setting = setting;
    entry.name = QString::fromUtf8(name);
    entry.key = QString::fromLatin1(key);
    entry.help = QString::fromUtf8(help);
    entry.fields = std::move(fields);
    entry.block = MeterReading::RealTimeImage;
    return entry;
}

QList<SettingSpec> Build()
{
    QList<SettingSpec> table;

    SettingSpec clock = Entry(Setting::Clock, "Clock", "clock", "the meter's clock to the PC's date and time");
    clock.encode = [](const SettingValue&, const WriteContext& c) { return Made(W::Clock(c.now)); };
    clock.reported = [](const MeterReading& r, const RegisterWrite&) { return ClockText(MeterClock(r)); };
    clock.written = [](const RegisterWrite& w) { return ClockText(WrittenClock(w)); };
    clock.shows = [](const MeterReading& r, const RegisterWrite&, const MeterReading&) {
        const QDateTime meter = MeterClock(r);
        return meter.isValid() && qAbs(meter.secsTo(r.takenAt)) <= kClockToleranceSeconds;
    };
    table.append(clock);

    SettingSpec address = RegisterSetting<HeldAddress, PlainText>(Entry(Setting::Address, "Modbus address", "address",
        "the meter's new Modbus address, 1 to 250; the tool follows it", {Typed("N", TypedField::NewAddress)}));
    address.encode = [](const SettingValue& v, const WriteContext&) { return One(R::kAddress, v.fields[0]); };
    table.append(address);

    SettingSpec baud = RegisterSetting<HeldBaud, BaudText>(Entry(Setting::BaudRate, "Baud rate", "baud",
        "the meter's baud rate; the tool follows it", {Choice("RATE", BaudRateTexts())}));
    baud.encode = [](const SettingValue& v, const WriteContext&) { return Code(R::kBaudRate, SpecOf(Setting::BaudRate).fields[0], v.fields[0], 1); };
    table.append(baud);

    SettingSpec stop = RegisterSetting<HeldStopBit, StopBitText>(Entry(Setting::StopBit, "Stop bit", "stop-bits",
        "the meter's stop bits; the tool follows them", {Choice("N", StopBitTexts())}));
    stop.encode = [](const SettingValue& v, const WriteContext&) { return Code(R::kStopBit, SpecOf(Setting::StopBit).fields[0], v.fields[0], 1); };
    table.append(stop);

    SettingSpec ct = RegisterSetting<HeldCtRatio, PlainText>(Entry(Setting::CtRatio, "CT ratio", "ct-ratio",
        "the CT ratio, 1 to 2400", {Typed("N", TypedField::CtRatio)}));
    ct.encode = [](const SettingValue& v, const WriteContext&) { return One(R::kCtRatio, v.fields[0]); };
    ct.block = MeterReading::Ratios;
    table.append(ct);

    SettingSpec pt1 = RegisterSetting<HeldPtRatio1, PtRatio1Text>(Entry(Setting::PtRatio1, "PT ratio 1", "pt-ratio",
        "PT ratio 1: 0.1 to 6250 by 0.1 (the meter holds up to 3276.7)", {Typed("RATIO", TypedField::PtRatio)}));
    pt1.encode = [](const SettingValue& v, const WriteContext&) -> SettingWrite {
        if (const auto write = W::PtRatio1(v.fields[0]))
            return Made(*write);
        return {std::nullopt, QStringLiteral("PT ratio 1 above %1 does not fit the meter's register").arg(W::kPtRatio1Largest)};
    };
    pt1.block = MeterReading::Ratios;
    table.append(pt1);

    SettingSpec serial = RegisterSetting<HeldSerial, SerialText>(Entry(Setting::SerialDisplay, "Serial number display",
        "serial-display", "shows the manufacturing serial number on the meter's display"));
    serial.encode = [](const SettingValue&, const WriteContext& c) { return Made(W::SerialDisplay(c.serialShown)); };
    table.append(serial);

    SettingSpec scroll = RegisterSetting<HeldScroll, ScrollText>(Entry(Setting::ScrollTime, "Scroll time", "scroll-time",
        "the display's scroll time", {Choice("SECONDS", ScrollTimeTexts())}));
    // The first entry is 3 seconds: the register holds the entry's index + 3, the number shown.
    scroll.encode = [](const SettingValue& v, const WriteContext&) { return Code(R::kScrollTime, SpecOf(Setting::ScrollTime).fields[0], v.fields[0], 3); };
    table.append(scroll);

    SettingSpec item = Entry(Setting::DisplayItem, "Display item", "display-item", "item at a position",
        {Choice("POSITION", DisplayPositionTexts()), Choice("ITEM", DisplayItemTexts())});
    item.encode = [](const SettingValue& v, const WriteContext&) { return One(quint16(R::kDisplayItems + v.fields[0] - 1), v.fields[1]); };
    item.reported = [](const MeterReading& r, const RegisterWrite& w) {
        const int position = DisplayPosition(w);
        return position < 0 || position >= int(r.displayItems.size()) ? QString()
                                                                       : DisplayItemText(position, r.displayItems[std::size_t(position)]);
    };
    item.written = [](const RegisterWrite& w) { return DisplayItemText(DisplayPosition(w), w.values.value(0)); };
    item.shows = [](const MeterReading& r, const RegisterWrite& w, const MeterReading&) {
        const int position = DisplayPosition(w);
        return position >= 0 && position < int(r.displayItems.size()) && r.displayItems[std::size_t(position)] == w.values.value(0);
    };
    table.append(item);

    table.append(GroupSetting<0>(Entry(Setting::LpGroup1, "LP group 1", "lp-group", "a load-profile group's set-up")));
    table.append(GroupSetting<1>(Entry(Setting::LpGroup2, "LP group 2", "lp-group", "a load-profile group's set-up")));
    table.append(GroupClear<0>(Entry(Setting::LpClear1, "LP group 1 records", "lp-clear", "deletes a load-profile group's records")));
    table.append(GroupClear<1>(Entry(Setting::LpClear2, "LP group 2 records", "lp-clear", "deletes a load-profile group's records")));

    SettingSpec kwh = Entry(Setting::ClearKwh, "Clear kWh", "clear-kwh", "clears all total energy counters");
    kwh.confirmed = true;
    kwh.caption = QStringLiteral("Clr kWh");
    kwh.question = QStringLiteral("Clear all total kWh？");
    kwh.encode = [](const SettingValue&, const WriteContext&) { return One(R::kClearKwh, W::kClearKwhCommand); };
    kwh.block = MeterReading::Energy;
    kwh.reported = [](const MeterReading& r, const RegisterWrite&) {
        return QStringLiteral("%1 kWh").arg(FormatFixed(r.EnergyTotal(MeterReading::KWhDelivered), 1));
    };
    kwh.written = [](const RegisterWrite&) { return QStringLiteral("0 kWh"); };
    kwh.shows = [](const MeterReading& r, const RegisterWrite&, const MeterReading& before) { return CountersCleared(r, before); };
    table.append(kwh);

    SettingSpec wiring = RegisterSetting<HeldWiring, WiringText>(Entry(Setting::Wiring, "Wiring", "wiring", "the wiring mode",
        {Choice("MODE", WiringTexts())}));
    wiring.encode = [](const SettingValue& v, const WriteContext&) { return Code(R::kWiring, SpecOf(Setting::Wiring).fields[0], v.fields[0], 0); };
    table.append(wiring);

    SettingSpec pt2 = Entry(Setting::PtRatio2, "PT ratio 2 (pri. ÷ sec.)", "pt-ratio-2", "PT ratio 2 from the primary and secondary voltages",
        {Typed("PRIMARY"), Typed("SECONDARY")});
    pt2.encode = [](const SettingValue& v, const WriteContext&) -> SettingWrite {
        if (const auto write = W::PtRatio2(v.fields[0], v.fields[1]))
            return Made(*write);
        return {std::nullopt, QStringLiteral("PT ratio 2 of %1 / %2 is no value the meter's register holds").arg(v.fields[0]).arg(v.fields[1])};
    };
    pt2.block = MeterReading::PtRatio2;
    // The register holds the ratio as a single; the write's is decoded as the poll decodes it.
    pt2.reported = [](const MeterReading& r, const RegisterWrite&) { return FormatFixed(r.ptRatio2Register, 4); };
    pt2.written = [](const RegisterWrite& w) { return FormatFixed(FloatAt(w.Data(), 0), 4); };
    pt2.shows = [](const MeterReading& r, const RegisterWrite& w, const MeterReading&) {
        return r.ptRatio2Register == FloatAt(w.Data(), 0);
    };
    table.append(pt2);

    return table;
}

QString TypedFieldFrom(const SettingField& field, const QString& text, double* value)
{
    if (field.check) {
        const FieldCheck check = CheckTypedField(*field.check, text);
        if (!check.accepted)
            return check.message;
    } else if (const QString ambiguous = AmbiguousReading(text); !ambiguous.isEmpty()) {
        return ambiguous;
    }
    const auto number = NumericValue(text);
    if (!number)
        return QStringLiteral("\"%1\" is no number").arg(text);
    *value = *number;
    return QString();
}

} // namespace

QString SettingName(Setting setting)
{
    return SpecOf(setting).name;
}

bool IsCommunication(Setting setting)
{
    return setting == Setting::Address || setting == Setting::BaudRate || setting == Setting::StopBit;
}

const QList<SettingSpec>& SettingTable()
{
    static const QList<SettingSpec> table = Build();
    return table;
}

const SettingSpec& SpecOf(Setting setting)
{
    return SettingTable()[int(setting)];
}

const SettingSpec* SpecByKey(const QString& key)
{
    for (const SettingSpec& entry : SettingTable()) {
        if (entry.key == key)
            return &entry;
    }
    return nullptr;
}

int ChoiceIndex(const SettingField& field, double value)
{
    for (int i = 0; i < field.choices.size(); ++i) {
        if (ChoiceValue(field, i) == value)
            return i;
    }
    return -1;
}

double ChoiceValue(const SettingField& field, int index)
{
    bool number = false;
    const int value = field.choices.value(index).toInt(&number);
    return number ? value : index;
}

SourcedValue ValueFromTexts(Setting setting, const QStringList& texts)
{
    const SettingSpec& entry = SpecOf(setting);
    SettingValue value;
    for (int i = 0; i < entry.fields.size(); ++i) {
        const SettingField& field = entry.fields[i];
        const QString text = texts.value(i);
        if (text.isEmpty())
            return {};
        if (field.Typed()) {
            double number = 0;
            if (const QString why = TypedFieldFrom(field, text, &number); !why.isEmpty())
                return SourcedValue::Refused(why);
            value.fields.append(number);
            continue;
        }
        const auto at = std::find_if(field.choices.begin(), field.choices.end(),
                                     [&text](const QString& choice) { return choice.compare(text, Qt::CaseInsensitive) == 0; });
        if (at == field.choices.end())
            return SourcedValue::Refused(QStringLiteral("\"%1\" is none of the choices").arg(text));
        value.fields.append(ChoiceValue(field, int(at - field.choices.begin())));
    }
    return SourcedValue::Of(value);
}

bool DeletesRecords(Setting setting, const SettingValue& value, const MeterReading& reading)
{
    if (setting != Setting::LpGroup1 && setting != Setting::LpGroup2)
        return SpecOf(setting).confirmed;
    const int group = setting == Setting::LpGroup1 ? 0 : 1;
    return int(value.fields.value(0)) != reading.loadProfile[std::size_t(group)].channelCount;
}

QString FieldRefusal(const SettingField& field, double number)
{
    if (!field.Typed() && ChoiceIndex(field, number) < 0)
        return QStringLiteral("%1 is none of %2").arg(number).arg(field.choices.join(QStringLiteral(", ")));
    if (field.check) {
        if (const FieldCheck check = CheckTypedNumber(*field.check, number); !check.accepted)
            return check.message;
    }
    return QString();
}

QString CheckAndEncode(Setting setting, const SettingValue& value, const WriteContext& context,
                       std::optional<RegisterWrite>* write)
{
    const SettingSpec& entry = SpecOf(setting);
    if (value.fields.size() != entry.fields.size())
        return QStringLiteral("%1 takes %2 values, not %3").arg(entry.name).arg(entry.fields.size()).arg(value.fields.size());
    for (int i = 0; i < entry.fields.size(); ++i) {
        const SettingField& field = entry.fields[i];
        if (const QString why = FieldRefusal(field, value.fields[i]); !why.isEmpty())
            return field.Typed() ? why : entry.name + QStringLiteral(": ") + why;
    }
    const SettingWrite made = entry.encode(value, context);
    *write = made.write;
    return made.whyNot;
}
