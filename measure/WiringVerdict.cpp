#include "measure/WiringVerdict.h"

#include <QtMath>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <optional>

namespace {

using Check = WiringFinding::Check;
using namespace WiringLimits;

// What a wiring mode lets the meter measure.
struct Scope {
    QList<int> voltages;       // phases, or lines (L1-L2, L2-L3, L3-L1) when lineVoltages
    bool lineVoltages = false;
    QList<int> currents;       // phases with a CT
    bool sequence = false;     // three phases, whose order means something
    bool phaseAngles = false;  // each phase's current and power against its own voltage
};

std::optional<Scope> ScopeOf(int wiringCode)
{
    switch (wiringCode) {
    case 1: return Scope{{0}, false, {0}, false, true};                // 1P2W
    case 2: return Scope{{0, 1}, false, {0, 1}, false, true};          // 1P3W
    case 3: return Scope{{0, 1, 2}, true, {0, 2}, true, false};        // 3P3W 2CT
    case 4: return Scope{{0, 1, 2}, true, {0, 1, 2}, true, false};     // 3P3W 3CT
    case 5: return Scope{{0, 1, 2}, false, {0, 1, 2}, true, true};     // 3P4W
    default: return std::nullopt;
    }
}

QString PhaseName(int phase)
{
    return QStringLiteral("L%1").arg(phase + 1);
}

QString LineName(int line)
{
    return QStringLiteral("L%1-L%2").arg(line + 1).arg((line + 1) % 3 + 1);
}

QString Names(const QList<int>& phases)
{
    QStringList names;
    for (int phase : phases)
        names << PhaseName(phase);
    const QString last = names.takeLast();
    return names.isEmpty() ? last : names.join(QStringLiteral(", ")) + QStringLiteral(" and ") + last;
}

QString Percent(double fraction)
{
    return QStringLiteral("%1 %").arg(fraction * 100, 0, 'f', 0);
}

// An angle difference in (−180, 180].
double Wrapped(double degrees)
{
    const double turned = std::fmod(degrees, 360.0);
    return turned > 180 ? turned - 360 : turned <= -180 ? turned + 360 : turned;
}

// The largest departure of `values` at `which` from their average, as a fraction of it, and
// where it is.
struct Unbalance {
    double fraction = 0;
    int worst = 0;
};

Unbalance UnbalanceOf(const std::array<double, 4>& values, const QList<int>& which)
{
    double sum = 0;
    for (int i : which)
        sum += values[i];
    const double mean = sum / double(which.size());
    Unbalance unbalance;
    for (int i : which) {
        const double fraction = std::abs(values[i] - mean) / mean;
        if (fraction > unbalance.fraction)
            unbalance = {fraction, i};
    }
    return unbalance;
}

// A way the CTs may sit on the meter's inputs: input inputs[i] carries the current of phase
// sources[i], turned round where bit i of `turned` is set.
struct Rewiring {
    QList<int> inputs;
    QList<int> sources;
    unsigned turned = 0;
    int changes = 0;      // CTs moved (a swap of two counts one, a rotation of three two) and turned
    double loadAngle = 0; // the phases' mean load angle under this rewiring, degrees, lagging > 0

