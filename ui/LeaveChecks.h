#pragma once

#include <QHash>
#include <QObject>

#include <functional>

class QWidget;

// Runs a field's check when the focus moves from it to another control of the window; not
// when the field's own list drops down, nor when another window (an error box the check
// itself shows) takes the focus.
class LeaveChecks : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    void Add(QWidget* field, std::function<void()> check);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QHash<QObject*, std::function<void()>> m_checks;
};
