#pragma once

#include "link/Bool16.h"

#include <QObject>

// A 16-bit flag whose changes wake any wait that depends on it. `bOnLine` is one: going off
// line must end every wait at once, so the waits listen for `changed` instead of looking at
// the flag again and again.
class WatchedFlag : public QObject {
    Q_OBJECT
public:
    explicit WatchedFlag(QObject* parent = nullptr) : QObject(parent) {}

    Bool16 value() const { return m_value; }
    bool isTrue() const { return m_value != kFalse; }

    void set(bool on)
    {
        const Bool16 next = toBool16(on);
        if (next == m_value)
            return;
        m_value = next;
        emit changed(on);
    }

signals:
    void changed(bool on);

private:
    Bool16 m_value = kFalse;
};
