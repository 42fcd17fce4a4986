#include "settings/Setting.h"

QString SettingName(Setting setting)
{
    switch (setting) {
    case Setting::Address: return QStringLiteral("Modbus address");
    case Setting::BaudRate: return QStringLiteral("Baud rate");
    case Setting::StopBit: return QStringLiteral("Stop bit");
    case Setting::Wiring: return QStringLiteral("Wiring");
    case Setting::PtRatio1: return QStringLiteral("PT ratio 1");
    case Setting::PtRatio2: return QStringLiteral("PT ratio 2");
    case Setting::CtRatio: return QStringLiteral("CT ratio");
    case Setting::Clock: return QStringLiteral("Clock");
    case Setting::ScrollTime: return QStringLiteral("Scroll time");
    case Setting::DisplayItem: return QStringLiteral("Display item");
    case Setting::ClearKwh: return QStringLiteral("Clear kWh");
    case Setting::SerialDisplay: return QStringLiteral("Serial number display");
    }
    return QString();
}
