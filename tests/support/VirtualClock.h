#pragma once

#include "link/LinkClock.h"

#include <algorithm>
#include <functional>
#include <map>

// Time for the link that passes only when the link waits: a wait jumps to the next scheduled
// event or to its deadline, whichever comes first, runs that event and returns. Two-second
// time-outs cost nothing and every run is the same.
class VirtualClock : public LinkClock {
public:
    Time now() const override { return m_now; }

    bool waitUntil(Time deadline, const WatchedFlag&, const Transport*) override
    {
        ++m_waits;
        if (!m_events.empty() && m_events.begin()->first <= deadline) {
            auto event = m_events.extract(m_events.begin());
            m_now = std::max(m_now, event.key());
            event.mapped()();
        } else {
            m_now = std::max(m_now, deadline);
        }
        return true;
    }

    // Runs `action` once the clock reaches `when`: bytes arriving, the operator going off line.
    void at(Time when, std::function<void()> action) { m_events.emplace(when, std::move(action)); }

    // How often the link has waited. A link that looked at the line every few milliseconds
    // instead of waiting for it would wait hundreds of times a second.
    int waits() const { return m_waits; }

private:
    Time m_now = std::chrono::seconds(1);
    std::multimap<Time, std::function<void()>> m_events;
    int m_waits = 0;
};
