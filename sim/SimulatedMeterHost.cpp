#include "sim/SimulatedMeterHost.h"

#include "sim/SimulatedMeter.h"

namespace sim {

SimulatedMeterHost::SimulatedMeterHost(MeterModel meter) : m_shared(std::move(meter))
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
    m_meter = new SimulatedMeter(m_shared);
    m_meter->moveToThread(&m_thread);
    m_thread.start();
    Started started;
    QMetaObject::invokeMethod(m_meter, [&] {
        if (m_meter->open())
            started.path = m_meter->slavePath();
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
        const Started started = start();
        *error = started.error;
        return started.path;
    };
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
