#pragma once

#include "link/LinkClock.h"

#include <QByteArray>
#include <QMetaType>

// One frame on the line as the link saw it, for the traffic monitor: a request as it went out,
// or what came back for it and how the link judged it. Reporting a frame changes nothing on
// the wire: the event is emitted after the request has been handed to the line and after the
// reply has been judged.
struct FrameEvent {
    enum class Direction { Request, Reply };
    enum class Outcome {
        Sent,         // a request, first attempt
        Retry,        // a request, attempt 2 to 5
        Good,         // a reply taken
        CrcError,
        AddressError,
        Exception,    // a valid exception reply: `exceptionCode` names the meter's reason
        NoReply,      // the attempt's two seconds ran out with nothing but our own echo in `bytes`
        Garbled,      // the attempt's two seconds ran out; `bytes` never made a valid frame
        WrongReply,   // sound, but not an answer to the request: another function or byte count
    };

    LinkClock::Time at{};          // on the link's monotonic clock
    Direction direction = Direction::Request;
    Outcome outcome = Outcome::Sent;
    QByteArray bytes;
    int attempt = 1;               // 1 to RegisterLink::kAttempts
    quint8 exceptionCode = 0;
    LinkClock::Time sinceRequest{}; // a reply: from its request's send to the judgement
};

Q_DECLARE_METATYPE(FrameEvent)
