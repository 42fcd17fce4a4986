#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The window's choice lists by control name, with the entry each run starts from. Their
// entries are the meter's choices (ports/MeterChoices.h).
struct StartUpList {
    QString control;     // the list's name; "Combo_G1_Setting(2)" for an element of an array
    QStringList entries;
    int index = 0;       // the entry picked at start-up
};

// Every list but the port list (whose entries depend on the machine), in the order the window
// fills them: the line's baud-rate and stop-bit lists come before the addresses' and after
// each other as the start-up selections expect.
const QList<StartUpList>& StartUpLists();
