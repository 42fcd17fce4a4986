#include "app/cli/ConsoleSession.h"

#include "app/cli/ExitCodes.h"
#include "connection/PortCatalog.h"
#include "sim/SimulatedMeterHost.h"
#include "ports/TerminationSignals.h"

#include <QEventLoop>

#include <algorithm>

namespace {

// A testing aid: QX5820_SIM_HISTORY=N starts both load-profile groups of the simulated meter of
// --port sim with N recorded intervals (at most 65535), for long downloads to try and measure.
sim::MeterModel SimulatedMeterModel()
{
    sim::MeterModel model;
    bool ok = false;
    const uint history = qEnvironmentVariable("QX5820_SIM_HISTORY").toUInt(&ok);
    if (ok) {
        for (int group = 0; group < 2; ++group)
            model.startWithHistory(group, int(std::min(history, 0xFFFFu)));
    }
    return model;
}

} // namespace

std::optional<ChosenPort> ChoosePortOption(const QString& option)
{
    ChosenPort port{PortCatalog::Scan()};
    QString error;
    const std::optional<int> index = PortCatalog::Locate(port.entries, option, &error);
    if (!index) {
        Fail(kExitBadArguments, QStringLiteral("--port: ") + error);
        return std::nullopt;
    }
    port.index = *index;
    return port;
}

std::unique_ptr<sim::SimulatedMeterHost> NewSimulatedMeter()
{
    return std::make_unique<sim::SimulatedMeterHost>(SimulatedMeterModel());
}

bool ConsolePrompts::AskYesNo(const QString& text)
{
    questions.append(text);
    return answer;
}

bool ConsolePrompts::Confirm(const QString& caption, const QString& question)
{
    questions.append(caption + QStringLiteral(": ") + question);
    return answer;
}

ConsoleSession::ConsoleSession(const LineOptions& line)
    : m_line(line), m_termination(std::make_unique<TerminationSignals>())
{
    // The lists as a run starts, ready for a command's choices before it goes on line.
    screen.FillStartUpLists();
    m_session = std::make_unique<MeterSession>(SessionPorts{screen, screen, prompts, m_lists, m_clock});
    QObject::connect(m_termination.get(), &TerminationSignals::received, [this] {
        m_interrupted = true;
        Wake();
    });
    QObject::connect(&m_session->poll, &PollCycle::tickEnded, [this] { Wake(); });
    QObject::connect(m_session.get(), &MeterSession::onLineChanged, [this] { Wake(); });
}

ConsoleSession::~ConsoleSession()
{
    // Off line before the simulated meter stops, as the window does when it closes.
    m_session->Form_Unload();
    m_session.reset();
}

int ConsoleSession::GoOnLine()
{
    const std::optional<ChosenPort> port = ChoosePortOption(m_line.port);
    if (!port)
        return kExitBadArguments;
    if (port->entry().simulated) {
        m_simulator = NewSimulatedMeter();
        m_session->connection.simulatedMeterDevice = m_simulator->deviceSource();
    }
    m_session->SetPortEntries(port->entries);
    m_session->ChoosePort(port->index);

    // The lists move as the operator's picks would, so that the commands that follow the
    // meter (a new address or baud rate) find them where the window has them.
    const auto pick = [this](const char* list, const QString& text) {
        screen.Select(QLatin1String(list), int(screen.entries.value(QLatin1String(list)).indexOf(text)));
    };
    const QString address = QString::number(m_line.address);
    pick("Combo_BaudRate_Sel", m_line.baudRate);
    pick("Combo_StopBit", m_line.stopBits);
    pick("Combo_Modbus_add_sel", address);
    m_session->ChooseLine(m_line.baudRate, m_line.stopBits);
    m_session->ChooseAddress(address);
    m_session->connection.link.replyTimeoutMs = m_line.replyTimeoutMs;

    m_session->ToggleOnLine(address);
    if (m_session->connection.bOnLine.isTrue())
        return kExitOk;
    return Fail(kExitPortUnusable, OffLineReason());
}

std::optional<MeterReading> ConsoleSession::NextReading()
{
    std::optional<MeterReading> reading;
    const QMetaObject::Connection taken = QObject::connect(
        &m_session->poll, &PollCycle::readingTaken, [&reading](const MeterReading& r) { reading = r; });
    Await([&reading] { return reading.has_value(); });
    QObject::disconnect(taken);
    return reading;
}

bool ConsoleSession::Await(const std::function<bool()>& done)
{
    while (!done()) {
        if (m_interrupted || !m_session->connection.bOnLine.isTrue())
            return false;
        QEventLoop loop;
        m_wait = &loop;
        loop.exec();
        m_wait = nullptr;
    }
    return true;
}

void ConsoleSession::Wake()
{
    if (m_wait != nullptr)
        m_wait->quit();
}

int ConsoleSession::Ended() const
{
    if (m_interrupted)
        return Fail(kExitInterrupted, QStringLiteral("interrupted"));
    return Fail(kExitNoAnswer, OffLineReason());
}

QString ConsoleSession::OffLineReason() const
{
    QString reason = screen.Text(QStringLiteral("txt_OffLineReason"));
    if (reason.isEmpty())
        reason = screen.Text(QStringLiteral("Text6"));
    return reason.isEmpty() ? QStringLiteral("the tool went off line") : reason;
}