    QList<int> Moved() const
    {
        QList<int> moved;
        for (qsizetype i = 0; i < inputs.size(); ++i) {
            if (sources[i] != inputs[i])
                moved << inputs[i];
        }
        return moved;
    }
    bool IsSwap() const { return turned == 0 && Moved().size() == 2; }
};

// The load angle each input would show if its CT sat as `rewiring` says, or nothing when one
// of them would put the current 90° or more from its voltage, which no load does.
std::optional<QList<double>> LoadAngles(const MeterReading& r, const Rewiring& rewiring)
{
    QList<double> angles;
    for (qsizetype i = 0; i < rewiring.inputs.size(); ++i) {
        const double turn = (rewiring.turned >> i) & 1u ? 180.0 : 0.0;
        const double angle = Wrapped(r.currentAngle[rewiring.inputs[i]] + turn - r.voltageAngle[rewiring.sources[i]]);
        if (std::abs(angle) >= 90.0)
            return std::nullopt;
        angles.append(angle);
    }
    return angles;
}

// Moves a permutation makes: its length less its cycles.
int Moves(const QList<int>& inputs, const QList<int>& sources)
{
    QList<bool> seen(inputs.size(), false);
    int cycles = 0;
    for (qsizetype start = 0; start < inputs.size(); ++start) {
        if (seen[start])
            continue;
        ++cycles;
        for (qsizetype i = start; !seen[i]; i = inputs.indexOf(sources[i]))
            seen[i] = true;
    }
    return int(inputs.size()) - cycles;
}

// The rewirings with the fewest changes that make every input's current a plausible load
// current, the phases' load angles lying together; the likeliest first, the one that gives the
// load the best power factor. Empty when no rewiring does.
//
// Rotating all three currents by one phase turns every load angle by 120°, so at a load angle
// beyond 30° two different swaps can both explain the readings, one for a lagging load and
// one for a leading load; the best power factor tells them apart until both reach 60°.
QList<Rewiring> SimplestRewirings(const MeterReading& r, const QList<int>& inputs)
{
    QList<Rewiring> found;
    Rewiring candidate{inputs, inputs};
    do {
        for (candidate.turned = 0; candidate.turned < (1u << inputs.size()); ++candidate.turned) {
            const std::optional<QList<double>> angles = LoadAngles(r, candidate);
            if (!angles)
                continue;
            const auto [low, high] = std::minmax_element(angles->cbegin(), angles->cend());
            if (*high - *low > kLoadAngleSpread)
                continue;
            candidate.changes = Moves(inputs, candidate.sources) + std::popcount(candidate.turned);
            candidate.loadAngle = std::accumulate(angles->cbegin(), angles->cend(), 0.0) / double(angles->size());
            if (found.isEmpty() || candidate.changes < found.first().changes)
                found = {candidate};
            else if (candidate.changes == found.first().changes)
                found.append(candidate);
        }
    } while (std::next_permutation(candidate.sources.begin(), candidate.sources.end()));
    std::sort(found.begin(), found.end(),
              [](const Rewiring& a, const Rewiring& b) { return std::abs(a.loadAngle) < std::abs(b.loadAngle); });
    return found;
}

class Judge {
public:
    Judge(const MeterReading& reading, const Scope& scope) : r(reading), m_scope(scope) {}

    void Voltages();
    void Sequence();
    void CurrentWiring();
    void PowerFactors();
    void CurrentBalance();

    WiringVerdict verdict;

private:
    void Find(Check check, QList<int> phases, const QString& text)
    {
        verdict.findings.append({check, std::move(phases), text});
    }
    void ReportRewiring(const QList<Rewiring>& rewirings);
    double LargestCurrent() const;

