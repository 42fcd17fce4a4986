#include "connection/PortTransport.h"

PortTransport::PortTransport(QObject* parent) : Transport(parent)
{
    for (Transport* line : {static_cast<Transport*>(&m_serial), static_cast<Transport*>(&m_network)}) {
        connect(line, &Transport::dataArrived, this, &Transport::dataArrived);
        connect(line, &Transport::lost, this, &Transport::lost);
    }
}

bool PortTransport::open(const QString& device, const LineSettings& settings, QString* error)
{
    close();
    m_device = device;
    if (TcpTransport::IsAddress(device)) {
        m_opened = &m_network;
        return m_network.open(device, error);
    }
    m_opened = &m_serial;
    return m_serial.open(device, settings, error);
}

bool PortTransport::apply(const LineSettings& settings, QString* error)
{
    return m_opened == &m_network || m_serial.apply(settings, error);
}

void PortTransport::close()
{
    m_serial.close();
    m_network.close();
}
