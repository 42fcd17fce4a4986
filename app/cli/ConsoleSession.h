#pragma once

#include "app/cli/CommandLine.h"
#include "measure/MeterReading.h"
#include "ports/Clock.h"
#include "ports/IntervalLists.h"
#include "ports/OperatorPrompts.h"
#include "session/MeterSession.h"

#include <functional>
#include <memory>
#include <optional>

class QEventLoop;
class TerminationSignals;

namespace sim {
class SimulatedMeterHost;
}

// The questions the core may still put: a command line asks nothing once it runs. What went
// wrong reaches the command through the session's status and off-line reason, not a box.
class ConsolePrompts : public OperatorPrompts {
public:
    void Critical(const QString&) override {}
    // Only a download asks, whether to go on with the one it broke off: as the command says.
    bool AskYesNo(const QString&) override { return continueDownload; }
    // Whatever deletes data was confirmed with --yes before it was asked for; anything else
    // is answered with the safe No.
    bool Confirm(const QString&, const QString&) override { return false; }

    bool continueDownload = true;
};

// The port list as the window would hold it, and the entry a --port option names in it.
struct ChosenPort {
    QList<PortEntry> entries;
    int index = 0;
    const PortEntry& entry() const { return entries.at(index); }
};
// Nothing after a message on stderr.
std::optional<ChosenPort> ChoosePortOption(const QString& option);
// The simulated meter that --port sim stands for, not yet started.
std::unique_ptr<sim::SimulatedMeterHost> NewSimulatedMeter();

// A command line has no start and stop lists to keep.
class NoIntervalLists : public IntervalLists {
public:
    void SetEnabled(bool) override {}
    void Clear() override {}
    void Append(qint32, qint32) override {}
    void ShowFirstEntry() override {}
};

// The meter session of one command: the window's session with the same checks and rules, the
// command's options standing in for the operator's picks. With --port sim it starts the
// simulated meter on a pseudo-terminal of its own.
class ConsoleSession {
public:
    explicit ConsoleSession(const LineOptions& line);
    ~ConsoleSession();
    ConsoleSession(const ConsoleSession&) = delete;
    ConsoleSession& operator=(const ConsoleSession&) = delete;

    // Picks the port, line and first address and goes on line. 0, or the exit status after a
    // message on stderr.
    int GoOnLine();
    // Turns to the meter at `address` of the same line, between ticks. A meter that gave up
    // took the tool off line: it goes on line again, so that one silent meter never takes the
    // others down. 0, or the exit status after a message on stderr.
    int TurnTo(int address);
    const QList<int>& Addresses() const { return m_line.addresses; }
    // Waits for the next tick whose nine reads all succeeded. Nothing when the tool went off
    // line first or the wait was interrupted: `Ended()` tells which.
    std::optional<MeterReading> NextReading();
    // Asks for `setting` with `value` and waits for the request's final outcome. Nothing when
    // the wait ended first (off line without an outcome, interrupted): `Ended()` tells which.
    std::optional<SettingOutcome> Write(Setting setting, const SettingValue& value);
    // Waits for the final outcome of the request numbered `id`, as Write does.
    std::optional<SettingOutcome> Outcome(quint64 id);
    // Runs the event loop until `done` holds. It is checked after each poll tick, each change
    // of the connection, each settled setting and each Wake(); false when the tool went off
    // line or Ctrl-C came first.
    bool Await(const std::function<bool()>& done);
    // Has the running Await() check its condition again: for what ends a wait besides the
    // session's own signals (a download step, say).
    void Wake();

    // After a wait that came back empty: the exit status and the message for stderr, which
    // names the meter when the line has several.
    int Ended() const;
    // Ctrl-C or SIGTERM came, and took the session off line at once.
    bool Interrupted() const { return m_interrupted; }
    // Why the tool is off line, as the window's off-line note says it.
    QString OffLineReason() const;

    MeterSession& session() { return *m_session; }
    ConsolePrompts& prompts() { return m_prompts; }

private:
    // --verbose: the frames added to the traffic log since the last call, to stderr.
    void PrintFrames();

    LineOptions m_line;
    ConsolePrompts m_prompts;
    NoIntervalLists m_lists;
    SystemClock m_clock;
    std::unique_ptr<sim::SimulatedMeterHost> m_simulator;
    std::unique_ptr<MeterSession> m_session;
    std::unique_ptr<TerminationSignals> m_termination;
    QEventLoop* m_wait = nullptr;
    bool m_interrupted = false;
    quint64 m_nextFrame = 0; // the traffic log's serial of the first frame not yet printed
};
