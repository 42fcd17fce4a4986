#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The choice lists the operator picks from, with the entry each run starts from. Several
// commands send a list's index rather than its text, so the entries and their order are
// part of the protocol: the window and the command-line tool both fill their lists from here.
struct StartUpList {
    QString control;     // the list's name; "Combo_G1_Setting(2)" for an element of an array
    QStringList entries;
    int index = 0;       // the entry picked at start-up
};

// Entries of the numeric lists are plain decimal numbers: "first" to "last".
QStringList NumberTexts(int first, int last);

// The entries of the lists shared by the PC's port and the meter's: baud rates, stop bits and
// Modbus slave addresses, in list order.
QStringList BaudRateTexts();
QStringList StopBitTexts();
QStringList AddressTexts();
// The wiring modes by code: 0 Auto (the meter finds out), then 1P2W to 3P4W.
QStringList WiringTexts();

// Every list but the port list (whose entries depend on the machine), in the order the window
// fills them: the line's baud-rate and stop-bit lists come before the addresses' and after
// each other as the start-up selections expect.
const QList<StartUpList>& StartUpLists();
