#include "ui/PortListBinding.h"

#include "session/MeterSession.h"
#include "ports/OperatorPrompts.h"
#include "ui/PortComboBox.h"

#include <QInputDialog>
#include <QSignalBlocker>

namespace {

// What the operator types is "host:port"; the connection knows it as "tcp://host:port".
QString NetworkOption(const QString& typed)
{
    const QString scheme = QStringLiteral("tcp://");
    return typed.startsWith(scheme, Qt::CaseInsensitive) ? typed : scheme + typed;
}

} // namespace

PortListBinding::PortListBinding(PortComboBox* list, MeterSession& session, OperatorPrompts& prompts,
                                 QWidget* dialogParent)
    : m_list(list), m_session(session), m_prompts(prompts), m_dialogParent(dialogParent)
{
    connect(m_list, &QComboBox::currentIndexChanged, this, &PortListBinding::Picked);
    connect(m_list, &PortComboBox::aboutToOpen, this, &PortListBinding::Refresh);
}

QString PortListBinding::NetworkLabel()
{
    return QStringLiteral("Network...");
}

void PortListBinding::Show(const QList<PortEntry>& entries, int index)
{
    m_session.SetPortEntries(entries);
    {
        const QSignalBlocker quiet(m_list);
        m_list->clear();
        for (const PortEntry& entry : entries)
            m_list->addItem(entry.label);
        m_list->addItem(NetworkLabel());
        m_list->setCurrentIndex(index);
    }
    // Also when the index is the one chosen before: its entry may have moved.
    m_session.ChoosePort(index);
}

bool PortListBinding::Choose(const QString& option, QString* error)
{
    QList<PortEntry> entries = Entries();
    const std::optional<int> index = PortCatalog::Locate(entries, option, error);
    if (index)
        Show(entries, *index);
    return index.has_value();
}

void PortListBinding::Picked(int index)
{
    if (index == Entries().size())
        AskForNetworkAddress();
    else if (index >= 0)
        m_session.ChoosePort(index);
}

void PortListBinding::Refresh()
{
    const int chosen = ChosenIndex();
    if (m_session.connection.bOnLine.isTrue() || chosen >= Entries().size())
        return;
    const PortEntry chosenEntry = Entries().at(chosen);
    const QList<PortEntry> entries = PortCatalog::Refresh(Entries(), chosen, findPorts());
    Show(entries, PortCatalog::IndexOf(entries, chosenEntry));
}

// Asked again after a malformed address, with the text as typed; Cancel goes back to the port
// chosen before.
void PortListBinding::AskForNetworkAddress()
{
    QString typed;
    for (;;) {
        bool ok = false;
        typed = QInputDialog::getText(m_dialogParent, QStringLiteral("Network"),
                                      QStringLiteral("Address of the serial device server (host:port):"),
                                      QLineEdit::Normal, typed, &ok)
                    .trimmed();
        if (!ok) {
            const QSignalBlocker quiet(m_list);
            m_list->setCurrentIndex(ChosenIndex());
            return;
        }
        QString error;
        if (Choose(NetworkOption(typed), &error))
            return;
        m_prompts.Critical(error);
    }
}

const QList<PortEntry>& PortListBinding::Entries() const
{
    return m_session.connection.PortEntries();
}

int PortListBinding::ChosenIndex() const
{
    return m_session.connection.PortNumber() - 1;
}
