#include "report/ReportPdf.h"

#include "measure/ReadingFields.h"
#include "report/PhasorPainter.h"

#include <QDir>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <algorithm>

namespace {

constexpr int kDpi = 300;
constexpr double kBodyPoints = 8.5;

// One table: its rows of cells, the share of a block's width each column takes, and how many
// blocks of columns stand side by side (a long list of short rows fills the page's width).
struct Table {
    QList<QStringList> rows;
    QList<double> widths;
    int across = 1;
    QStringList header;
    bool numbersRight = false; // numbers line up on the right after the first column
};

// Lays sections out from the top of a page down, opening a new page when one is full.
class Pages {
public:
    Pages(QPdfWriter& writer, QPainter& painter) : m_writer(writer), m_painter(painter)
    {
        m_width = writer.width();
        m_bottom = writer.height();
        SetFont(kBodyPoints, false);
    }

    void Title(const QString& text)
    {
        SetFont(16, true);
        Text(text, 1.6);
        SetFont(kBodyPoints, false);
    }

    void Heading(const QString& text)
    {
        m_y += Line() * 0.8;
        SetFont(11, true);
        Fit(Line() * 4); // a heading never ends a page
        Text(text, 1.2);
        m_painter.setPen(QPen(Qt::gray, kDpi / 100.0));
        m_painter.drawLine(QPointF(0, m_y - Line() * 0.25), QPointF(m_width, m_y - Line() * 0.25));
        m_painter.setPen(Qt::black);
        SetFont(kBodyPoints, false);
    }

    // Wrapped at the page's width.
    void Paragraph(const QString& text)
    {
        const QRectF bounds = m_painter.boundingRect(QRectF(0, 0, m_width, m_bottom), Qt::TextWordWrap, text);
        Fit(bounds.height());
        m_painter.drawText(QRectF(0, m_y, m_width, bounds.height()), Qt::TextWordWrap, text);
        m_y += bounds.height() + Line() * 0.2;
    }

    void Draw(const Table& table)
    {
        const double gap = Line();
        const double blockWidth = (m_width - gap * (table.across - 1)) / table.across;
        qsizetype next = 0;
        while (next < table.rows.size()) {
            Fit(Line() * (table.header.isEmpty() ? 1 : 2));
            const int fits = std::max(1, int((m_bottom - m_y) / Line()) - (table.header.isEmpty() ? 0 : 1));
            const qsizetype left = table.rows.size() - next;
            const int perBlock = int(std::min<qsizetype>(fits, (left + table.across - 1) / table.across));
            double deepest = m_y;
            for (int b = 0; b < table.across && next < table.rows.size(); ++b) {
                const double x = b * (blockWidth + gap);
                double y = m_y;
                if (!table.header.isEmpty()) {
                    SetFont(kBodyPoints, true);
                    Cells(table.header, table.widths, false, x, y, blockWidth);
                    SetFont(kBodyPoints, false);
                    y += Line();
                }
                for (int r = 0; r < perBlock && next < table.rows.size(); ++r, ++next, y += Line())
                    Cells(table.rows[next], table.widths, table.numbersRight, x, y, blockWidth);
                deepest = std::max(deepest, y);
            }
            m_y = deepest;
        }
    }

    // A square drawing as wide as `fraction` of the page, centred.
    void Diagram(const std::optional<MeterReading>& reading, double fraction)
    {
        const double side = m_width * fraction;
        Fit(side);
        PaintPhasors(m_painter, QRectF((m_width - side) / 2, m_y, side, side), reading, Qt::black);
        m_y += side;
    }

private:
    void SetFont(double points, bool bold)
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPointSizeF(points);
        font.setBold(bold);
        // No ligatures: "fi" stays two letters for whoever searches or copies the text.
        font.setStyleStrategy(QFont::PreferNoShaping);
        m_painter.setFont(font);
    }
    double Line() const { return QFontMetricsF(m_painter.font()).lineSpacing() * 1.15; }

    void Text(const QString& text, double lines)
    {
        Fit(Line() * lines);
        m_painter.drawText(QRectF(0, m_y, m_width, Line()), Qt::AlignLeft | Qt::AlignVCenter, text);
        m_y += Line() * lines;
    }

    void Cells(const QStringList& cells, const QList<double>& widths, bool numbersRight, double x, double y, double blockWidth)
    {
        const double pad = Line() * 0.3;
        for (qsizetype c = 0; c < cells.size() && c < widths.size(); ++c) {
            const double w = blockWidth * widths[c];
            const QRectF box(x, y, w - pad, Line());
            bool number = false;
            cells[c].toDouble(&number);
            const Qt::Alignment align = numbersRight && c > 0 && number ? Qt::AlignRight : Qt::AlignLeft;
            const QString text = QFontMetricsF(m_painter.font()).elidedText(cells[c], Qt::ElideRight, box.width());
            m_painter.drawText(box, align | Qt::AlignVCenter, text);
            x += w;
        }
    }

