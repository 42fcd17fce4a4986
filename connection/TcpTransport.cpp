#include "connection/TcpTransport.h"

#include <QEventLoop>
#include <QTimer>

TcpTransport::TcpTransport(QObject* parent) : Transport(parent)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, &Transport::dataArrived);
    connect(&m_socket, &QTcpSocket::errorOccurred, this, &TcpTransport::onError);
}

bool TcpTransport::IsAddress(const QString& device)
{
    return device.startsWith(QLatin1String("tcp://"), Qt::CaseInsensitive);
}

std::optional<QUrl> TcpTransport::AddressOf(const QString& device)
{
    const QUrl url(device, QUrl::StrictMode);
    const bool ok = url.isValid() && !url.host().isEmpty() && url.port() >= 1 && url.path().isEmpty()
        && !url.hasQuery() && !url.hasFragment() && url.userInfo().isEmpty();
    return ok ? std::optional(url) : std::nullopt;
}

bool TcpTransport::isOpen() const
{
    return m_socket.state() == QAbstractSocket::ConnectedState;
}

QByteArray TcpTransport::takeAll()
{
    return m_socket.isOpen() ? m_socket.readAll() : QByteArray();
}

void TcpTransport::discardInput()
{
    if (m_socket.isOpen())
        m_socket.readAll();
}

void TcpTransport::send(const QByteArray& frame)
{
    m_socket.write(frame);
    m_socket.flush();
}

std::chrono::nanoseconds TcpTransport::characterTime() const
{
    return std::chrono::nanoseconds::zero();
}

bool TcpTransport::open(const QString& address, QString* error)
{
    close();
    const std::optional<QUrl> url = AddressOf(address);
    if (!url) {
        *error = QStringLiteral("not a network address of the form tcp://host:port");
        return false;
    }
    // The window stays alive while the device server is reached: the wait yields to the
    // event loop and ends on the connection, its failure, close() or the time-out.
    QEventLoop loop;
    bool failed = false;
    bool timedOut = false;
    QTimer timeout;
    timeout.setSingleShot(true);
    connect(&timeout, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        loop.quit();
    });
    connect(&m_socket, &QTcpSocket::connected, &loop, &QEventLoop::quit);
    connect(&m_socket, &QTcpSocket::errorOccurred, &loop, [&] {
        failed = true;
        loop.quit();
    });
    connect(&m_socket, &QTcpSocket::stateChanged, &loop, [&loop](QAbstractSocket::SocketState state) {
        if (state == QAbstractSocket::UnconnectedState)
            loop.quit();
    });
    m_socket.connectToHost(url->host(), quint16(url->port()));
    timeout.start(kConnectTimeoutMs);
    if (m_socket.state() != QAbstractSocket::ConnectedState && !failed)
        loop.exec();
    if (m_socket.state() == QAbstractSocket::ConnectedState) {
        // A request must leave at once, not wait to be merged with a later one.
        m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_connected = true;
        return true;
    }
    if (failed)
        *error = m_socket.errorString();
    else if (timedOut)
        *error = QStringLiteral("no connection within %1 s").arg(kConnectTimeoutMs / 1000);
    else
        *error = QStringLiteral("the connection was abandoned");
    m_socket.abort();
    return false;
}

void TcpTransport::close()
{
    m_connected = false;
    m_socket.abort();
}

void TcpTransport::onError()
{
    // Failures while connecting are open()'s to report; one on an open connection means the
    // device server or the network let it go.
    if (!m_connected)
        return;
    m_connected = false;
    emit lost(QStringLiteral("the connection was lost (%1)").arg(m_socket.errorString()));
}
