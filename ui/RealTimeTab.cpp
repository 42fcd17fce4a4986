#include "ui/MainForm.h"

#include "ui/ControlFactory.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <tuple>

using namespace Controls;

namespace {

// Rows a little closer than the style's default keep both grids on a 1366×768 laptop screen.
constexpr int kRowSpacing = 3;

// Widest values: powers in the meter's units with seven decimals, e.g. "-12345.1234567".
constexpr int kMeasurementDigits = 14;
// Energy counters grow for years: eight integer digits and seven decimals.
constexpr int kEnergyDigits = 16;
constexpr int kRatioDigits = 10;

// One row of the measurement grid: its elements run from `first` across the columns
// L1, L2, L3 and, when there are four, the average or total.
struct QuantityRow {
    QString caption;
    QString unit;
    QString spokenName;
    QString spokenUnit;
    ControlArray<QLineEdit>* fields;
    int first;
    int count;
    QStringList columnNames;
};

const QStringList kPhases{QStringLiteral("L1"), QStringLiteral("L2"), QStringLiteral("L3")};
const QStringList kLines{QStringLiteral("L1-L2"), QStringLiteral("L2-L3"), QStringLiteral("L3-L1")};

QString Spoken(const QString& quantity, const QString& column, const QString& unit)
{
    const QString name = quantity + QLatin1Char(' ') + column;
    return unit.isEmpty() ? name : name + QStringLiteral(", ") + unit;
}

QWidget* BuildMeasurementFrame(MainForm& form)
{
    const QString average = QStringLiteral("average");
    const QString total = QStringLiteral("total");
    const QList<QuantityRow> rows{
        {"Phase voltage", "V", "Phase voltage", "volts", &form.txt_V_N, 0, 4, kPhases + QStringList{average}},
        // The line voltages sit under the phase headings, so the caption names their pairs.
        {"Line voltage (L1-L2, L2-L3, L3-L1)", "V", "Line voltage", "volts", &form.txt_V_B, 0, 4, kLines + QStringList{average}},
        {"Current", "A", "Current", "amperes", &form.txt_I_Result, 3, 4, kPhases + QStringList{average}},
        {"Active power", "kW", "Active power", "kilowatts", &form.txt_W_Result, 3, 4, kPhases + QStringList{total}},
        {"Reactive power", "kvar", "Reactive power", "kilovars", &form.txt_Var_Result, 3, 4, kPhases + QStringList{total}},
        {"Apparent power", "kVA", "Apparent power", "kilovolt-amperes", &form.txt_VA_Result, 3, 4,
         kPhases + QStringList{total}},
        {"Power factor", "", "Power factor", "", &form.txt_PF_Result, 3, 4, kPhases + QStringList{average}},
        {"Voltage angle", "°", "Voltage phase angle", "degrees", &form.txt_V_Angle, 0, 3, kPhases},
        {"Current angle", "°", "Current phase angle", "degrees", &form.txt_I_Angle, 0, 3, kPhases},
    };

    auto* frame = new QGroupBox(QStringLiteral("Measurements"));
    auto* grid = new QGridLayout(frame);
    grid->setVerticalSpacing(kRowSpacing);
    const QStringList headings{QStringLiteral("L1"), QStringLiteral("L2"), QStringLiteral("L3"),
                               QStringLiteral("Average / Total")};
    for (int column = 0; column < headings.size(); ++column)
        grid->addWidget(Heading(headings[column]), 0, column + 1, Qt::AlignCenter);

    for (int r = 0; r < rows.size(); ++r) {
        const QuantityRow& row = rows[r];
        const int gridRow = r + 1;
        for (int column = 0; column < row.count; ++column) {
            const int element = row.first + column;
            auto* field = row.fields->add(element, NumberReadout(QString(),
                Spoken(row.spokenName, row.columnNames[column], row.spokenUnit), kMeasurementDigits));
            grid->addWidget(field, gridRow, column + 1);
        }
        grid->addWidget(Caption(row.caption, (*row.fields)(row.first)), gridRow, 0);
        grid->addWidget(Heading(row.unit), gridRow, headings.size() + 1);
    }
    return frame;
}

QWidget* BuildEnergyFrame(MainForm& form)
{
    struct EnergyRow {
        QString caption;
        QString spokenName;
        QString spokenUnit;
    };
    const QList<EnergyRow> rows{
        {"kWh delivered", "Active energy delivered", "kilowatt-hours"},
        {"kWh received", "Active energy received", "kilowatt-hours"},
        {"kvarh lagging", "Reactive energy lagging", "kilovar-hours"},
        {"kvarh leading", "Reactive energy leading", "kilovar-hours"},
        {"kVAh", "Apparent energy", "kilovolt-ampere-hours"},
    };
    const QStringList columns{QStringLiteral("Total"), QStringLiteral("L1"), QStringLiteral("L2"), QStringLiteral("L3")};

    auto* frame = new QGroupBox(QStringLiteral("Energy"));
    auto* grid = new QGridLayout(frame);
    grid->setVerticalSpacing(kRowSpacing);
    for (int column = 0; column < columns.size(); ++column)
        grid->addWidget(Heading(columns[column]), 0, column + 1, Qt::AlignCenter);
    for (int k = 0; k < rows.size(); ++k) {
        for (int column = 0; column < columns.size(); ++column) {
            // Column 0 is the total (element k), columns 1 to 3 phases L1 to L3 (5 + 5t + k).
            const int element = 5 * column + k;
            auto* field = form.txt_kWh.add(element, NumberReadout(QString(),
                Spoken(rows[k].spokenName, columns[column], rows[k].spokenUnit), kEnergyDigits));
            grid->addWidget(field, k + 1, column + 1);
        }
        grid->addWidget(Caption(rows[k].caption, form.txt_kWh(k)), k + 1, 0);
    }
    return frame;
}

QWidget* BuildMeterFrame(MainForm& form)
{
    form.txtFrequency = NumberReadout(QStringLiteral("txtFrequency"), QStringLiteral("Frequency, hertz"), kRatioDigits);
    form.txt_PTRatio = NumberReadout(QStringLiteral("txt_PTRatio"), QStringLiteral("PT ratio 1"), kRatioDigits);
    form.txtPTRatio2 = NumberReadout(QStringLiteral("txtPTRatio2"), QStringLiteral("PT ratio 2, primary volts"), kRatioDigits);
    form.txt_CTRatio = NumberReadout(QStringLiteral("txt_CTRatio"), QStringLiteral("CT ratio"), kRatioDigits);
    form.Text5 = TextReadout(QStringLiteral("Text5"), QStringLiteral("Meter clock"));
    form.Text3 = TextReadout(QStringLiteral("Text3"), QStringLiteral("Meter identification"));
    form.txt_Wiring = TextReadout(QStringLiteral("txt_Wiring"), QStringLiteral("Wiring mode"));
    form.txt_Phasor = TextReadout(QStringLiteral("txt_Phasor"), QStringLiteral("Phase sequence"));

    const QList<std::tuple<QString, QLineEdit*, QString>> rows{
        {"Frequency", form.txtFrequency, "Hz"},
        {"PT ratio 1", form.txt_PTRatio, ""},
        {"PT ratio 2 × PT ratio 1", form.txtPTRatio2, "V"},
        {"CT ratio", form.txt_CTRatio, ""},
        {"Meter clock", form.Text5, ""},
        {"Meter identification", form.Text3, ""},
        {"Wiring", form.txt_Wiring, ""},
        {"Phase sequence", form.txt_Phasor, ""},
    };
    auto* frame = new QGroupBox(QStringLiteral("Meter"));
    auto* grid = new QGridLayout(frame);
    for (int r = 0; r < rows.size(); ++r) {
        const auto& [caption, field, unit] = rows[r];
        grid->addWidget(Caption(caption, field), r, 0);
        grid->addWidget(field, r, 1);
        grid->addWidget(Heading(unit), r, 2);
    }
    return frame;
}

} // namespace

QWidget* MainForm::BuildRealTimeTab()
{
    auto* tab = new QWidget;
    auto* left = new QVBoxLayout;
    left->addWidget(BuildMeasurementFrame(*this));
    left->addWidget(BuildEnergyFrame(*this));
    left->addStretch(1);
    auto* right = new QVBoxLayout;
    right->addWidget(BuildMeterFrame(*this));
    lbl_LastGoodReading = new QLabel;
    lbl_LastGoodReading->setObjectName(QStringLiteral("lbl_LastGoodReading"));
    lbl_LastGoodReading->setStyleSheet(QStringLiteral("color: #A00000; font-weight: bold"));
    right->addWidget(lbl_LastGoodReading);
    right->addStretch(1);
    auto* columns = new QHBoxLayout(tab);
    columns->addLayout(left, 3);
    columns->addLayout(right, 1);
    return tab;
}
