#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace sim {

// How the meter is connected to the load it measures: as it should be, or with one of the
// mistakes made on site. Phases count 0 (L1) to 2 (L3).
struct WiringFault {
    enum class Kind {
        None,
        ReversedCt,      // the CT of `phase` is connected the wrong way round
        SwappedCurrents, // the CTs of `phase` and `otherPhase` sit on each other's inputs
        MissingVoltage,  // the voltage input of `phase` is open (a blown fuse, a loose tap)
        ReverseSequence, // L2 and L3 are exchanged, voltage and current alike: the meter sees CBA
    };
    Kind kind = Kind::None;
    int phase = 0;
    int otherPhase = 0;

    // The fault a command-line name stands for (one of names()), nothing for another name.
    static std::optional<WiringFault> parse(const QString& name);
    // Every name parse() takes: none, reversed-ct-l1, swapped-l1-l2, missing-l3, reverse-sequence...
    static QStringList names();
};

} // namespace sim