    const MeterReading& r;
    const Scope& m_scope;
    QList<int> m_badVoltage; // phases whose voltage is missing or low
    QList<int> m_judged;    // phases whose current's angle and power can be judged
    QList<int> m_explained; // phases a finding on their CT already accounts for
};

void Judge::Voltages()
{
    const std::array<double, 4>& volts = m_scope.lineVoltages ? r.lineVoltage : r.phaseVoltage;
    double highest = 0;
    for (int i : m_scope.voltages)
        highest = std::max(highest, volts[i]);
    for (int i : m_scope.voltages) {
        const QString name = m_scope.lineVoltages ? LineName(i) : PhaseName(i);
        const QList<int> phases = m_scope.lineVoltages ? QList<int>{i, (i + 1) % 3} : QList<int>{i};
        const QString check = QStringLiteral("Check the voltage connection and fuse of %1.").arg(Names(phases));
        if (volts[i] < kAbsentVoltage) {
            Find(Check::Voltage, phases, QStringLiteral("%1: no voltage. %2").arg(name, check));
        } else if (volts[i] < kLowVoltageFraction * highest) {
            Find(Check::Voltage, phases, QStringLiteral("%1: voltage low, %2 V against %3 V. %4")
                                             .arg(name).arg(volts[i], 0, 'f', 1).arg(highest, 0, 'f', 1).arg(check));
        } else {
            continue;
        }
        m_badVoltage << phases;
    }
    if (!m_badVoltage.isEmpty() || m_scope.voltages.size() < 2)
        return;
    const Unbalance unbalance = UnbalanceOf(volts, m_scope.voltages);
    if (unbalance.fraction > kVoltageUnbalanceLimit) {
        const QString worst = m_scope.lineVoltages ? LineName(unbalance.worst) : PhaseName(unbalance.worst);
        Find(Check::VoltageUnbalance, {unbalance.worst},
             QStringLiteral("Voltages unbalanced by %1 (limit %2), %3 furthest from the average. "
                            "Check the supply and the voltage connections.")
                 .arg(Percent(unbalance.fraction), Percent(kVoltageUnbalanceLimit), worst));
    }
}

void Judge::Sequence()
{
    if (!m_scope.sequence)
        return;
    if (r.phaseSequenceCode == 2) {
        Find(Check::PhaseSequence, {}, QStringLiteral(
            "Phase sequence reversed (CBA). Exchange L2 and L3 at the meter, voltage and current "
            "together, or check the supply's rotation."));
    } else if (r.phaseSequenceCode != 1 && m_badVoltage.isEmpty()) {
        // A missing voltage already says why the meter cannot tell.
        Find(Check::PhaseSequence, {}, QStringLiteral(
            "The meter cannot tell the phase sequence (code %1). Check the voltage connections.").arg(r.phaseSequenceCode));
    }
}

double Judge::LargestCurrent() const
{
    double largest = 0;
    for (int phase : m_scope.currents)
        largest = std::max(largest, r.current[phase]);
    return largest;
}

void Judge::CurrentWiring()
{
    if (!m_scope.phaseAngles)
        return;
    const double largest = LargestCurrent();
    if (largest <= kNoLoadCurrent) {
        verdict.unchecked << QStringLiteral("the CTs' direction and phases, the power factors and the current "
                                            "balance, since no load current flows.");
        return;
    }
    for (int phase : m_scope.currents) {
        if (!m_badVoltage.contains(phase) && r.current[phase] >= kJudgedCurrentFraction * largest)
            m_judged.append(phase);
    }
    if (m_judged.isEmpty())
        return;
    if (LoadAngles(r, Rewiring{m_judged, m_judged})) {
        // The angles are a load's; the powers must agree.
        QList<int> negative;
        for (int phase : m_judged) {
            if (r.activePower[phase] < 0)
                negative.append(phase);
        }
        if (negative.size() == 1 && m_judged.size() > 1) {
            Find(Check::CurrentDirection, negative,
                 QStringLiteral("%1: active power negative while the other phases draw. Check which way round the CT of %1 is.")
                     .arg(PhaseName(negative.first())));
            m_explained << negative;
        }
        return;
    }
    if (const QList<Rewiring> rewirings = SimplestRewirings(r, m_judged); !rewirings.isEmpty()) {
        ReportRewiring(rewirings);
        return;
    }
    for (int phase : m_judged) {
        const double angle = Wrapped(r.currentAngle[phase] - r.voltageAngle[phase]);
        if (std::abs(angle) < 90.0)
            continue;
        Find(Check::CurrentDirection, {phase},
             QStringLiteral("%1: current %2° from its voltage, which no single wiring mistake explains. "
                            "Check the CT of %1: which phase it is on and which way round.")
                 .arg(PhaseName(phase)).arg(std::abs(angle), 0, 'f', 0));
        m_explained << phase;
    }
}

void Judge::ReportRewiring(const QList<Rewiring>& rewirings)
{
    const Rewiring& rewiring = rewirings.first();
    const QList<int> moved = rewiring.Moved();
    m_explained << moved;
    const bool tie = rewirings.size() > 1 && rewiring.IsSwap() && rewirings[1].IsSwap()
                  && std::abs(rewirings[1].loadAngle) - std::abs(rewiring.loadAngle) < kLoadAngleTie;
    if (tie) {
        // The readings cannot tell which: the operator knows whether the load is inductive.
        const bool firstLags = rewiring.loadAngle > 0;
        const QList<int> lagging = firstLags ? moved : rewirings[1].Moved();
        const QList<int> leading = firstLags ? rewirings[1].Moved() : moved;
        QList<int> phases = lagging + leading;
        std::sort(phases.begin(), phases.end());
        phases.erase(std::unique(phases.begin(), phases.end()), phases.end());
        m_explained << phases;
        Find(Check::CurrentSwap, phases,
             QStringLiteral("Currents swapped: %1 if the load is inductive, %2 if it is capacitive; at a power factor "
                            "near %3 the readings fit both. Exchange the CT leads of that pair.")
                 .arg(Names(lagging), Names(leading))
                 .arg(std::cos(qDegreesToRadians(rewiring.loadAngle)), 0, 'f', 2));
        return;
    }
    if (moved.size() == 2) {
        Find(Check::CurrentSwap, moved,
             QStringLiteral("%1: currents swapped, each CT on the other phase's input. Exchange the CT leads of %1.")
                 .arg(Names(moved)));
    } else if (moved.size() == 3) {
        Find(Check::CurrentSwap, moved, QStringLiteral(
            "L1, L2 and L3: every current on another phase's input. Connect each CT to the input of the phase whose cable it is on."));
    }
    for (qsizetype i = 0; i < rewiring.inputs.size(); ++i) {
        if (!((rewiring.turned >> i) & 1u))
            continue;
        const int phase = rewiring.inputs[i];
        m_explained << phase;
        Find(Check::CurrentDirection, {phase},
             QStringLiteral("%1: current reversed, its power flows backwards. Check the CT of %1: exchange its S1 and S2 leads, "
                            "or turn it round on the cable.").arg(PhaseName(phase)));
    }
}

void Judge::PowerFactors()
{
    QList<int> checked;
    for (int phase : m_judged) {
        if (!m_explained.contains(phase))
            checked << phase;
    }
    for (int phase : checked) {
        const double pf = r.powerFactor[phase];
        const double p = r.activePower[phase];
        // Near zero either sign is noise.
        if (std::abs(pf) > 0.05 && std::abs(p) > 0.05 * std::abs(r.apparentPower[phase]) && (pf < 0) != (p < 0))
            Find(Check::PowerFactor, {phase},
                 QStringLiteral("%1: power factor %2 disagrees in sign with the active power. Check the meter's readings of %1.")
                     .arg(PhaseName(phase)).arg(pf, 0, 'f', 2));
    }
    if (checked.size() < 2)
        return;
    QList<int> poor;
    bool othersGood = true;
    for (int phase : checked) {
        const double pf = std::abs(r.powerFactor[phase]);
        if (pf < kPoorPowerFactor)
            poor << phase;
        else if (pf <= kGoodPowerFactor)
            othersGood = false;
    }
    if (poor.size() == 1 && othersGood)
        Find(Check::PowerFactor, poor,
             QStringLiteral("%1: power factor %2 while the other phases are above %3. Check that the CT and the voltage "
                            "of %1 belong to the same phase.")
                 .arg(PhaseName(poor.first())).arg(r.powerFactor[poor.first()], 0, 'f', 2).arg(kGoodPowerFactor, 0, 'f', 2));
}

void Judge::CurrentBalance()
{
    if (m_scope.currents.size() < 2 || LargestCurrent() <= kNoLoadCurrent)
        return;
    const Unbalance unbalance = UnbalanceOf(r.current, m_scope.currents);
    if (unbalance.fraction > kCurrentUnbalanceLimit)
        Find(Check::CurrentUnbalance, {unbalance.worst},
             QStringLiteral("Currents unbalanced by %1 (limit %2), %3 furthest from the average. Check the CT ratio and "
                            "connection of %3, or how the load shares the phases.")
                 .arg(Percent(unbalance.fraction), Percent(kCurrentUnbalanceLimit), PhaseName(unbalance.worst)));
}

} // namespace

QStringList WiringVerdict::Lines() const
{
    QStringList lines;
    for (const WiringFinding& finding : findings)
        lines << finding.text;
    if (findings.isEmpty())
        lines << (unchecked.isEmpty() ? QStringLiteral("All checks passed") : QStringLiteral("No fault found"));
    for (const QString& reason : unchecked)
        lines << QStringLiteral("Not checked: ") + reason;
    return lines;
}

WiringVerdict JudgeWiring(const MeterReading& reading)
{
    const std::optional<Scope> scope = ScopeOf(reading.wiringCode);
    if (!scope) {
        WiringVerdict verdict;
        verdict.findings.append({Check::Wiring, {}, QStringLiteral(
            "The meter recognises no wiring (code %1). Check that its voltage inputs are connected and its wiring setting.")
                                                        .arg(reading.wiringCode)});
        return verdict;
    }
    Judge judge(reading, *scope);
    judge.Voltages();
    judge.Sequence();
    judge.CurrentWiring();
    judge.PowerFactors();
    judge.CurrentBalance();
    return judge.verdict;
}
