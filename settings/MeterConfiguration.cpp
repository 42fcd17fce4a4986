#include "settings/MeterConfiguration.h"

#include "ports/MeterChoices.h"
#include "ports/TimeText.h"
#include "settings/SettingTable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace {

// The settings held in the file as one number: where, and under which key.
struct NumberKey {
    Setting setting;
    const char* object; // the enclosing object's key; null at the top
    const char* key;
};

const NumberKey kNumbers[] = {
    {Setting::Address, "communication", "address"},
    {Setting::BaudRate, "communication", "baud"},
    {Setting::StopBit, "communication", "stop_bits"},
    {Setting::CtRatio, nullptr, "ct_ratio"},
    {Setting::PtRatio1, nullptr, "pt_ratio_1"},
    {Setting::ScrollTime, nullptr, "scroll_time"},
};

const QString kCommunication = QStringLiteral("communication");
const QString kWiring = QStringLiteral("wiring");
const QString kPtRatio2 = QStringLiteral("pt_ratio_2");
const QString kDisplayItems = QStringLiteral("display_items");
const QString kLpGroups = QStringLiteral("lp_groups");
const QString kSource = QStringLiteral("source");

int GroupIndex(Setting setting)
{
    return setting == Setting::LpGroup1 ? 0 : 1;
}

Setting GroupSetting(int group)
{
    return group == 0 ? Setting::LpGroup1 : Setting::LpGroup2;
}

// A channel count and an interval before the codes.
int GroupCodeCount(int group)
{
    return int(SpecOf(GroupSetting(group)).fields.size()) - 2;
}

// Why the table cannot write `item`; empty when it can, with the write in `write`.
QString Encode(const ConfiguredSetting& item, std::optional<RegisterWrite>* write)
{
    return CheckAndEncode(item.setting, item.value, {QDateTime::currentDateTime(), false}, write);
}

// ---- Reading a file -----------------------------------------------------------------------

// Takes the file's fields and checks each as it comes; the first refusal, naming its field,
// is kept and later fields are not judged.
class FileReader {
public:
    QString error;

    void Refuse(const QString& path, const QString& why)
    {
        if (error.isEmpty())
            error = path + QStringLiteral(": ") + why;
    }

    QJsonValue Field(const QJsonObject& object, const QString& key, const QString& path)
    {
        if (!object.contains(key))
            Refuse(path, QStringLiteral("missing"));
        return object.value(key);
    }

    QJsonObject Object(const QJsonObject& object, const QString& key, const QString& path)
    {
        const QJsonValue value = Field(object, key, path);
        if (!value.isUndefined() && !value.isObject())
            Refuse(path, QStringLiteral("not an object"));
        return value.toObject();
    }

    QJsonArray Array(const QJsonObject& object, const QString& key, const QString& path, int size)
    {
        const QJsonValue value = Field(object, key, path);
        if (!value.isUndefined() && !value.isArray())
            Refuse(path, QStringLiteral("not a list"));
        else if (value.isArray() && value.toArray().size() != size)
            Refuse(path, QStringLiteral("%1 entries where %2 belong").arg(value.toArray().size()).arg(size));
        return value.toArray();
    }

    double Number(const QJsonValue& value, const QString& path)
    {
        if (!value.isUndefined() && !value.isDouble())
            Refuse(path, QStringLiteral("not a number"));
        return value.toDouble();
    }

    double Number(const QJsonObject& object, const QString& key, const QString& path)
    {
        return Number(Field(object, key, path), path);
    }

    // The number checked as the setting's field checks what the operator types or picks.
    double Checked(const SettingField& field, double number, const QString& path)
    {
        if (const QString why = FieldRefusal(field, number); !why.isEmpty())
            Refuse(path, why);
        return number;
    }

    // A whole value, its fields checked one by one above; what is left is its encoding.
    void Add(QList<ConfiguredSetting>& settings, Setting setting, const SettingValue& value, const QString& path)
    {
        if (!error.isEmpty())
            return;
        const ConfiguredSetting item{setting, value};
        std::optional<RegisterWrite> write;
        if (const QString why = Encode(item, &write); !why.isEmpty())
            Refuse(path, why);
        settings.append(item);
    }
};

QString Path(const char* object, const char* key)
{
    return object == nullptr ? QString::fromLatin1(key) : QStringLiteral("%1.%2").arg(QLatin1String(object), QLatin1String(key));
}

QString Indexed(const QString& path, qsizetype index)
{
    return QStringLiteral("%1[%2]").arg(path).arg(index);
}

