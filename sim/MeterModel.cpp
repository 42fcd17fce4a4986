#include "sim/MeterModel.h"

#include "sim/FloatRegisters.h"

#include <QByteArray>

#include <algorithm>
#include <bit>

namespace sim {
namespace {

// Values the meter accepts per register; a write with any value outside is refused whole.
struct Limit {
    quint16 first;
    quint16 last;
    quint16 min;
    quint16 max;
};

constexpr std::array kLimits{
    Limit{Reg::kSlaveAddress, Reg::kSlaveAddress, 1, 247},
    Limit{Reg::kBaudCode, Reg::kStopBitCode, 1, 2},
    Limit{Reg::kWiring, Reg::kWiring, 0, 5},
    Limit{Reg::kPtRatio1, Reg::kCtRatio, 1, 0xFFFF},
    Limit{Reg::kClock + 6, Reg::kClock + 6, 0, 6}, // weekday; the date checks the rest
    Limit{0x1034, 0x1034, 1, 12},
    Limit{0x1035, 0x1035, 1, 60},
    Limit{0x1036, 0x1041, 1, 14},
    Limit{0x1043, 0x1043, 1, 8},
    Limit{0x1044, 0x1044, 1, 60},
    Limit{0x1045, 0x104C, 1, 14},
    Limit{Reg::kScrollTime, Reg::kScrollTime, 3, 15},
    Limit{Reg::kSerialDisplay, Reg::kSerialDisplay, 0, 1},
};

bool withinLimits(quint16 reg, quint16 value)
{
    return std::all_of(kLimits.cbegin(), kLimits.cend(), [&](const Limit& limit) {
        return reg < limit.first || reg > limit.last || (value >= limit.min && value <= limit.max);
    });
}

constexpr std::array<quint16, 12> kGroup1Codes{1, 2, 3, 4, 5, 7, 9, 11, 6, 8, 10, 12};
constexpr std::array<quint16, 8> kGroup2Codes{6, 12, 13, 14, 1, 2, 3, 4};
constexpr std::array<quint16, 10> kDisplayItems{101, 102, 103, 109, 110, 111, 116, 124, 128, 135};
constexpr std::array<int, 2> kRecordedAtPowerOn{1440, 960};
constexpr int kClockDateFields = 6; // the weekday follows from the date

// Model, firmware and hardware revision, serial number (two registers, high word first),
// year of manufacture.
constexpr std::array<quint16, 6> kMeterInfo{5820, 103, 2, 0, 0, 2023};
constexpr qsizetype kSerialInfo = 3;

constexpr quint16 kDetectedWiring = 5; // the simulated system is three-phase four-wire

bool isClockDateField(quint16 reg)
{
    return reg >= Reg::kClock && reg < Reg::kClock + kClockDateFields;
}

quint16 registerPair(char high, char low)
{
    return static_cast<quint16>((static_cast<quint8>(high) << 8) | static_cast<quint8>(low));
}

} // namespace

MeterModel::MeterModel(quint64 seed, const QDateTime& clock, SimClock::Mode mode)
    : m_seed(seed), m_clock(clock, mode), m_load(seed), m_energy(seed)
{
    for (quint16 reg = kSettingsBlock.first; reg < kSettingsBlock.first + kSettingsBlock.count; ++reg)
        m_holding.insert(reg, 0);
    m_holding[Reg::kSlaveAddress] = 15;
    m_holding[Reg::kBaudCode] = 2;
    m_holding[Reg::kStopBitCode] = 1;
    m_holding[Reg::kWiring] = 5;
    m_holding[Reg::kPtRatio1] = 10;
    m_holding[Reg::kCtRatio] = 5;
    m_holding[Reg::kNextInterval] = 1;
    m_holding[Reg::kScrollTime] = 5;
    for (int g = 0; g < 2; ++g) {
        const ProfileGroupRegisters& group = kProfileGroups[g];
        m_holding[group.channels] = g == 0 ? 8 : 4;
        m_holding[group.interval] = 15;
        for (int k = 0; k < group.maxChannels; ++k)
            m_holding[group.codes + k] = g == 0 ? kGroup1Codes[k] : kGroup2Codes[k];
    }
    for (std::size_t i = 0; i < kDisplayItems.size(); ++i)
        m_holding[Reg::kDisplayItems + i] = kDisplayItems[i];
    const auto one = std::bit_cast<quint32>(1.0f);
    m_holding[Reg::kPtRatio2] = static_cast<quint16>(one & 0xFFFF);
    m_holding[Reg::kPtRatio2 + 1] = static_cast<quint16>(one >> 16);
    for (int g = 0; g < 2; ++g)
        restartGroup(g, kRecordedAtPowerOn[g]);
}

void MeterModel::startWithHistory(int group, int recorded)
{
    const int held = std::clamp(recorded, 0, 0xFFFF);
    m_groups[group].enlargeToHold(held, int(groupSettings(group).codes.size()));
    restartGroup(group, held);
    m_energy.inServiceSince(m_load, std::min(m_groups[0].oldestStart(groupSettings(0)),
                                             m_groups[1].oldestStart(groupSettings(1))));
}

void MeterModel::startWithLoad(LoadCharacter character)
{
    ThreePhaseLoad load(m_seed, character);
    load.setWiring(m_load.wiring());
    m_load = load;
}

void MeterModel::startWithSerialNumber(quint32 serial)
{
    m_serial = std::min<quint32>(serial, 999999);
}

void MeterModel::startWithWiring(const WiringFault& fault)
{
    m_load.setWiring(fault);
}

RegisterRead MeterModel::read(Table table, quint16 start, quint16 count) const
{
    for (const Block& block : kServedBlocks) {
        if (block.table == table && block.holds(start, count))
            return {ModbusError::None, blockImage(block).mid(start - block.first, count)};
    }
    return {ModbusError::IllegalDataAddress, {}};
}

quint16 MeterModel::holding(quint16 reg) const
{
    return read(Table::Holding, reg, 1).values.value(0);
}

quint16 MeterModel::input(quint16 reg) const
{
    return read(Table::Input, reg, 1).values.value(0);
}

void MeterModel::setHolding(quint16 reg, quint16 value)
{
    m_holding[reg] = value;
}

void MeterModel::setInput(quint16 reg, quint16 value)
{
    m_inputOverrides[reg] = value;
}

quint8 MeterModel::slaveAddress() const
{
    return static_cast<quint8>(m_holding.value(Reg::kSlaveAddress));
}

qint32 MeterModel::baudRate() const
{
    switch (m_holding.value(Reg::kBaudCode)) {
    case 1: return 9600;
    case 2: return 19200;
    default: return 0;
    }
}

int MeterModel::stopBits() const
{
    const quint16 code = m_holding.value(Reg::kStopBitCode);
    return code == 1 || code == 2 ? code : 0;
}

QList<quint16> MeterModel::blockImage(const Block& block) const
{
    const double uptime = m_clock.uptime();
    QList<quint16> image;
    if (block.table == Table::Holding) {
        if (block.first == kSettingsBlock.first)
            return settingsImage();
        for (quint16 i = 0; i < block.count; ++i)
            image.append(m_holding.value(block.first + i));
        return image;
    }
    if (block.first == kInfoBlock.first)
        image = infoImage();
    else if (block.first == kMeasurementBlock.first)
        image = measurementImage(uptime);
    else if (block.first == kProfileCounterBlock.first)
        image = profileCounterImage(uptime);
    else
        image = recordImage(block.first == kProfileGroups[0].records.first ? 0 : 1, uptime);
    for (auto it = m_inputOverrides.cbegin(); it != m_inputOverrides.cend(); ++it) {
        if (block.holds(it.key(), 1))
            image[it.key() - block.first] = it.value();
    }
    return image;
}

QList<quint16> MeterModel::settingsImage() const
{
    QList<quint16> image(kSettingsBlock.count, 0);
    for (quint16 i = 0; i < kSettingsBlock.count; ++i)
        image[i] = m_holding.value(kSettingsBlock.first + i);
    const QDateTime now = m_clock.now();
    const std::array<int, Reg::kClockFields> fields{
        now.date().year() % 100, now.date().month(), now.date().day(),
        now.time().hour(), now.time().minute(), now.time().second(),
        now.date().dayOfWeek() % 7, // Qt counts Monday 1 .. Sunday 7; the meter Sunday 0
    };
    for (int i = 0; i < Reg::kClockFields; ++i)
        image[Reg::kClock - kSettingsBlock.first + i] = static_cast<quint16>(fields[i]);
    return image;
}

QList<quint16> MeterModel::infoImage() const
{
    QList<quint16> image(kInfoBlock.count, 0);
    std::copy(kMeterInfo.cbegin(), kMeterInfo.cend(), image.begin());
    image[kSerialInfo] = static_cast<quint16>(m_serial >> 16);
    image[kSerialInfo + 1] = static_cast<quint16>(m_serial & 0xFFFF);
    const QByteArray identification = QByteArrayLiteral("QX5820  SN") + QByteArray::number(m_serial).rightJustified(6, '0');
    const qsizetype text = Reg::kIdentification - kInfoBlock.first;
    for (int i = 0; i < Reg::kIdentificationLength / 2; ++i)
        image[text + i] = registerPair(identification.at(2 * i), identification.at(2 * i + 1));
    return image;
}

QList<quint16> MeterModel::measurementImage(double uptime) const
{
    QList<quint16> image(kMeasurementBlock.count, 0);
    const auto at = [](quint16 reg) { return qsizetype(reg - kMeasurementBlock.first); };
    const auto putAll = [&](quint16 reg, const auto& values) {
        for (std::size_t i = 0; i < values.size(); ++i)
            putFloat(image, at(reg) + 2 * qsizetype(i), values[i]);
    };
    const Measurements m = m_load.measure(uptime);
    putFloat(image, at(Reg::kFrequency), m.frequency);
    putAll(Reg::kPhaseVoltage, m.phaseVoltage);
    putAll(Reg::kLineVoltage, m.lineVoltage);
    putAll(Reg::kCurrent, m.current);
    putAll(Reg::kActivePower, m.activePower);
    putAll(Reg::kReactivePower, m.reactivePower);
    putAll(Reg::kApparentPower, m.apparentPower);
    putAll(Reg::kPowerFactor, m.powerFactor);
    putAll(Reg::kVoltageAngle, m.voltageAngle);
    putAll(Reg::kCurrentAngle, m.currentAngle);
    const quint16 wiring = m_holding.value(Reg::kWiring);
    image[at(Reg::kWiringDetected)] = wiring == 0 ? kDetectedWiring : wiring;
    image[at(Reg::kPhaseSequence)] = static_cast<quint16>(m.phaseSequence);
    const EnergyTable energy = m_energy.at(m_load, uptime);
    for (int k = 0; k < kEnergyKinds; ++k)
        putAll(static_cast<quint16>(Reg::kEnergy + 6 * k), energy[k]);
    return image;
}

QList<quint16> MeterModel::profileCounterImage(double uptime) const
{
    QList<quint16> image(kProfileCounterBlock.count, 0);
    const auto at = [](quint16 reg) { return qsizetype(reg - kProfileCounterBlock.first); };
    for (int g = 0; g < 2; ++g) {
        const ProfileGroupSettings settings = groupSettings(g);
        image[at(Reg::kValidIntervals) + g] = static_cast<quint16>(m_groups[g].validCount(uptime, settings));
        image[at(Reg::kMaxIntervals) + g] = static_cast<quint16>(m_groups[g].maxCount(int(settings.codes.size())));
    }
    const quint16 valid = image[at(Reg::kValidIntervals)];
    image[at(Reg::kRecordRange)] = valid > 0 ? 1 : 0;
    image[at(Reg::kRecordRange) + 1] = valid;
    return image;
}

QList<quint16> MeterModel::recordImage(int group, double uptime) const
{
    return m_groups[group].recordArea(m_holding.value(Reg::kNextInterval), groupSettings(group), m_load, m_energy, uptime);
}

ProfileGroupSettings MeterModel::groupSettings(int group) const
{
    const ProfileGroupRegisters& registers = kProfileGroups[group];
    const int channels = std::clamp<int>(m_holding.value(registers.channels), 0, registers.maxChannels);
    ProfileGroupSettings settings;
    settings.intervalMinutes = m_holding.value(registers.interval);
    for (int k = 0; k < channels; ++k)
        settings.codes.append(m_holding.value(registers.codes + k));
    return settings;
}

void MeterModel::restartGroup(int group, int recorded)
{
    m_groups[group].restart(m_clock, groupSettings(group).intervalMinutes, recorded);
}

std::optional<QDateTime> MeterModel::clockAfter(quint16 start, const QList<quint16>& values) const
{
    const QDateTime now = m_clock.now();
    std::array<int, kClockDateFields> fields{
        now.date().year() % 100, now.date().month(), now.date().day(),
        now.time().hour(), now.time().minute(), now.time().second(),
    };
    bool touched = false;
    for (qsizetype i = 0; i < values.size(); ++i) {
        const quint16 reg = static_cast<quint16>(start + i);
        if (isClockDateField(reg)) {
            fields[reg - Reg::kClock] = values[i];
            touched = true;
        }
    }
    if (!touched)
        return std::nullopt;
    if (fields[0] > 99)
        return QDateTime();
    return QDateTime(QDate(2000 + fields[0], fields[1], fields[2]), QTime(fields[3], fields[4], fields[5]), Qt::UTC);
}

ModbusError MeterModel::write(quint16 start, const QList<quint16>& values)
{
    const auto count = static_cast<quint16>(values.size());
    if (!kSettingsBlock.holds(start, count) && !kPtRatio2Block.holds(start, count))
        return ModbusError::IllegalDataAddress;
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (!withinLimits(static_cast<quint16>(start + i), values[i]))
            return ModbusError::IllegalDataValue;
    }
    const std::optional<QDateTime> clock = clockAfter(start, values);
    if (clock && !clock->isValid())
        return ModbusError::IllegalDataValue;
    for (qsizetype i = 0; i < values.size(); ++i)
        apply(static_cast<quint16>(start + i), values[i]);
    if (clock)
        m_clock.set(*clock);
    return ModbusError::None;
}

void MeterModel::apply(quint16 reg, quint16 value)
{
    if (reg == Reg::kClearEnergy) {
        if (value == kClearEnergyCommand)
            m_energy.clear(m_clock.uptime());
        return;
    }
    if (reg >= Reg::kClock && reg < Reg::kClock + Reg::kClockFields)
        return; // the clock keeps these; write() sets it from the date fields
    for (int g = 0; g < 2; ++g) {
        const ProfileGroupRegisters& group = kProfileGroups[g];
        if (reg == group.clear) {
            if (value == kClearGroupCommand)
                restartGroup(g, 0);
            return;
        }
        // Records of another length or spacing would no longer read back: the memory is
        // emptied.
        if ((reg == group.channels || reg == group.interval) && value != m_holding.value(reg)) {
            m_holding[reg] = value;
            restartGroup(g, 0);
            return;
        }
    }
    m_holding[reg] = value;
}

} // namespace sim
