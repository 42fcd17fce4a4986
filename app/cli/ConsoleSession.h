#pragma once

#include "app/cli/CommandLine.h"
#include "session/MeterSession.h"
#include "measure/MeterReading.h"
#include "ports/Clock.h"
#include "ports/IntervalLists.h"
#include "ports/OperatorPrompts.h"
#include "ui/TextScreen.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QEventLoop;

namespace sim {
class SimulatedMeterHost;
}

// The operator's answers, given on the command line before the session starts: a question
// is answered with `answer`, and every error box is kept to be reported.
class ConsolePrompts : public OperatorPrompts {
public:
    void Critical(const QString& text) override { errors.append(text); }
    bool AskYesNo(const QString& text) override;
    bool Confirm(const QString& caption, const QString& question) override;

    QStringList errors;
    QStringList questions;
    bool answer = false;
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

// The meter session of one command, presented on a map of texts: the window's session with
// the same lists, checks and rules, and the command's options standing in for the operator's
// picks. With --port sim it starts the simulated meter on a pseudo-terminal of its own.
class ConsoleSession {
public:
    explicit ConsoleSession(const LineOptions& line);
    ~ConsoleSession();
    ConsoleSession(const ConsoleSession&) = delete;
    ConsoleSession& operator=(const ConsoleSession&) = delete;

    // Picks the port, line and address and goes on line. 0, or the exit status after a
    // message on stderr.
    int GoOnLine();
    // Waits for the next tick whose nine reads all succeeded. Nothing when the tool went off
    // line first or the wait was interrupted: `Ended()` tells which.
    std::optional<MeterReading> NextReading();
    // Runs the event loop until `done` holds. It is checked after each poll tick, each change
    // of the connection and each Wake(); false when the tool went off line or Ctrl-C came first.
    bool Await(const std::function<bool()>& done);
    // Has the running Await() check its condition again: for what ends a wait besides the
    // poll ticks (a download step, say).
    void Wake();

    // After a wait that came back empty: the exit status and the message for stderr.
    int Ended() const;
    bool Interrupted() const { return m_interrupted; }
    // Why the tool is off line, as the window's off-line note says it.
    QString OffLineReason() const;

    MeterSession& session() { return *m_session; }
    // Holds the start-up lists from the start: a command makes its choices before going on line.
    TextScreen screen;
    ConsolePrompts prompts;

private:
    LineOptions m_line;
    NoIntervalLists m_lists;
    SystemClock m_clock;
    std::unique_ptr<sim::SimulatedMeterHost> m_simulator;
    std::unique_ptr<MeterSession> m_session;
    std::unique_ptr<TerminationSignals> m_termination;
    QEventLoop* m_wait = nullptr;
    bool m_interrupted = false;
};
