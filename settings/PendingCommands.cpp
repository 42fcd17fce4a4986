#include "settings/PendingCommands.h"

quint64 PendingCommands::Set(PendingRequest request)
{
    const std::size_t slot = std::size_t(request.setting);
    if (IsPending(request.setting) && m_requests[slot])
        request.id = m_requests[slot]->id;
    this->*kOrder[slot] = kTrue;
    m_requests[slot] = std::move(request);
    return m_requests[slot]->id;
}

void PendingCommands::Serve(const std::function<bool()>& commOK, const std::function<void(const PendingRequest&)>& serve)
{
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        if (!commOK())
            return;
        Bool16& flag = this->*kOrder[i];
        if (flag == kFalse)
            continue;
        flag = kFalse;
        if (std::optional<PendingRequest> request = std::exchange(m_requests[i], std::nullopt))
            serve(*request);
    }
}

std::vector<PendingRequest> PendingCommands::DropAll()
{
    std::vector<PendingRequest> dropped;
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        if (this->*kOrder[i] != kFalse && m_requests[i])
            dropped.push_back(*m_requests[i]);
        this->*kOrder[i] = kFalse;
        m_requests[i].reset();
    }
    return dropped;
}
