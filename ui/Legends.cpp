#include "ui/Legends.h"

#include <QPlainTextEdit>
#include <QStringList>

namespace {

const QString kLineEnd = QStringLiteral("\r\n");

QString Lines(const QStringList& entries)
{
    return entries.join(kLineEnd) + kLineEnd;
}

} // namespace

QString LpChannelLegend()
{
    return Lines({
        "1 : Vln_avg(point)", "2 : I_avg(point)", "3 : kW_avg(interval)", "4 : kVar_avg(interval)",
        "5 : kVA_avg(interval)", "6 : PF_avg", "7 : kWh+(total)", "8 : kWh-(total)", "9 : kvarh+(total)",
        "10 : kvarh-(total)", "11 : kVAh(total)", "12 : kWh(interval)", "13 : kvarh(interval)",
        "14 : kVAh(interval)",
    });
}

// "12 : Modbus Stop Bi" is cut short on purpose: it is the text operators know from the tool's
// earlier versions. Codes 11 and 140 have no line.
QString DisplayItemLegend()
{
    return Lines({
        "1 : Meter ID 1", "2 : Meter ID 2", "3 : Date", "4 : Time", "5 : Modbus Slave Address",
        "6 : Modbus BaudRate", "7 : PT Ratio * CT Ratio", "8 : PT Ratio", "9 : CT Ratio", "10 : Kt",
        "12 : Modbus Stop Bi", "101 : Vln_a", "102 : Vln_b", "103 : Vln_c", "104 : Vln_avg", "105 : Vll_ab",
        "106 : Vll_bc", "107 : Vll_ca", "108 : Vll_avg", "109 : I_a", "110 : I_b", "111 : I_c", "112 : I_avg",
        "113 : kW_a", "114 : kW_b", "115 : kW_c", "116 : kW_total", "117 : kvar_a", "118 : kvar_b",
        "119 : kvar_c", "120 : kvar_total", "121 : kVA_a", "122 : kVA_b", "123 : kVA_c", "124 : kVA_total",
        "125 : PF_a", "126 : PF_b", "127 : PF_c", "128 : PF_avg", "129 : PhaseAngle_V_a", "130 : PhaseAngle_V_b",
        "131 : PhaseAngle_V_c", "132 : PhaseAngle_I_a", "133 : PhaseAngle_I_b", "134 : PhaseAngle_I_c",
        "135 : kWh_deliver", "136 : kWh_receiver", "137 : kvarh_lagging", "138 : kvarh_leading", "139 : kVAh",
    });
}

void ShowCrLfText(QPlainTextEdit* box, const QString& text)
{
    box->setPlainText(QString(text).remove(QLatin1Char('\r')));
}
