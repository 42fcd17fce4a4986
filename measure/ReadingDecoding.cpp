#include "measure/ReadingDecoding.h"

#include "measure/FloatDecoding.h"
#include "measure/PollPlan.h"

namespace {

using PollPlan::Holding;
using PollPlan::Input;

int ByteAt(const QByteArray& data, qsizetype index)
{
    return quint8(data.at(index));
}

int WordAt(const QByteArray& data, qsizetype index)
{
    return ByteAt(data, index) * 256 + ByteAt(data, index + 1);
}

// `N` consecutive meter floats from image byte `base`.
template <std::size_t N>
void FloatsAt(const QByteArray& data, qsizetype base, std::array<double, N>& values)
{
    for (std::size_t i = 0; i < N; ++i)
        values[i] = FloatAt(data, base + 4 * qsizetype(i));
}

// Where each recording group's registers sit in the image.
struct GroupLayout {
    qsizetype channelCount;
    qsizetype interval;
    qsizetype channels;
    int channelSlots;
    qsizetype validIntervals;
    qsizetype maxIntervals;
};

constexpr GroupLayout kGroups[] = {
    {Holding(0x1034), Holding(0x1035), Holding(0x1036), 12, Input(0x1190), Input(0x1192)},
    {Holding(0x1043), Holding(0x1044), Holding(0x1045), 8, Input(0x1191), Input(0x1193)},
};

// An 8-bit setting is the low byte of its register.
constexpr qsizetype LowByte(qsizetype registerOffset) { return registerOffset + 1; }

void DecodeClock(const QByteArray& image, MeterReading::Clock& clock)
{
    const auto field = [&image](int i) { return ByteAt(image, LowByte(Holding(0x1023)) + 2 * i); };
    clock = {2000 + field(0), field(1), field(2), field(3), field(4), field(5)};
}

void DecodeLoadProfile(const QByteArray& image, MeterReading& reading)
{
    for (std::size_t g = 0; g < std::size(kGroups); ++g) {
        const GroupLayout& layout = kGroups[g];
        MeterReading::LoadProfileGroup& group = reading.loadProfile[g];
        group.channelCount = WordAt(image, layout.channelCount);
        group.intervalMinutes = WordAt(image, layout.interval);
        group.channelCodes.clear();
        for (int i = 0; i < layout.channelSlots; ++i)
            group.channelCodes.append(WordAt(image, layout.channels + 2 * i));
        group.validIntervals = WordAt(image, layout.validIntervals);
        group.maxIntervals = WordAt(image, layout.maxIntervals);
    }
    reading.recordRange = {WordAt(image, Input(0x1194)), WordAt(image, Input(0x1195))};
}

void Mark(MeterReading& reading, MeterReading::Block block)
{
    reading.fresh |= block;
    reading.known |= block;
}

} // namespace

void DecodeRealTimeImage(const QByteArray& image, MeterReading& reading)
{
    FloatsAt(image, Input(0x1080), reading.phaseVoltage);
    FloatsAt(image, Input(0x1088), reading.lineVoltage);
    FloatsAt(image, Input(0x1090), reading.current);
    FloatsAt(image, Input(0x1098), reading.activePower);
    FloatsAt(image, Input(0x10A0), reading.reactivePower);
    FloatsAt(image, Input(0x10A8), reading.apparentPower);
    FloatsAt(image, Input(0x10B0), reading.powerFactor);
    FloatsAt(image, Input(0x10B8), reading.voltageAngle);
    FloatsAt(image, Input(0x10BE), reading.currentAngle);
    DecodeClock(image, reading.clock);
    reading.identification = image.mid(Input(0x100C), 16);
    reading.wiringCode = ByteAt(image, LowByte(Input(0x10C4)));
    reading.phaseSequenceCode = ByteAt(image, LowByte(Input(0x10C5)));
    DecodeLoadProfile(image, reading);
    reading.slaveAddress = WordAt(image, Holding(0x1000));
    reading.baudRateCode = WordAt(image, Holding(0x1001));
    reading.stopBitCode = WordAt(image, Holding(0x1002));
    reading.wiringSetting = WordAt(image, Holding(0x1004));
    reading.scrollTime = WordAt(image, Holding(0x1050));
    reading.serialDisplay = WordAt(image, Holding(0x1051));
    for (std::size_t i = 0; i < reading.displayItems.size(); ++i)
        reading.displayItems[i] = ByteAt(image, LowByte(Holding(0x1052)) + 2 * qsizetype(i));
    Mark(reading, MeterReading::RealTimeImage);
}

void DecodeFrequency(const QByteArray& data, MeterReading& reading)
{
    reading.frequency = FloatAt(data, 0);
    Mark(reading, MeterReading::Frequency);
}

void DecodeEnergy(const QByteArray& data, MeterReading& reading)
{
    // Kind k, phase t: input register 0x10D4 + 6k + 2t.
    for (int k = 0; k < MeterReading::EnergyKinds; ++k)
        for (int t = 0; t < 3; ++t)
            reading.energy[k][t] = FloatAt(data, PollPlan::BlockOffset(PollPlan::Energy, 0x10D4) + 12 * k + 4 * t);
    Mark(reading, MeterReading::Energy);
}

void DecodeRatios(const QByteArray& data, MeterReading& reading)
{
    reading.ptRatio1Register = quint16(WordAt(data, PollPlan::BlockOffset(PollPlan::Ratios, 0x1021)));
    reading.ctRatioRegister = quint16(WordAt(data, PollPlan::BlockOffset(PollPlan::Ratios, 0x1022)));
    Mark(reading, MeterReading::Ratios);
}

void DecodePtRatio2(const QByteArray& data, double ptRatio1, MeterReading& reading)
{
    reading.ptRatio2Register = FloatAt(data, 0);
    reading.ptRatio2 = reading.ptRatio2Register * ptRatio1;
    Mark(reading, MeterReading::PtRatio2);
}

double MeterReading::EnergyTotal(int kind) const
{
    const auto& phases = energy[std::size_t(kind)];
    return phases[0] + phases[1] + phases[2];
}
