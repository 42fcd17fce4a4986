#include "ui/PhasorDiagram.h"

#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <algorithm>

namespace {

// Phase colours that stand apart from each other and from a light or a dark background.
const QColor kPhaseColours[] = {QColor(0xE8, 0x4A, 0x3C), QColor(0x2E, 0xB0, 0x4F), QColor(0x3B, 0x82, 0xF6)};

// Where each family's longest arrow ends, as a fraction of the diagram's radius: the currents
// inside the voltages, so that both are read at a glance.
constexpr double kVoltageReach = 0.92;
constexpr double kCurrentReach = 0.62;

// A point `length` from the centre at `degrees` clockwise from the right.
QPointF Tip(QPointF centre, double length, double degrees)
{
    const double a = qDegreesToRadians(degrees);
    return centre + QPointF(length * std::cos(a), length * std::sin(a));
}

void DrawArrow(QPainter& painter, QPointF from, QPointF to, double head)
{
    painter.drawLine(from, to);
    const QLineF back(to, from);
    if (back.length() < head)
        return;
    QLineF side = back;
    side.setLength(head);
    QPainterPath arrow;
    arrow.moveTo(to);
    side.setAngle(back.angle() + 25);
    arrow.lineTo(side.p2());
    side.setAngle(back.angle() - 25);
    arrow.lineTo(side.p2());
    arrow.closeSubpath();
    painter.fillPath(arrow, painter.pen().color());
}

double Largest(const std::array<double, 4>& values)
{
    return std::max({values[0], values[1], values[2]});
}

} // namespace

PhasorDiagram::PhasorDiagram(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("PhasorDiagram"));
    setAccessibleName(QStringLiteral("Phasor diagram of the voltages and currents"));
}

void PhasorDiagram::ShowReading(const MeterReading& reading)
{
    m_reading = reading;
    update();
}

void PhasorDiagram::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor text = palette().color(QPalette::WindowText);
    const double radius = std::min(width(), height()) / 2.0 - 2.5 * fontMetrics().height();
    const QPointF centre(width() / 2.0, height() / 2.0);

    QColor faint = text;
    faint.setAlphaF(0.3);
    painter.setPen(QPen(faint, 1, Qt::DotLine));
    for (double reach : {kVoltageReach, kCurrentReach})
        painter.drawEllipse(centre, radius * reach, radius * reach);
    painter.drawLine(Tip(centre, radius, 180), Tip(centre, radius, 0));
    painter.drawLine(Tip(centre, radius, 270), Tip(centre, radius, 90));
    if (!m_reading) {
        painter.setPen(text);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("No reading yet"));
        return;
    }

    const MeterReading& r = *m_reading;
    const double voltScale = Largest(r.phaseVoltage) > 0 ? radius * kVoltageReach / Largest(r.phaseVoltage) : 0;
    const double ampScale = Largest(r.current) > 0 ? radius * kCurrentReach / Largest(r.current) : 0;
    const double head = fontMetrics().height() * 0.6;
    const double labelGap = fontMetrics().height() * 0.9;
    for (int p = 0; p < 3; ++p) {
        const QColor colour = kPhaseColours[p];
        const struct {
            QString label;
            double length;
            double angle;
            Qt::PenStyle style;
            double width;
        } arrows[] = {
            {QStringLiteral("V%1").arg(p + 1), r.phaseVoltage[p] * voltScale, r.voltageAngle[p], Qt::SolidLine, 3.0},
            {QStringLiteral("I%1").arg(p + 1), r.current[p] * ampScale, r.currentAngle[p], Qt::DashLine, 2.0},
        };
        for (const auto& arrow : arrows) {
            painter.setPen(QPen(colour, arrow.width, arrow.style, Qt::RoundCap));
            const QPointF tip = Tip(centre, arrow.length, arrow.angle);
            DrawArrow(painter, centre, tip, head);
            const QPointF at = Tip(centre, arrow.length + labelGap, arrow.angle);
            const QRectF box(at.x() - 2 * labelGap, at.y() - labelGap, 4 * labelGap, 2 * labelGap);
            painter.drawText(box, Qt::AlignCenter, arrow.label);
        }
    }

    painter.setPen(text);
    const QString scales = QStringLiteral("Outer ring %1 V, inner ring %2 A")
                               .arg(Largest(r.phaseVoltage), 0, 'f', 1).arg(Largest(r.current), 0, 'f', 2);
    painter.drawText(rect().adjusted(4, 4, -4, -4), Qt::AlignLeft | Qt::AlignBottom, scales);
    painter.drawText(rect().adjusted(4, 4, -4, -4), Qt::AlignLeft | Qt::AlignTop,
                     QStringLiteral("Voltages solid, currents dashed; lagging is clockwise"));
}
