#include "ui/ConfirmedRequest.h"

#include "session/MeterSession.h"

void RequestConfirmed(MeterSession& session, Setting setting, ValueSource source, const std::function<bool()>& confirm)
{
    const quint64 askedOn = session.connection.Number();
    if (confirm())
        session.Request(setting, std::move(source), askedOn);
}
