#include "ui/PhasorView.h"

#include "connection/PollCycle.h"
#include "connection/ReadingFreshness.h"
#include "measure/WiringVerdict.h"
#include "ui/PhasorDiagram.h"
#include "ui/StateColours.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

const QColor kFindingColour(0xFF, 0xD0, 0x80);
const QColor kStaleColour(0xD8, 0xD8, 0xD8);

QString Percent(double fraction)
{
    return QStringLiteral("%1 %").arg(fraction * 100, 0, 'f', 0);
}

// The limits the verdict judges by, from the core's own constants.
QString LimitsText()
{
    using namespace WiringLimits;
    return QStringLiteral(
               "Checks: phase sequence; a voltage missing or below %1 of the highest; each CT's direction and phase, "
               "from the currents' angles (a load's current lies within 90° of its voltage); a power factor below %2 "
               "on one phase while the others are above %3; unbalance above %4 (voltages) or %5 (currents). Only what "
               "the wiring mode measures is checked; in 3P3W the CTs are not judged.")
        .arg(Percent(kLowVoltageFraction), QString::number(kPoorPowerFactor), QString::number(kGoodPowerFactor),
             Percent(kVoltageUnbalanceLimit), Percent(kCurrentUnbalanceLimit));
}

QLabel* WrappedLabel(const QString& name)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

} // namespace

PhasorView::PhasorView(PollCycle& poll, const ReadingFreshness& freshness, QWidget* parent)
    : QWidget(parent), m_freshness(freshness)
{
    setObjectName(QStringLiteral("PhasorView"));
    m_diagram = new PhasorDiagram;
    m_headline = WrappedLabel(QStringLiteral("lbl_WiringHeadline"));
    m_headline->setText(QStringLiteral("Waiting for a reading from the meter"));
    m_headline->setMargin(6);
    QFont bold = m_headline->font();
    bold.setBold(true);
    m_headline->setFont(bold);
    m_findings = WrappedLabel(QStringLiteral("lbl_WiringFindings"));
    m_findings->setAccessibleName(QStringLiteral("Wiring verdict"));
    QLabel* limits = WrappedLabel(QStringLiteral("lbl_WiringLimits"));
    limits->setText(LimitsText());

    auto* verdict = new QVBoxLayout;
    verdict->addWidget(m_headline);
    verdict->addWidget(m_findings);
    verdict->addStretch(1);
    verdict->addWidget(limits);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_diagram, 3);
    layout->addLayout(verdict, 2);

    connect(&poll, &PollCycle::readingTaken, this, &PhasorView::ShowReading);
    connect(&freshness, &ReadingFreshness::changed, this, &PhasorView::ShowVerdict);
}

void PhasorView::ShowReading(const MeterReading& reading)
{
    if (!reading.Has(MeterReading::RealTimeImage))
        return;
    m_diagram->ShowReading(reading);
    const WiringVerdict verdict = JudgeWiring(reading);
    const qsizetype count = verdict.findings.size();
    m_passed = verdict.Passed();
    m_summary = m_passed   ? QStringLiteral("All checks passed")
              : count == 0 ? QStringLiteral("No fault found")
              : count == 1 ? QStringLiteral("1 thing to check")
                           : QStringLiteral("%1 things to check").arg(count);
    m_taken = reading.takenAt.time().toString(QStringLiteral("HH:mm:ss"));
    QStringList paragraphs = verdict.Lines();
    if (verdict.findings.isEmpty())
        paragraphs.removeFirst(); // the summary, which the headline gives
    m_findings->setText(paragraphs.join(QStringLiteral("\n\n")));
    ShowVerdict();
}

void PhasorView::ShowVerdict()
{
    if (m_summary.isEmpty())
        return;
    // Off line or after a failed tick no pass is shown as the meter's: the wiring may have changed since.
    const bool stale = m_freshness.Stale();
    m_headline->setText(stale ? QStringLiteral("No longer the meter's: %1 (reading of %2)").arg(m_summary, m_taken)
                              : QStringLiteral("%1 (reading of %2)").arg(m_summary, m_taken));
    SetBackground(m_headline, stale ? kStaleColour : m_passed ? kOnLineColour : kFindingColour);
    QPalette findings = m_findings->palette();
    findings.setColor(QPalette::WindowText, palette().color(stale ? QPalette::Disabled : QPalette::Active, QPalette::WindowText));
    m_findings->setPalette(findings);
}
