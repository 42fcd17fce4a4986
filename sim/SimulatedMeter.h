#pragma once

#include "sim/MeterSharedState.h"
#include "sim/PacedWriter.h"
#include "sim/PseudoTerminal.h"
#include "sim/RequestAssembler.h"
#include "sim/SerialLineState.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <optional>

namespace sim {

// The QX-5820 as a Modbus RTU slave on a pseudo-terminal. Lives on the thread whose event
// loop serves it (see SimulatedMeterHost): it reads requests as they arrive, answers from
// the shared register model and paces its replies like a real line.
class SimulatedMeter : public QObject {
    Q_OBJECT
public:
    explicit SimulatedMeter(MeterSharedState& shared, QObject* parent = nullptr);

    // Opens a new pseudo-terminal and starts listening on it; false with errorString().
    bool open();
    QString slavePath() const { return m_pty.slavePath(); }
    QString errorString() const { return m_pty.errorString(); }

private:
    void receive();
    void frameGapElapsed();
    void handle(const ReceivedFrame& frame);
    void answer(const ReceivedFrame& frame, quint64 sequence);
    void replyFinished(SteadyTime at);

    MeterSharedState& m_shared;
    PseudoTerminal m_pty;
    std::unique_ptr<QSocketNotifier> m_notifier; // after m_pty: released before the descriptor closes
    RequestAssembler m_assembler;
    SerialLineState m_line;
    QTimer m_frameGap;
    PacedWriter m_writer;
    std::optional<quint64> m_answering; // log sequence of the request whose reply is under way
};

} // namespace sim
