#pragma once

#include <QTcpServer>

namespace sim {

// A TCP port of this machine that hands each new connection over as a bare descriptor: the
// simulated meter reads and writes it as it does its pseudo-terminal.
class ClientListener : public QTcpServer {
    Q_OBJECT
public:
    using QTcpServer::QTcpServer;

signals:
    void clientArrived(int descriptor);

protected:
    void incomingConnection(qintptr descriptor) override;
};

} // namespace sim
