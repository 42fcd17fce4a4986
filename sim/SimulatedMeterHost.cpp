#include "sim/SimulatedMeterHost.h"

#include "sim/SimulatedMeter.h"

#include <QUrl>

namespace sim {
namespace {

std::vector<MeterModel> alone(MeterModel meter)
{
    std::vector<MeterModel> bus;
    bus.push_back(std::move(meter));
    return bus;
}

} // namespace

SimulatedMeterHost::SimulatedMeterHost(MeterModel meter) : SimulatedMeterHost(alone(std::move(meter)))
{
}

SimulatedMeterHost::SimulatedMeterHost(std::vector<MeterModel> bus) : m_shared(std::move(bus))
{
    m_thread.setObjectName(QStringLiteral("QX-5820 simulated meter"));
}

SimulatedMeterHost::~SimulatedMeterHost()
{
    stop();
}

SimulatedMeterHost::Started SimulatedMeterHost::start()
{
    if (m_meter)
        return {m_path, {}};
    m_tcpPort.reset();
    return run([](SimulatedMeter& meter) { return meter.open(); });
}

SimulatedMeterHost::Started SimulatedMeterHost::listen(quint16 port)
{
    if (m_meter)
        return {m_path, {}};
    const Started started = run([port](SimulatedMeter& meter) { return meter.listen(port); });
    if (!started.path.isEmpty())
        m_tcpPort = quint16(QUrl(started.path).port());
    return started;
}

SimulatedMeterHost::Started SimulatedMeterHost::run(const std::function<bool(SimulatedMeter&)>& open)
{
    m_meter = new SimulatedMeter(m_shared);
    m_meter->moveToThread(&m_thread);
    m_thread.start();
    Started started;
    QMetaObject::invokeMethod(m_meter, [&] {
        if (open(*m_meter))
            started.path = m_meter->address();
        else
            started.error = m_meter->errorString();
    }, Qt::BlockingQueuedConnection);
    if (started.path.isEmpty())
        stop();
    m_path = started.path;
    return started;
}

std::function<QString(QString* error)> SimulatedMeterHost::deviceSource()
{
    return [this](QString* error) {
        const Started started = m_tcpPort ? listen(*m_tcpPort) : start();
        *error = started.error;
        return started.path;
    };
}

void SimulatedMeterHost::setNoise(int burstMs, int quietMs)
{
    m_shared.noiseBurstMs = burstMs;
    m_shared.noiseQuietMs = quietMs;
    if (m_meter)
        QMetaObject::invokeMethod(m_meter, &SimulatedMeter::startNoise, Qt::BlockingQueuedConnection);
}

bool SimulatedMeterHost::setSilent(quint8 address, bool silent)
{
    BusMeter* found = m_shared.meters.find(address);
    if (found)
        found->silent = silent;
    return found != nullptr;
}

void SimulatedMeterHost::stop()
{
    if (!m_meter)
        return;
    // Deleted on its own thread, where its timers and notifier live; the thread's exit
    // carries out the deferred delete.
    m_meter->deleteLater();
    m_meter = nullptr;
    m_thread.quit();
    m_thread.wait();
    m_path.clear();
}

} // namespace sim
