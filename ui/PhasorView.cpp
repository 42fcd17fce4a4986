#include "ui/PhasorView.h"

#include "connection/PollCycle.h"
#include "measure/WiringVerdict.h"
#include "ui/PhasorDiagram.h"
#include "ui/StateColours.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

const QColor kFindingColour(0xFF, 0xD0, 0x80);

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

PhasorView::PhasorView(PollCycle& poll, QWidget* parent) : QWidget(parent)
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
}

void PhasorView::ShowReading(const MeterReading& reading)
{
    if (!reading.Has(MeterReading::RealTimeImage))
        return;
    m_diagram->ShowReading(reading);
    const WiringVerdict verdict = JudgeWiring(reading);
    const QString taken = reading.takenAt.time().toString(QStringLiteral("HH:mm:ss"));
    const qsizetype count = verdict.findings.size();
    QString headline = verdict.Passed() ? QStringLiteral("All checks passed")
                     : count == 0       ? QStringLiteral("No fault found")
                     : count == 1       ? QStringLiteral("1 thing to check")
                                        : QStringLiteral("%1 things to check").arg(count);
    m_headline->setText(QStringLiteral("%1 (reading of %2)").arg(headline, taken));
    SetBackground(m_headline, verdict.Passed() ? kOnLineColour : kFindingColour);
    // Dark text on the light state colour, whatever the theme.
    QPalette palette = m_headline->palette();
    palette.setColor(QPalette::WindowText, Qt::black);
    m_headline->setPalette(palette);
    QStringList paragraphs = verdict.Lines();
    if (verdict.findings.isEmpty())
        paragraphs.removeFirst(); // the summary, which the headline gives
    m_findings->setText(paragraphs.join(QStringLiteral("\n\n")));
}
