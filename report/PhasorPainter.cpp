#include "report/PhasorPainter.h"

#include <QFontMetricsF>
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

void PaintPhasors(QPainter& painter, const QRectF& area, const std::optional<MeterReading>& reading, const QColor& text)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double line = QFontMetricsF(painter.font()).height();
    const double radius = std::min(area.width(), area.height()) / 2.0 - 2.5 * line;
    const QPointF centre = area.center();
    // Line widths in the units of a widget's pixel, whatever the device's resolution.
    const double unit = line / 16.0;

    QColor faint = text;
    faint.setAlphaF(0.3);
    painter.setPen(QPen(faint, unit, Qt::DotLine));
    for (double reach : {kVoltageReach, kCurrentReach})
        painter.drawEllipse(centre, radius * reach, radius * reach);
    painter.drawLine(Tip(centre, radius, 180), Tip(centre, radius, 0));
    painter.drawLine(Tip(centre, radius, 270), Tip(centre, radius, 90));
    if (!reading) {
        painter.setPen(text);
        painter.drawText(area, Qt::AlignCenter, QStringLiteral("No reading yet"));
        painter.restore();
        return;
    }

    const MeterReading& r = *reading;
    const double voltScale = Largest(r.phaseVoltage) > 0 ? radius * kVoltageReach / Largest(r.phaseVoltage) : 0;
    const double ampScale = Largest(r.current) > 0 ? radius * kCurrentReach / Largest(r.current) : 0;
    const double head = line * 0.6;
    const double labelGap = line * 0.9;
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
            painter.setPen(QPen(colour, arrow.width * unit, arrow.style, Qt::RoundCap));
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
    const QRectF inner = area.adjusted(4 * unit, 4 * unit, -4 * unit, -4 * unit);
    painter.drawText(inner, Qt::AlignLeft | Qt::AlignBottom, scales);
    painter.drawText(inner, Qt::AlignLeft | Qt::AlignTop, QStringLiteral("Voltages solid, currents dashed; lagging is clockwise"));
    painter.restore();
}
