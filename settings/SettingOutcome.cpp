#include "settings/SettingOutcome.h"

#include "link/RtuFrames.h"
#include "settings/SettingsHistory.h"

QString SettingOutcome::Text() const
{
    switch (result) {
    case Waiting: return QStringLiteral("waiting for the meter");
    case Confirmed: return QStringLiteral("confirmed");
    case NotConfirmed: return QStringLiteral("not confirmed within %1 ticks").arg(SettingsHistory::kConfirmTicks);
    case OffLineUnconfirmed: return QStringLiteral("not confirmed: the tool went off line");
    case Refused: return QStringLiteral("refused: exception %1 (%2)").arg(exception).arg(Rtu::ExceptionName(exception));
    case NoReply: return QStringLiteral("no reply");
    case LineLost: return QStringLiteral("no reply: the line went away");
    case NotSent: return QStringLiteral("not sent: ") + reason;
    case Dropped: return QStringLiteral("dropped, not sent: ") + reason;
    }
    return QString();
}

SettingOutcome::Result SettingOutcome::FromTransaction(const TransactionResult& result)
{
    switch (result.kind) {
    case TransactionResult::Good: return Waiting;
    case TransactionResult::Exception: return Refused;
    case TransactionResult::Abandoned: return LineLost;
    default: return NoReply;
    }
}
