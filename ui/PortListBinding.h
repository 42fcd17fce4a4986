#pragma once

#include "connection/PortCatalog.h"

#include <QObject>

#include <functional>

class MeterSession;
class OperatorPrompts;
class PortComboBox;
class QWidget;

// Binds the port list to the connection: the list shows the connection's entries in the same
// order, then "Network...", so that an entry's port number stays its list index + 1. The
// ports are found again each time the list opens (never on line: the list is locked then), the
// chosen device staying chosen. "Network..." asks for a serial device server's address and adds
// and chooses an entry for it.
class PortListBinding : public QObject {
    Q_OBJECT
public:
    PortListBinding(PortComboBox* list, MeterSession& session, OperatorPrompts& prompts, QWidget* dialogParent);

    static QString NetworkLabel();

    // Shows `entries` with entry `index` chosen, as if the operator had picked it.
    void Show(const QList<PortEntry>& entries, int index);
    // Chooses the entry `option` names (PortCatalog::Locate), adding it to the list when new.
    bool Choose(const QString& option, QString* error);

    // The serial ports the machine has now, asked each time the list opens.
    std::function<QList<FoundPort>()> findPorts = &PortCatalog::FoundPorts;

private:
    void Picked(int index);
    void Refresh();
    void AskForNetworkAddress();
    const QList<PortEntry>& Entries() const;
    int ChosenIndex() const;

    PortComboBox* m_list;
    MeterSession& m_session;
    OperatorPrompts& m_prompts;
    QWidget* m_dialogParent;
};
