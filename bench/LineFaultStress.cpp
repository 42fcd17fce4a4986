// The link on a hostile line: a headless session polls the simulated meter (its clock
// standing still, pacing off) while the meter answers one request in 40 2.05 s late and all
// the others in order behind it with a 30 ms turnaround, then while the line carries bursts
// of noise. Every value of every reading is compared with the meter's own registers, decoded
// the same way. Last, the line is made busy for good, and the time to go off line is shown.
// Usage: stress_line_faults [TICKS]   (default 2000, per mode)
#include "MeterOnLine.h"
#include "measure/FixedFormat.h"
#include "measure/PollPlan.h"
#include "measure/ReadingDecoding.h"
#include "measure/ReadingFields.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <functional>

namespace {

QByteArray BlockData(sim::SimulatedMeterHost& meter, const PollBlock& block)
{
    QByteArray data;
    for (quint16 i = 0; i < block.count; ++i) {
        const quint16 reg = quint16(block.start + i);
        const quint16 value = block.function == Rtu::kReadHolding ? meter.holding(reg) : meter.input(reg);
        data.append(char(value >> 8)).append(char(value & 0xFF));
    }
    return data;
}

// The reading a clean line would give: the meter's registers through the poll's decoding.
MeterReading FromRegisters(sim::SimulatedMeterHost& meter)
{
    using PollPlan::kBlocks;
    MeterReading reading;
    QByteArray image;
    for (std::size_t i = 0; i < PollPlan::kImageBlocks; ++i)
        image += BlockData(meter, kBlocks[i]);
    DecodeRealTimeImage(image, reading);
    DecodeFrequency(BlockData(meter, kBlocks[PollPlan::Frequency]), reading);
    DecodeEnergy(BlockData(meter, kBlocks[PollPlan::Energy]), reading);
    DecodeRatios(BlockData(meter, kBlocks[PollPlan::Ratios]), reading);
    DecodePtRatio2(BlockData(meter, kBlocks[PollPlan::PtRatio2]), FormatFixed(reading.ptRatio1Register / 10.0, 1).toDouble(), reading);
    return reading;
}

struct Figures {
    int ticks = 0;
    int wholeTicks = 0;     // ticks that read all nine blocks
    qint64 valuesCompared = 0;
    qint64 valuesDiffering = 0;
    int retried = 0;        // transactions that needed more than one attempt
    int wentOffLine = 0;
    double seconds = 0;
};

Figures Run(int ticks, const std::function<void(sim::SimulatedMeterHost&)>& spoil)
{
    Figures figures;
    SessionOnLine on;
    if (!on.begin()) {
        std::fprintf(stderr, "cannot go on line to the simulated meter\n");
        return figures;
    }
    on.meter->setTurnaround(30);
    spoil(*on.meter);
    RegisterLink& link = on.session->connection.link;
    QObject::connect(&link, &RegisterLink::frame, [&figures](const FrameEvent& event) {
        if (event.outcome == FrameEvent::Outcome::Retry && event.attempt == 2)
            ++figures.retried;
    });
    QElapsedTimer wall;
    wall.start();
    for (int tick = 0; tick < ticks; ++tick) {
        if (!on.session->connection.bOnLine.isTrue()) {
            ++figures.wentOffLine;
            on.session->connection.ToggleOnLine(QStringLiteral("15"));
            on.session->connection.Timer1Sec.stop();
        }
        on.tick();
        ++figures.ticks;
        const MeterReading& read = on.session->poll.Reading();
        if (read.fresh == (MeterReading::RealTimeImage | MeterReading::Frequency | MeterReading::Energy
                           | MeterReading::Ratios | MeterReading::PtRatio2))
            ++figures.wholeTicks;
        const QList<ReadingField> actual = FieldsOf(read);
        const QList<ReadingField> expected = FieldsOf(FromRegisters(*on.meter));
        for (qsizetype i = 0; i < actual.size(); ++i) {
            if (actual[i].value.isNull())
                continue;
            ++figures.valuesCompared;
            if (actual[i].value != expected[i].value) {
                ++figures.valuesDiffering;
                std::fprintf(stderr, "tick %d: %s read %s, the meter holds %s\n", tick, qPrintable(actual[i].name),
                             qPrintable(FieldText(actual[i].value)), qPrintable(FieldText(expected[i].value)));
            }
        }
    }
    figures.seconds = double(wall.elapsed()) / 1000;
    return figures;
}

void Print(const char* mode, const Figures& f)
{
    std::printf("%-44s ticks %d (whole %d), values compared %lld, differing %lld, transactions retried %d, "
                "off line %d times, %.1f s\n",
                mode, f.ticks, f.wholeTicks, static_cast<long long>(f.valuesCompared), static_cast<long long>(f.valuesDiffering),
                f.retried, f.wentOffLine, f.seconds);
}

// One tick on a line that never falls silent: how long until the tool is off line, and why.
void BusyLine()
{
    SessionOnLine on;
    if (!on.begin())
        return;
    on.meter->setNoise(1, 0);
    QElapsedTimer wall;
    wall.start();
    on.tick();
    std::printf("a busy line: off line %s after %.2f s, reason \"%s\"\n", on.session->connection.bOnLine.isTrue() ? "NOT" : "",
                double(wall.elapsed()) / 1000, qPrintable(on.session->OffLineReason()));
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int ticks = argc > 1 ? std::atoi(argv[1]) : 2000;
    Print("clean line", Run(ticks / 10 + 1, [](sim::SimulatedMeterHost&) {}));
    Print("slow in order (1 in 40 late by 2.05 s)", Run(ticks, [](sim::SimulatedMeterHost& m) { m.setSlowReplies(40, 2050); }));
    Print("noisy (20 ms bursts, 400 ms apart)", Run(ticks, [](sim::SimulatedMeterHost& m) { m.setNoise(20, 400); }));
    BusyLine();
    return 0;
}
