#pragma once

#include <QList>

#include <functional>
#include <optional>

class ConsoleSession;

// The meters of --address in turn on one line. A meter that does not answer is named on
// stderr and skipped for that round; the others go on. A round in which none answered, the
// port failing and an interruption end the run.
class MeterRound {
public:
    explicit MeterRound(ConsoleSession& console) : m_console(console) {}

    // Turns to each meter and runs `each` there, which returns its exit status (ExitCodes.h):
    // kExitNoAnswer after the session's message when the meter did not answer. False when
    // the run must end.
    bool Run(const std::function<int()>& each);
    // The exit status of the run: the one that ended it, else kExitNoAnswer when any meter
    // missed a round (named on stderr when the line has several), else the worst of the rest.
    int Finish() const;

private:
    ConsoleSession& m_console;
    std::optional<int> m_ended;
    int m_worst = 0;
    QList<int> m_silent; // the addresses that missed a round, in the order first missed
};
