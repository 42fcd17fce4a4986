#pragma once

#include "settings/MeterConfiguration.h"

#include <QMap>
#include <QObject>

class MeterSession;

// Sends a configuration's settings as pending commands on the connection they were asked on,
// in order. A setting waiting to be served would be replaced by a second request for it (the
// display items are fifty of one setting), so each waits until the one before it of the same
// setting has its outcome; the others go out together, served in the dispatcher's order.
class ConfigurationWrites : public QObject {
    Q_OBJECT
public:
    explicit ConfigurationWrites(MeterSession& session);

    // Appends `items` to what is still to be sent.
    void Send(const QList<ConfiguredSetting>& items, quint64 askedOn);

private:
    void Next();
    void RequestFree();

    MeterSession& m_session;
    QList<std::pair<ConfiguredSetting, quint64>> m_queued; // with the connection asked on
    QMap<Setting, quint64> m_waiting;                      // request ids without an outcome yet
    bool m_requesting = false;
    bool m_again = false;
};
