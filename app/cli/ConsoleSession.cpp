#include "app/cli/ConsoleSession.h"

#include "app/cli/ExitCodes.h"
#include "connection/PortCatalog.h"
#include "sim/SimulatedMeterHost.h"
#include "ports/TerminationSignals.h"

#include <QEventLoop>
#include <QTextStream>

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

// All digits but beyond an int: still a port number the list does not hold, not a device path.
bool IsOversizedPortNumber(const QString& option)
{
    const bool digits = !option.isEmpty() && std::all_of(option.cbegin(), option.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    bool fits = false;
    return digits && option.toInt(&fits) == 0 && !fits;
}

} // namespace

std::optional<ChosenPort> ChoosePortOption(const QString& option)
{
    ChosenPort port{PortCatalog::Scan()};
    if (IsOversizedPortNumber(option)) {
        Fail(kExitBadArguments, QStringLiteral("--port: port number %1 is not in the list: 1 to %2").arg(option).arg(port.entries.size()));
        return std::nullopt;
    }
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

ConsoleSession::ConsoleSession(const LineOptions& line)
    : m_line(line),
      m_session(std::make_unique<MeterSession>(SessionPorts{m_prompts, m_lists, m_clock})),
      m_termination(std::make_unique<TerminationSignals>())
{
    // Off line at once: the transaction under way ends as abandoned, and so does any wait of the
    // link, rather than after its five attempts. Nothing on disk is touched.
    QObject::connect(m_termination.get(), &TerminationSignals::received, [this] {
        m_interrupted = true;
        m_session->Form_Unload();
        Wake();
    });
    QObject::connect(&m_session->poll, &PollCycle::tickEnded, [this] { Wake(); });
    QObject::connect(&m_session->settings.history, &SettingsHistory::settled, [this] { Wake(); });
    QObject::connect(m_session.get(), &MeterSession::onLineChanged, [this] { Wake(); });
    if (m_line.verbose)
        QObject::connect(&m_session->traffic, &TrafficLog::added, [this] { PrintFrames(); });
}

void ConsoleSession::PrintFrames()
{
    const TrafficLog& traffic = m_session->traffic;
    QTextStream err(stderr);
    for (const TrafficLog::Entry& entry : traffic.EntriesFrom(m_nextFrame))
        err << TrafficLog::Line(entry) << '\n';
    err.flush();
    m_nextFrame = traffic.NextSerial();
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
    m_session->ChooseLine(m_line.baudRate, m_line.stopBits);
    m_session->connection.link.replyTimeoutMs = m_line.replyTimeoutMs;
    return TurnTo(m_line.addresses.first());
}

int ConsoleSession::TurnTo(int address)
{
    const QString text = QString::number(address);
    m_session->ChooseAddress(text);
    if (m_interrupted)
        return Ended();
    if (m_session->OnLine())
        return kExitOk;
    m_session->ToggleOnLine(text);
    if (m_interrupted)
        return Ended();
    if (m_session->OnLine())
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

std::optional<SettingOutcome> ConsoleSession::Write(Setting setting, const SettingValue& value)
{
    return Outcome(m_session->Request(setting, value));
}

std::optional<SettingOutcome> ConsoleSession::Outcome(quint64 id)
{
    const SettingsHistory& history = m_session->settings.history;
    const auto settled = [&history, id] {
        const SettingOutcome* outcome = history.Find(id);
        return outcome != nullptr && outcome->Final();
    };
    if (!Await(settled) && !settled())
        return std::nullopt;
    return *history.Find(id);
}

bool ConsoleSession::Await(const std::function<bool()>& done)
{
    while (!done()) {
        if (m_interrupted || !m_session->OnLine())
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
    if (m_line.addresses.size() > 1)
        return Fail(kExitNoAnswer, QStringLiteral("address %1 did not answer: %2").arg(m_session->Address()).arg(OffLineReason()));
    return Fail(kExitNoAnswer, OffLineReason());
}

QString ConsoleSession::OffLineReason() const
{
    if (!m_session->OffLineReason().isEmpty())
        return m_session->OffLineReason();
    return m_session->Status().isEmpty() ? QStringLiteral("the tool went off line") : m_session->Status();
}
