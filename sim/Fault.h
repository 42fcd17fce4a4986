#pragma once

#include "sim/PacedWriter.h"

#include <QByteArray>
#include <QList>
#include <QtGlobal>

namespace sim {

// A line or meter fault that spoils the meter's next reply. The meter still carries out the
// request (a write takes effect) unless the fault is an exception reply, which stands in for
// a meter that refused the request.
struct Fault {
    enum class Kind {
        NoReply,      // the reply is lost
        BadCrc,       // the reply's last byte is corrupted
        WrongAddress, // the reply carries another slave address (with a CRC that matches it)
        Exception,    // an exception reply with exceptionCode instead of the reply
        Split,        // the reply arrives in `pieces` parts with `gapMs` of silence between
        Late,         // the reply starts `delayMs` later than usual
        Noise,        // `noiseBytes` of line noise arrive just before the reply
    };

    Kind kind = Kind::NoReply;
    quint8 exceptionCode = 0;
    int pieces = 1;
    int gapMs = 0;
    int delayMs = 0;
    int noiseBytes = 0;

    static Fault noReply() { return {.kind = Kind::NoReply}; }
    static Fault badCrc() { return {.kind = Kind::BadCrc}; }
    static Fault wrongAddress() { return {.kind = Kind::WrongAddress}; }
    static Fault exception(quint8 code) { return {.kind = Kind::Exception, .exceptionCode = code}; }
    static Fault split(int pieces, int gapMs) { return {.kind = Kind::Split, .pieces = pieces, .gapMs = gapMs}; }
    static Fault late(int delayMs) { return {.kind = Kind::Late, .delayMs = delayMs}; }
    static Fault noise(int bytes) { return {.kind = Kind::Noise, .noiseBytes = bytes}; }

    // What goes on the line in place of `reply` (address to CRC); empty for a lost reply.
    QList<WireSegment> shape(const QByteArray& reply) const;
};

} // namespace sim