    // Opens a new page when `height` does not fit below.
    void Fit(double height)
    {
        if (m_y > 0 && m_y + height > m_bottom) {
            m_writer.newPage();
            m_y = 0;
        }
    }

    QPdfWriter& m_writer;
    QPainter& m_painter;
    double m_width = 0;
    double m_bottom = 0;
    double m_y = 0;
};

QString Number(double value)
{
    return FieldText(QJsonValue(value));
}

QString Signed(qint64 seconds)
{
    return seconds > 0 ? QStringLiteral("+%1 s").arg(seconds) : QStringLiteral("%1 s").arg(seconds);
}

void DrawReport(Pages& pages, const CommissioningReport& r)
{
    pages.Title(QStringLiteral("QX-5820 commissioning report"));
    pages.Draw({{{QStringLiteral("Site"), r.site},
                 {QStringLiteral("Engineer"), r.engineer},
                 {QStringLiteral("Date and time"), TimeWithOffset(r.madeAt)},
                 {QStringLiteral("Tool version"), r.toolVersion}},
                {0.3, 0.7}, 2, {}});
    if (!r.note.isEmpty())
        pages.Paragraph(QStringLiteral("Note: ") + r.note);

    pages.Heading(QStringLiteral("Meter"));
    pages.Draw({{{QStringLiteral("Identification"), r.identification},
                 {QStringLiteral("Address"), QString::number(r.address)},
                 {QStringLiteral("Baud rate"), r.baudRate},
                 {QStringLiteral("Stop bits"), r.stopBits},
                 {QStringLiteral("Meter clock"), r.meterClock.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))},
                 {QStringLiteral("PC clock"), TimeWithOffset(r.takenAt)},
                 {QStringLiteral("Meter − PC"), Signed(r.ClockDifference())}},
                {0.3, 0.7}, 2, {}});
    pages.Paragraph(QStringLiteral("Reading %1.").arg(r.ReadingTime()));

    pages.Heading(QStringLiteral("Settings"));
    Table settings{{}, {0.25, 0.75}, 1, {}};
    for (const CommissioningReport::Row& row : r.settings)
        settings.rows.append({row.label, row.value});
    pages.Draw(settings);

    pages.Heading(QStringLiteral("Measurements"));
    const bool extremes = std::any_of(r.measurements.begin(), r.measurements.end(), [](const auto& m) { return m.min.has_value(); });
    // With the extremes a row needs the page's width, or its numbers are cut short.
    Table measured{{}, extremes ? QList<double>{0.36, 0.2, 0.12, 0.16, 0.16} : QList<double>{0.5, 0.3, 0.2}, extremes ? 1 : 2,
                   {QStringLiteral("Quantity"), QStringLiteral("Value"), QStringLiteral("Unit")}, true};
    if (extremes)
        measured.header << QStringLiteral("Min") << QStringLiteral("Max");
    for (const CommissioningReport::Measurement& m : r.measurements) {
        QStringList cells{m.label, Number(m.value), m.unit};
        if (extremes)
            cells << (m.min ? Number(*m.min) : QString()) << (m.max ? Number(*m.max) : QString());
        measured.rows.append(cells);
    }
    pages.Draw(measured);

    pages.Heading(QStringLiteral("Wiring"));
    pages.Diagram(r.reading, 0.5);
    for (const QString& line : r.verdict)
        pages.Paragraph(QStringLiteral("• ") + line);
    for (const QString& line : r.unchecked)
        pages.Paragraph(QStringLiteral("• Not checked: ") + line);

    if (!r.history.isEmpty()) {
        pages.Heading(QStringLiteral("Settings history"));
        for (const QString& line : r.history)
            pages.Paragraph(line);
    }
}

} // namespace

std::optional<QString> WriteReportPdf(const CommissioningReport& report, const QString& path)
{
    QSaveFile file(path);
    const auto failed = [&path](const QString& why) {
        return QStringLiteral("cannot write %1: %2").arg(QDir::toNativeSeparators(path), why);
    };
    if (!file.open(QIODevice::WriteOnly))
        return failed(file.errorString());
    {
        QPdfWriter writer(&file);
        writer.setResolution(kDpi);
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(18, 16, 18, 16), QPageLayout::Millimeter));
        writer.setTitle(QStringLiteral("QX-5820 commissioning report %1").arg(report.identification));
        writer.setCreator(QStringLiteral("qx5820 %1").arg(report.toolVersion));
        QPainter painter;
        if (!painter.begin(&writer))
            return failed(QStringLiteral("the PDF could not be started"));
        Pages pages(writer, painter);
        DrawReport(pages, report);
        painter.end();
    }
    if (!file.commit())
        return failed(file.errorString());
    return std::nullopt;
}