void ReadGroups(FileReader& reader, const QJsonObject& root, QList<ConfiguredSetting>& settings)
{
    const QJsonArray groups = reader.Array(root, kLpGroups, kLpGroups, 2);
    for (int g = 0; g < groups.size() && reader.error.isEmpty(); ++g) {
        const QString path = Indexed(kLpGroups, g);
        if (!groups[g].isObject()) {
            reader.Refuse(path, QStringLiteral("not an object"));
            break;
        }
        const QJsonObject group = groups[g].toObject();
        const QList<SettingField>& fields = SpecOf(GroupSetting(g)).fields;
        SettingValue value;
        value.fields.append(reader.Checked(fields[0], reader.Number(group, QStringLiteral("channels"), path + QStringLiteral(".channels")),
                                           path + QStringLiteral(".channels")));
        value.fields.append(reader.Checked(fields[1], reader.Number(group, QStringLiteral("interval"), path + QStringLiteral(".interval")),
                                           path + QStringLiteral(".interval")));
        const QString codesPath = path + QStringLiteral(".codes");
        const QJsonArray codes = reader.Array(group, QStringLiteral("codes"), codesPath, GroupCodeCount(g));
        for (qsizetype c = 0; c < codes.size(); ++c)
            value.fields.append(reader.Checked(fields[2 + c], reader.Number(codes[c], Indexed(codesPath, c)), Indexed(codesPath, c)));
        reader.Add(settings, GroupSetting(g), value, path);
    }
}

void ReadSettings(FileReader& reader, const QJsonObject& root, QList<ConfiguredSetting>& settings)
{
    for (const NumberKey& number : kNumbers) {
        const QString path = Path(number.object, number.key);
        const QJsonObject object = number.object == nullptr ? root : reader.Object(root, QString::fromLatin1(number.object), kCommunication);
        const double value = reader.Checked(SpecOf(number.setting).fields[0], reader.Number(object, QString::fromLatin1(number.key), path), path);
        reader.Add(settings, number.setting, {{value}}, path);
    }

    const QJsonValue wiring = reader.Field(root, kWiring, kWiring);
    const int mode = int(WiringTexts().indexOf(wiring.toString()));
    if (!wiring.isUndefined() && !wiring.isString())
        reader.Refuse(kWiring, QStringLiteral("not a word"));
    else if (!wiring.isUndefined() && mode < 0)
        reader.Refuse(kWiring, QStringLiteral("\"%1\" is none of %2").arg(wiring.toString(), WiringTexts().join(QStringLiteral(", "))));
    reader.Add(settings, Setting::Wiring, {{ChoiceValue(SpecOf(Setting::Wiring).fields[0], mode)}}, kWiring);

    const QJsonObject pt2 = reader.Object(root, kPtRatio2, kPtRatio2);
    const double primary = reader.Number(pt2, QStringLiteral("primary"), kPtRatio2 + QStringLiteral(".primary"));
    const double secondary = reader.Number(pt2, QStringLiteral("secondary"), kPtRatio2 + QStringLiteral(".secondary"));
    const double ratio = reader.Number(pt2, QStringLiteral("ratio"), kPtRatio2 + QStringLiteral(".ratio"));
    // The ratio is there for the reader of the file; primary and secondary are what is written.
    if (reader.error.isEmpty() && !(std::abs(primary / secondary - ratio) <= 1e-4 * std::abs(ratio)))
        reader.Refuse(kPtRatio2 + QStringLiteral(".ratio"), QStringLiteral("%1 is not primary / secondary (%2)").arg(ratio).arg(primary / secondary));
    reader.Add(settings, Setting::PtRatio2, {{primary, secondary}}, kPtRatio2);

    const QList<SettingField>& item = SpecOf(Setting::DisplayItem).fields;
    const QJsonArray items = reader.Array(root, kDisplayItems, kDisplayItems, int(item[0].choices.size()));
    for (qsizetype p = 0; p < items.size(); ++p) {
        const QString path = Indexed(kDisplayItems, p);
        const double code = reader.Checked(item[1], reader.Number(items[p], path), path);
        reader.Add(settings, Setting::DisplayItem, {{double(p + 1), code}}, path);
    }

    ReadGroups(reader, root, settings);
}

ConfigurationSource ReadSource(const QJsonObject& source)
{
    return {source.value(QStringLiteral("identification")).toString(),
            QDateTime::fromString(source.value(QStringLiteral("pc_time")).toString(), Qt::ISODate),
            source.value(QStringLiteral("tool_version")).toString()};
}

// ---- Writing a file -----------------------------------------------------------------------

const NumberKey* NumberKeyOf(Setting setting)
{
    const auto at = std::find_if(std::begin(kNumbers), std::end(kNumbers), [setting](const NumberKey& k) { return k.setting == setting; });
    return at == std::end(kNumbers) ? nullptr : at;
}

QJsonArray Numbers(const QList<double>& values)
{
    QJsonArray array;
    for (double value : values)
        array.append(value);
    return array;
}

} // namespace

