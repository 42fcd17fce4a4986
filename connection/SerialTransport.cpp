#include "connection/SerialTransport.h"

#include <QFileInfo>

SerialTransport::SerialTransport(QObject* parent) : Transport(parent)
{
    connect(&m_port, &QSerialPort::readyRead, this, &Transport::dataArrived);
    connect(&m_port, &QSerialPort::errorOccurred, this, &SerialTransport::onError);
}

bool SerialTransport::isOpen() const
{
    return m_port.isOpen();
}

QByteArray SerialTransport::takeAll()
{
    return m_port.isOpen() ? m_port.readAll() : QByteArray();
}

void SerialTransport::discardInput()
{
    if (m_port.isOpen())
        m_port.clear(QSerialPort::Input);
}

void SerialTransport::send(const QByteArray& frame)
{
    m_port.write(frame);
    m_port.flush();
}

std::chrono::nanoseconds SerialTransport::characterTime() const
{
    constexpr qint64 kBitsPerCharacter = 10; // start, 8 data, stop: the fewest a character has
    if (m_pseudoTerminal || m_port.baudRate() <= 0)
        return std::chrono::nanoseconds::zero();
    return std::chrono::nanoseconds(kBitsPerCharacter * 1'000'000'000 / m_port.baudRate());
}

bool SerialTransport::open(const QString& device, const LineSettings& settings, QString* error)
{
    close();
    // Whatever the far end of a pseudo-terminal writes arrives at once, at any baud rate set
    // on it (the simulated meter without pacing, a libmodbus peer): there is no wire.
    m_pseudoTerminal = QFileInfo(device).canonicalFilePath().startsWith(QLatin1String("/dev/pts/"));
    m_port.setPortName(device);
    if (!m_port.open(QIODevice::ReadWrite)) {
        *error = m_port.errorString();
        if (m_port.error() == QSerialPort::PermissionError)
            *error += QStringLiteral(" — ") + PermissionAdvice();
        return false;
    }
    if (!apply(settings, error) || !m_port.setFlowControl(QSerialPort::NoFlowControl)) {
        if (error->isEmpty())
            *error = m_port.errorString();
        close();
        return false;
    }
    return true;
}

bool SerialTransport::apply(const LineSettings& settings, QString* error)
{
    const bool ok = m_port.setBaudRate(settings.baudRate) && m_port.setParity(settings.parity)
        && m_port.setDataBits(settings.dataBits) && m_port.setStopBits(settings.stopBits);
    if (!ok)
        *error = m_port.errorString();
    return ok;
}

void SerialTransport::close()
{
    if (m_port.isOpen())
        m_port.close();
    m_port.clearError();
}

void SerialTransport::onError(QSerialPort::SerialPortError error)
{
    // Errors while opening or configuring are reported by open() and apply(); what arrives
    // here on an open port means the device itself failed. The system's words for this
    // ("Inappropriate ioctl for device" and the like) tell an operator nothing; what happened
    // is that the device went away.
    const bool deviceFailed = error == QSerialPort::ResourceError || error == QSerialPort::ReadError
        || error == QSerialPort::WriteError;
    if (deviceFailed && m_port.isOpen())
        emit lost(QStringLiteral("the port was closed or the adapter unplugged"));
}
