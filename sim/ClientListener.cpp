#include "sim/ClientListener.h"

namespace sim {

void ClientListener::incomingConnection(qintptr descriptor)
{
    emit clientArrived(int(descriptor));
}

} // namespace sim
