#pragma once

#include "link/RegisterLink.h"
#include "settings/Setting.h"

#include <QDateTime>
#include <QString>

// How a setting command ended, or that it is still waiting for the meter to show it.
struct SettingOutcome {
    enum Result {
        Waiting,        // written and acknowledged; the readings are searched for the new value
        Confirmed,      // a reading shows the meter holding it
        NotConfirmed,   // acknowledged, but three readings did not show it
        OffLineUnconfirmed, // acknowledged, then the tool went off line before a reading showed it
        Refused,        // the meter answered with an exception, code in `exception`
        NoReply,        // the meter did not answer (or the reply was spoiled), five times
        LineLost,       // the line went away before a reply came
        NotSent,        // the value could not be written; `reason` says why
        Dropped,        // the tool went off line before the command was served
    };

    quint64 id = 0;     // the request's number
    Setting setting = Setting::Clock;
    QDateTime at;       // when it was sent, or found unsendable
    QString from;       // what the meter held before; empty when no reading held it yet
    QString to;         // what was written
    Result result = Waiting;
    quint8 exception = 0;
    QString reason;

    bool Final() const { return result != Waiting; }
    // In the history's words: "confirmed", "refused: exception 3 (Illegal Data Value)", ...
    QString Text() const;

    // The result of a write from the transaction's result.
    static Result FromTransaction(const TransactionResult& result);
};
