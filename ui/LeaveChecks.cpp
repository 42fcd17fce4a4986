#include "ui/LeaveChecks.h"

#include <QFocusEvent>
#include <QWidget>

void LeaveChecks::Add(QWidget* field, std::function<void()> check)
{
    m_checks.insert(field, std::move(check));
    field->installEventFilter(this);
}

bool LeaveChecks::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            m_checks.value(watched)();
    }
    return QObject::eventFilter(watched, event);
}