MeterConfiguration ConfigurationOf(const MeterReading& r, const ConfigurationSource& source)
{
    const auto choice = [](Setting setting, int index) { return ChoiceValue(SpecOf(setting).fields[0], index); };
    MeterConfiguration configuration;
    configuration.source = source;
    QList<ConfiguredSetting>& s = configuration.settings;
    s.append({Setting::Address, {{double(r.slaveAddress)}}});
    s.append({Setting::BaudRate, {{choice(Setting::BaudRate, r.baudRateCode - 1)}}});
    s.append({Setting::StopBit, {{choice(Setting::StopBit, r.stopBitCode - 1)}}});
    s.append({Setting::CtRatio, {{double(r.ctRatioRegister)}}});
    s.append({Setting::PtRatio1, {{r.ptRatio1Register / 10.0}}});
    s.append({Setting::ScrollTime, {{double(r.scrollTime)}}});
    for (std::size_t p = 0; p < r.displayItems.size(); ++p)
        s.append({Setting::DisplayItem, {{double(p + 1), double(r.displayItems[p])}}});
    for (int g = 0; g < 2; ++g) {
        const MeterReading::LoadProfileGroup& group = r.loadProfile[std::size_t(g)];
        SettingValue value{{double(group.channelCount), double(group.intervalMinutes)}};
        for (int code : group.channelCodes)
            value.fields.append(code);
        s.append({GroupSetting(g), value});
    }
    s.append({Setting::Wiring, {{choice(Setting::Wiring, r.wiringSetting)}}});
    s.append({Setting::PtRatio2, {{r.ptRatio2Register, 1.0}}});
    return configuration;
}

QByteArray ConfigurationJson(const MeterConfiguration& configuration)
{
    QJsonObject root{{QStringLiteral("format"), MeterConfiguration::kFormat}};
    const ConfigurationSource& source = configuration.source;
    root.insert(kSource, QJsonObject{{QStringLiteral("identification"), source.identification},
                                     {QStringLiteral("pc_time"), IsoTimeWithOffset(source.pcTime)},
                                     {QStringLiteral("tool_version"), source.toolVersion}});
    QJsonObject communication;
    QJsonArray items;
    QJsonArray groups{QJsonObject(), QJsonObject()};
    for (const ConfiguredSetting& item : configuration.settings) {
        const QList<double>& f = item.value.fields;
        if (const NumberKey* number = NumberKeyOf(item.setting)) {
            QJsonObject& object = number->object == nullptr ? root : communication;
            object.insert(QString::fromLatin1(number->key), f[0]);
        } else if (item.setting == Setting::Wiring) {
            root.insert(kWiring, WiringTexts().value(int(f[0])));
        } else if (item.setting == Setting::PtRatio2) {
            root.insert(kPtRatio2, QJsonObject{{QStringLiteral("primary"), f[0]}, {QStringLiteral("secondary"), f[1]},
                                               {QStringLiteral("ratio"), f[0] / f[1]}});
        } else if (item.setting == Setting::DisplayItem) {
            items.append(f[1]);
        } else if (item.setting == Setting::LpGroup1 || item.setting == Setting::LpGroup2) {
            groups[GroupIndex(item.setting)] = QJsonObject{
                {QStringLiteral("channels"), f[0]}, {QStringLiteral("interval"), f[1]}, {QStringLiteral("codes"), Numbers(f.mid(2))}};
        }
    }
    root.insert(kCommunication, communication);
    root.insert(kDisplayItems, items);
    root.insert(kLpGroups, groups);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

ParsedConfiguration ParseConfiguration(const QByteArray& json)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return {std::nullopt, QStringLiteral("not JSON: %1 at offset %2").arg(parseError.errorString()).arg(parseError.offset)};
    if (!document.isObject())
        return {std::nullopt, QStringLiteral("not a JSON object")};
    const QJsonObject root = document.object();
    FileReader reader;
    const QJsonValue format = reader.Field(root, QStringLiteral("format"), QStringLiteral("format"));
    if (!format.isUndefined() && !(format.isDouble() && format.toDouble() == MeterConfiguration::kFormat))
        reader.Refuse(QStringLiteral("format"), QStringLiteral("version %1 is not the version %2 this tool reads")
                                                    .arg(format.toVariant().toString()).arg(MeterConfiguration::kFormat));
    MeterConfiguration configuration;
    if (reader.error.isEmpty())
        ReadSettings(reader, root, configuration.settings);
    if (!reader.error.isEmpty())
        return {std::nullopt, reader.error};
    // The dispatcher's order, which the writes follow.
    std::stable_sort(configuration.settings.begin(), configuration.settings.end(),
                     [](const ConfiguredSetting& a, const ConfiguredSetting& b) { return a.setting < b.setting; });
    configuration.source = ReadSource(root.value(kSource).toObject());
    return {configuration, QString()};
}

QList<SettingComparison> Compare(const MeterConfiguration& configuration, const MeterReading& reading)
{
    QList<SettingComparison> comparisons;
    for (const ConfiguredSetting& item : configuration.settings) {
        const SettingSpec& entry = SpecOf(item.setting);
        std::optional<RegisterWrite> made;
        Encode(item, &made);
        const RegisterWrite write = made.value_or(RegisterWrite{});
        comparisons.append({item, write, entry.written(write), entry.reported(reading, write), !entry.shows(reading, write, reading)});
    }
    return comparisons;
}
