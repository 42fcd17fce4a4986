#include "settings/MeterSettings.h"

#include "connection/Connection.h"
#include "connection/PollCycle.h"
#include "ports/Clock.h"
#include "ports/MeterChoices.h"

namespace {

// The meter wants a short pause before the PT ratio 2 write. A counter run from 0 to 60000 in
// steps of 2: a busy loop of 30000 passes, 14 µs on a 2-core PC of 2026, far too short for the
// window to miss an event, so it needs no yielding wait. volatile keeps the compiler from
// dropping it.
void PauseBeforePtRatio2()
{
    for (volatile int pass = 0; pass <= 60000;)
        pass = pass + 2;
}

} // namespace

MeterSettings::MeterSettings(Connection& connection, PollCycle& poll, const Clock& clock, QObject* parent)
    : QObject(parent), m_connection(connection), m_poll(poll), m_clock(clock)
{
    follow = [this](Setting setting, const SettingValue& written) { FollowDirectly(setting, written); };
    connect(&m_poll, &PollCycle::readingTaken, this, [this](const MeterReading& reading) {
        history.Observe(reading);
        emit readBackChanged();
    });
    connect(&m_poll, &PollCycle::commandsDue, this, [this] {
        pending.Serve([this] { return m_connection.link.bCommOK != kFalse && m_connection.bOnLine.isTrue(); },
                      [this](const PendingRequest& request) { Serve(request); });
    });
}

quint64 MeterSettings::Request(Setting setting, ValueSource source, quint64 connection)
{
    const PendingRequest request{++m_lastRequest, setting, std::move(source), connection};
    if (!m_connection.bOnLine.isTrue()) {
        NotSent(request, SettingOutcome::NotSent, QStringLiteral("the tool is off line"));
        return request.id;
    }
    if (connection != m_connection.Number()) {
        NotSent(request, SettingOutcome::NotSent,
                QStringLiteral("the tool went off line after it was asked for; ask again on this connection"));
        return request.id;
    }
    return pending.Set(request);
}

quint64 MeterSettings::Request(Setting setting, const SettingValue& value)
{
    return Request(setting, FixedValue(value), m_connection.Number());
}

int MeterSettings::WentOffLine()
{
    history.WentOffLine();
    const std::vector<PendingRequest> dropped = pending.DropAll();
    for (const PendingRequest& request : dropped)
        NotSent(request, SettingOutcome::Dropped, QStringLiteral("the tool went off line"));
    return int(dropped.size());
}

void MeterSettings::Serve(const PendingRequest& request)
{
    if (request.connection != m_connection.Number()) {
        NotSent(request, SettingOutcome::Dropped, QStringLiteral("the tool went off line"));
        return;
    }
    const SourcedValue value = request.source();
    if (value.state == SourcedValue::State::Empty) // an empty field sends nothing, as it always did
        return;
    const SettingSpec& entry = SpecOf(request.setting);
    std::optional<RegisterWrite> write;
    QString why = value.state == SourcedValue::State::Refused
        ? value.reason
        : CheckAndEncode(request.setting, value.value, {m_clock.Now(), bMfgSerialShown != kFalse}, &write);
    if (!write) {
        if (why.isEmpty())
            why = QStringLiteral("%1 cannot be written").arg(entry.name);
        m_connection.status.Set(why + QStringLiteral("; nothing was sent."));
        NotSent(request, SettingOutcome::NotSent, why);
        return;
    }
    Send(request, *write);
    if (IsCommunication(request.setting))
        follow(request.setting, value.value);
    else if (request.setting == Setting::DisplayItem)
        emit displayItemSent();
}

void MeterSettings::Send(const PendingRequest& request, const RegisterWrite& write)
{
    const SettingSpec& entry = SpecOf(request.setting);
    const MeterReading before = m_poll.Reading();
    SettingOutcome outcome;
    outcome.id = request.id;
    outcome.setting = request.setting;
    outcome.at = m_clock.Now();
    outcome.from = before.Has(entry.block) ? entry.reported(before, write) : QString();
    outcome.to = entry.written(write);
    RegisterLink& link = m_connection.link;
    TransactionResult result;
    if (request.setting == Setting::PtRatio2) {
        PauseBeforePtRatio2();
        // Four data bytes, and a zero byte beyond them that the register count leaves out.
        qint16 count = 4;
        result = link.WriteRegisters2(link.ModbusAddress, write.start, count, write.Data() + '\0');
    } else {
        result = link.WriteRegisters(link.ModbusAddress, write.start, quint16(write.values.size()), write.Data());
    }
    outcome.result = SettingOutcome::FromTransaction(result);
    outcome.exception = result.exception;
    history.Add(outcome, write, before);
}

void MeterSettings::NotSent(const PendingRequest& request, SettingOutcome::Result result, const QString& why)
{
    SettingOutcome outcome;
    outcome.id = request.id;
    outcome.setting = request.setting;
    outcome.at = m_clock.Now();
    outcome.result = result;
    outcome.reason = why;
    history.Add(outcome);
}

// The meter answers at its new address or line settings from the next request on.
void MeterSettings::FollowDirectly(Setting setting, const SettingValue& written)
{
    const SettingField& field = SpecOf(setting).fields[0];
    const QString text = setting == Setting::Address ? QString::number(int(written.fields[0]))
                                                     : field.choices.value(ChoiceIndex(field, written.fields[0]));
    if (setting == Setting::Address)
        m_connection.ChooseAddress(text);
    else if (setting == Setting::BaudRate)
        m_connection.ChooseLine(text, m_connection.StopBits());
    else
        m_connection.ChooseLine(m_connection.BaudRate(), text);
}

QList<SettingReadbackRow> MeterSettings::ReadBack(const std::function<SourcedValue(Setting)>& chosen) const
{
    static constexpr Setting kShown[] = {
        Setting::Address, Setting::BaudRate, Setting::StopBit, Setting::Wiring, Setting::PtRatio1,
        Setting::PtRatio2, Setting::CtRatio, Setting::Clock, Setting::ScrollTime, Setting::DisplayItem,
    };
    const MeterReading& reading = m_poll.Reading();
    const WriteContext context{reading.takenAt, bMfgSerialShown != kFalse};
    QList<SettingReadbackRow> rows;
    for (Setting setting : kShown) {
        const SettingSpec& entry = SpecOf(setting);
        const SourcedValue value = entry.fields.isEmpty() ? SourcedValue::Of({}) : chosen(setting);
        std::optional<RegisterWrite> write;
        if (value.state == SourcedValue::State::Value)
            CheckAndEncode(setting, value.value, context, &write);
        // Only the display position is needed to name what the meter holds there.
        const RegisterWrite where = write.value_or(RegisterWrite{SettingRegister::kDisplayItems, {}});
        const QString meter = reading.Has(entry.block) ? entry.reported(reading, where) : QString();
        const bool differs = !meter.isEmpty() && write && !entry.shows(reading, *write, reading);
        rows.append({setting, meter, differs});
    }
    return rows;
}
