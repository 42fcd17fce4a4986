#include "connection/PendingCommands.h"

#include <algorithm>

void PendingCommands::SetRoutine(Flag flag, std::function<void()> routine)
{
    const auto at = std::find(kOrder.begin(), kOrder.end(), flag);
    m_routines[std::size_t(at - kOrder.begin())] = std::move(routine);
}

void PendingCommands::Serve(const std::function<bool()>& commOK)
{
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        if (!commOK())
            return;
        Bool16& flag = this->*kOrder[i];
        if (flag == kFalse)
            continue;
        flag = kFalse;
        if (m_routines[i])
            m_routines[i]();
    }
}

int PendingCommands::DropAll()
{
    int dropped = 0;
    for (Flag flag : kOrder) {
        if (this->*flag != kFalse)
            ++dropped;
        this->*flag = kFalse;
    }
    return dropped;
}
