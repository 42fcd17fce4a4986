#pragma once

#include <QStringList>

// The values the meter offers for its settings, as the operator picks them. Several commands
// send an entry's index rather than its text, so the entries and their order are part of the
// protocol: the window's lists, the command line and the setting checks all take them from here.

// Plain decimal numbers: "first" to "last".
QStringList NumberTexts(int first, int last);

// The line's settings, shared by the PC's port and the meter's: code = index + 1.
QStringList BaudRateTexts();
QStringList StopBitTexts();
// The Modbus slave addresses of the address lists.
QStringList AddressTexts();
// The wiring modes by code: 0 Auto (the meter finds out), then 1P2W to 3P4W.
QStringList WiringTexts();
// The display's scroll time in seconds, its positions and the item codes it can show.
QStringList ScrollTimeTexts();
QStringList DisplayPositionTexts();
QStringList DisplayItemTexts();
// A load-profile group's recording interval in minutes, and the channel codes.
QStringList LpIntervalTexts();
QStringList LpChannelCodeTexts();

// The addresses an operator may give the meter and reach it at: the new-address check, the
// window's and the command line's --address and the scan all keep to these, so that a meter
// the tool moved can always be reached by it again.
inline constexpr int kLowestAddress = 1;
inline constexpr int kHighestAddress = 250;
